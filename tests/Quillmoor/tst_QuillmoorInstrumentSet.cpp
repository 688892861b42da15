#include "Quillmoor/QuillmoorInstrumentSet.h"

#include "Quillmoor/PakWriter.h"
#include "support/MessageCapture.h"
#include "support/PackageBuilder.h"
#include "support/ResourceWatch.h"
#include "support/Thrown.h"

#include <QBuffer>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

#include <sys/stat.h>

namespace {

QString name(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

QByteArray picture(int width, int height)
{
    QImage image(width, height, QImage::Format_Mono);
    image.fill(0);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

QByteArray littleEndian(quint32 value, int size)
{
    QByteArray bytes;
    for (int shift = 0; shift < 8 * size; shift += 8)
        bytes.append(static_cast<char>(value >> shift));
    return bytes;
}

/// A screen of `side` by `side` with a black picture of `pictureSide` by `pictureSide` on it.
QByteArray gif(quint32 side, quint32 pictureSide)
{
    const QByteArray corner(4, '\0');
    const QByteArray palette("\0\0\0\xFF\xFF\xFF", 6);
    return "GIF89a" + littleEndian(side, 2) + littleEndian(side, 2) + littleEndian(0x80, 3)
        + palette + ',' + corner + littleEndian(pictureSide, 2) + littleEndian(pictureSide, 2)
        + littleEndian(0, 1) + "\2\2\x44\1" + littleEndian(0x3B00, 2);
}

/// Announces 16 by 16 pixels, whatever the PNG picture in it is.
QByteArray ico(const QByteArray &png)
{
    return littleEndian(0x10000, 4) + littleEndian(1, 2) + littleEndian(0x1010, 4)
        + littleEndian(0x200001, 4) + littleEndian(static_cast<quint32>(png.size()), 4)
        + littleEndian(22, 4) + png;
}

QByteArray description(const QByteArray &displayName, const QByteArray &kind)
{
    return "{ \"shortdescription\" : \"" + displayName + "\", // name\n \"kind\" : \"" + kind
        + "\",\n \"inventoryIcon\" : \"" + kind + ".png\" }";
}

QByteArray tuning(const QByteArray &fadeout = "1")
{
    return "{\"fadeout\":" + fadeout
        + ",\"mapping\":{\"60\":{\"f\":261.63,\"file\":\"/sfx/instruments/$instrument$/c4.ogg\"}}}";
}

QString sampleFile(const QuillmoorInstrumentSet &set, const char *displayName)
{
    return set.instrument(name(displayName)).sample(60).files().value(0);
}

const char *const InDirectory = "bool QuillmoorInstrumentSet::loadDirectory(const QDir&, bool)";
const char *const InPackage = "bool QuillmoorInstrumentSet::loadPakFile(const QString&)";

/// The files of a package or a loose directory.
class Files {
public:
    Files &add(const char *path, const QByteArray &contents)
    {
        m_files.append({name(path), contents});
        return *this;
    }

    Files &addInstrument(const QByteArray &displayName, const QByteArray &kind)
    {
        add("/items/instruments/" + kind + ".instrument", description(displayName, kind));
        add("/items/instruments/" + kind + ".png", picture(16, 16));
        return add("/sfx/instruments/" + kind + "/tuning.config", tuning());
    }

    Files &add(const QByteArray &path, const QByteArray &contents)
    {
        return add(path.constData(), contents);
    }

    void pack(const QString &package) const
    {
        QDir().mkpath(QFileInfo(package).path());
        PakWriter writer;
        for (const auto &file : m_files)
            writer.add(file.first, file.second);
        writer.save(package);
    }

    void unpack(const QString &directory) const
    {
        for (const auto &file : m_files) {
            const QString path = directory + file.first;
            QDir().mkpath(QFileInfo(path).path());
            writeFile(path, file.second);
        }
    }

private:
    QVector<QPair<QString, QByteArray>> m_files;
};

Files instrument(const QByteArray &displayName, const QByteArray &kind)
{
    return Files().addInstrument(displayName, kind);
}

} // namespace

class TestQuillmoorInstrumentSet : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;

    QString in(const char *path) const { return m_dir->filePath(name(path)); }
    QDir root() const { return QDir(m_dir->path()); }
    QStringList names(bool loadMods = false) const
    {
        return QuillmoorInstrumentSet(root(), loadMods).names();
    }

    static void compareMessage(const MessageCapture::Message &message, QtMsgType type,
                               const char *function, const QString &text)
    {
        QCOMPARE(message.text, text);
        QCOMPARE(message.type, type);
        QCOMPARE(message.function, name(function));
        QCOMPARE(message.file, name("Quillmoor/QuillmoorInstrumentSet"));
    }

private slots:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }

    void aRootWithNothingYieldsNone()
    {
        const QuillmoorInstrumentSet set(root(), true);
        QCOMPARE(set.names(), QStringList{name("None")});
        QCOMPARE(set.instrument(name("None")), Instrument());
        QVERIFY(set.icon(name("None")).isNull());
    }

    void aPackageIsLoadedWithItsPaths()
    {
        instrument("Old Lute", "lute").pack(in("assets/packed.pak"));
        const MessageCapture log;
        const QuillmoorInstrumentSet set(root(), false);
        QCOMPARE(log.texts(), QStringList());
        QCOMPARE(set.names(), QStringList{name("Old Lute")});
        QVERIFY(set.contains(name("Old Lute")));
        QVERIFY(!set.contains(name("old lute")));
        QCOMPARE(set.instrument(name("Old Lute")).name(), name("lute"));
        QCOMPARE(set.instrument(name("Old Lute")).fadeout(), 1.0);
        QCOMPARE(sampleFile(set, "Old Lute"),
                 name("pak://") + in("assets/packed.pak") + name("::/sfx/instruments/lute/c4.ogg"));
        QCOMPARE(set.icon(name("Old Lute")).availableSizes(), QList<QSize>{QSize(16, 16)});
    }

    void aLooseDirectoryIsLoadedWithItsPaths()
    {
        instrument("Flute", "flute").unpack(in("user"));
        const MessageCapture log;
        const QuillmoorInstrumentSet set(root(), false);
        QCOMPARE(log.texts(), QStringList());
        QCOMPARE(set.instrument(name("Flute")).name(), name("flute"));
        QCOMPARE(sampleFile(set, "Flute"), in("user") + name("/sfx/instruments/flute/c4.ogg"));
        QVERIFY(!set.icon(name("Flute")).pixmap(16).isNull());
    }

    void unknownNamesAreNotFound()
    {
        const QuillmoorInstrumentSet set(root(), false);
        QCOMPARE(thrownBy([&] { set.instrument(name("Lute")); }),
                 name("Instrument 'Lute' not found."));
        QCOMPARE(thrownBy([&] { set.icon(name("Lute")); }), name("Instrument 'Lute' not found."));
    }

    void assetsItselfIsReadForPackagesOnly()
    {
        instrument("Loose", "loose").unpack(in("assets"));
        instrument("Packed", "packed").pack(in("assets/packed.pak"));
        instrument("Deeper", "deeper").pack(in("assets/deeper/packed.pak"));
        QCOMPARE(names(), QStringList{name("Packed")});
    }

    void withAssetsTheUserDirectoryLiesInside()
    {
        instrument("Beside", "a").unpack(in("user"));
        instrument("Inside", "b").unpack(in("assets/user"));
        QCOMPARE(names(), QStringList{name("Inside")});
    }

    void withoutAssetsTheUserDirectoryLiesInTheRoot()
    {
        instrument("Beside", "a").unpack(in("user"));
        instrument("Beside Packed", "b").pack(in("user/more.pak"));
        QCOMPARE(names(), (QStringList{name("Beside"), name("Beside Packed")}));
    }

    void modsAreLoadedOnRequestOnly()
    {
        instrument("Loose", "a").unpack(in("mods/one"));
        instrument("Packed", "b").pack(in("mods/two/x.pak"));
        instrument("Mod Package", "c").pack(in("mods/x.modpak"));
        instrument("Plain Package", "d").pack(in("mods/y.pak"));
        instrument("Inner Mod Package", "e").pack(in("mods/two/z.modpak"));
        QCOMPARE(names(false), QStringList{name("None")});
        QCOMPARE(names(true), (QStringList{name("Loose"), name("Mod Package"), name("Packed")}));
    }

    void theFirstOfOneNameStays()
    {
        instrument("Lute", "packed").pack(in("assets/packed.pak"));
        instrument("Lute", "user").unpack(in("assets/user"));
        instrument("Lute", "modded").unpack(in("mods/one"));
        instrument("Lute", "modpak").pack(in("mods/one.modpak"));
        instrument("Drum", "user").unpack(in("assets/user"));
        instrument("Drum", "modded").unpack(in("mods/one"));
        instrument("Bell", "modpak").pack(in("mods/one.modpak"));
        instrument("Bell", "modded2").unpack(in("mods/one"));
        const MessageCapture log;
        const QuillmoorInstrumentSet set(root(), true);
        QCOMPARE(log.texts(), QStringList());
        QCOMPARE(set.instrument(name("Lute")).name(), name("packed"));
        QCOMPARE(set.instrument(name("Drum")).name(), name("user"));
        QCOMPARE(set.instrument(name("Bell")).name(), name("modded2"));
        QCOMPARE(set.names(), (QStringList{name("Bell"), name("Drum"), name("Lute")}));
    }

    void aKnownNameIsSkippedEvenWithoutTuning()
    {
        instrument("Lute", "lute").pack(in("assets/packed.pak"));
        Files()
            .add("/items/instruments/x.instrument", description("Lute", "nothing"))
            .add("/sfx/instruments/x", "")
            .unpack(in("assets/user"));
        const MessageCapture log;
        QCOMPARE(names(), QStringList{name("Lute")});
        QCOMPARE(log.texts(), QStringList());
    }

    void namesStaySorted()
    {
        QuillmoorInstrumentSet set(root(), false);
        for (const char *const added : {"b", "a", "C"})
            set.add(name(added), Instrument(), QIcon());
        QCOMPARE(set.names(), (QStringList{name("C"), name("None"), name("a"), name("b")}));
    }

    void manyNamesAreAddedQuickly()
    {
        QuillmoorInstrumentSet set(root(), false);
        const ResourceWatch watch;
        for (int i = 0; i < 20000; ++i)
            set.add(QStringLiteral("A name as long as others %1").arg(i * 7919 % 20000), {}, {});
        QVERIFY(watch.isWithinLimits());
        QVERIFY(std::is_sorted(set.names().begin(), set.names().end()));
        QCOMPARE(set.names().size(), 20001);
    }

    void onlyExactPathsInAPackageAreInstruments()
    {
        Files files;
        files.addInstrument("Lute", "Lute");
        for (const char *const path :
             {"/items/instruments/lute.INSTRUMENT", "/Items/instruments/b.instrument",
              "items/instruments/c.instrument", "/items/instruments/d.instrument2",
              "/items/e.instrument"})
            files.add(path, description(QByteArray("Wrong ") + path, "Lute"));
        files.add("/items/instruments/deeper/f.instrument", description("Deeper", "Lute"));
        files.pack(in("assets/packed.pak"));
        QCOMPARE(names(), (QStringList{name("Deeper"), name("Lute")}));
    }

    void unreadableDescriptionsInAPackageAreSkipped()
    {
        instrument("Lute", "lute")
            .add("/items/instruments/a.instrument", "{")
            .add("/items/instruments/b.instrument", "[]")
            .pack(in("assets/packed.pak"));
        const MessageCapture log;
        QCOMPARE(names(), QStringList{name("Lute")});
        QCOMPARE(log.messages().size(), 2);
        compareMessage(log.messages().at(0), QtWarningMsg, InPackage,
                       name("Could not read instrument file /items/instruments/a.instrument."));
        compareMessage(log.messages().at(1), QtWarningMsg, InPackage,
                       name("Could not read instrument file /items/instruments/b.instrument. Root "
                            "node is not an object."));
    }

    void unreadableLooseDescriptionsAreSkipped_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QString>("message");
        QTest::newRow("broken") << QByteArray("{")
                                << "Could not read instrument file bad.instrument.";
        QTest::newRow("no object")
            << QByteArray("[]")
            << "Could not read instrument file bad.instrument. Root node is not an object.";
    }

    void unreadableLooseDescriptionsAreSkipped()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QString, message);
        instrument("Lute", "lute")
            .add("/items/instruments/bad.instrument", contents)
            .unpack(in("user"));
        const MessageCapture log;
        QCOMPARE(names(), QStringList{name("Lute")});
        QCOMPARE(log.messages().size(), 1);
        compareMessage(log.messages().first(), QtWarningMsg, InDirectory, message);
    }

    void withoutTuningAPackedInstrumentIsSkipped()
    {
        instrument("Lute", "lute")
            .add("/items/instruments/a.instrument", description("Kazoo", "kazoo"))
            .pack(in("assets/packed.pak"));
        const MessageCapture log;
        QCOMPARE(names(), QStringList{name("Lute")});
        QCOMPARE(log.messages().size(), 2);
        QCOMPARE(log.texts().first(),
                 name("tryGetFile failed on /sfx/instruments/kazoo/tuning.config: File not found"));
        compareMessage(log.messages().last(), QtCriticalMsg, InPackage,
                       name("No tuning file found for instrument Kazoo!"));
    }

    void withoutTuningALooseInstrumentIsSkipped()
    {
        instrument("Lute", "lute")
            .add("/items/instruments/a.instrument", description("Kazoo %1", "kazoo"))
            .unpack(in("user"));
        const MessageCapture log;
        QCOMPARE(names(), QStringList{name("Lute")});
        QCOMPARE(log.messages().size(), 1);
        compareMessage(log.messages().first(), QtCriticalMsg, InDirectory,
                       name("No tuning file found for instrument Kazoo %1!"));
    }

    void withoutIconAPackedInstrumentIsOffered()
    {
        Files()
            .add("/items/instruments/a.instrument", description("Kazoo", "kazoo"))
            .add("/sfx/instruments/kazoo/tuning.config", tuning())
            .pack(in("assets/packed.pak"));
        const MessageCapture log;
        const QuillmoorInstrumentSet set(root(), false);
        QVERIFY(set.icon(name("Kazoo")).isNull());
        QCOMPARE(log.messages().size(), 2);
        QCOMPARE(log.texts().first(),
                 name("tryGetFile failed on /items/instruments/kazoo.png: File not found"));
        compareMessage(log.messages().last(), QtWarningMsg, InPackage,
                       name("No icon file found for instrument Kazoo!"));
    }

    void withoutIconALooseInstrumentIsOffered()
    {
        Files()
            .add("/items/instruments/a.instrument", description("Kazoo", "kazoo"))
            .add("/sfx/instruments/kazoo/tuning.config", tuning())
            .unpack(in("user"));
        const MessageCapture log;
        const QuillmoorInstrumentSet set(root(), false);
        QVERIFY(set.icon(name("Kazoo")).pixmap(16).isNull());
        QCOMPARE(log.messages().size(), 1);
        compareMessage(log.messages().first(), QtWarningMsg, InDirectory,
                       name("No icon file found for instrument Kazoo!"));
    }

    void anIconThatIsNoPictureIsNull()
    {
        instrument("Lute", "lute")
            .add("/items/instruments/lute.png", "no picture")
            .pack(in("assets/packed.pak"));
        const MessageCapture log;
        const QuillmoorInstrumentSet set(root(), false);
        QVERIFY(set.icon(name("Lute")).isNull());
        QCOMPARE(log.texts(), QStringList());
    }

    void aHugeIconIsNotDecoded_data()
    {
        QTest::addColumn<QByteArray>("icon");
        QTest::addColumn<bool>("isHuge");
        QTest::newRow("png") << picture(4097, 1) << true;
        QTest::newRow("png of the largest size") << picture(4096, 1) << false;
        QTest::newRow("gif") << gif(16000, 10) << true;
        QTest::newRow("gif of the largest size") << gif(4096, 10) << false;
        QTest::newRow("ico") << ico(picture(1, 20000)) << true;
        QTest::newRow("ico of the largest size") << ico(picture(1, 4096)) << false;
    }

    void aHugeIconIsNotDecoded()
    {
        QFETCH(QByteArray, icon);
        QFETCH(bool, isHuge);
        const QStringList messages =
            isHuge ? QStringList{name("No icon file found for instrument Lute!")} : QStringList();
        const Files lute = instrument("Lute", "lute").add("/items/instruments/lute.png", icon);
        const auto compare = [&] {
            const MessageCapture log;
            const QuillmoorInstrumentSet set(root(), false);
            QCOMPARE(set.icon(name("Lute")).availableSizes().isEmpty(), isHuge);
            QCOMPARE(log.texts(), messages);
        };
        lute.unpack(in("assets/user"));
        compare();
        lute.pack(in("assets/packed.pak"));
        compare();
    }

    void aDamagedPackageIsReportedAndHidesNoOther()
    {
        instrument("Lute", "lute").pack(in("assets/packed.pak"));
        writeFile(in("assets/bad.pak"), "no package");
        const MessageCapture log;
        QCOMPARE(names(), QStringList{name("Lute")});
        QCOMPARE(log.messages().size(), 1);
        compareMessage(log.messages().first(), QtWarningMsg, InPackage,
                       name("Failed to load pak file: Invalid Block File Header."));
    }

    void aPackageWithoutFileTableIsReported()
    {
        PackageBuilder builder;
        builder.addLeafBlock(PackageBuilder::number(0));
        builder.save(in("x.pak"));
        QuillmoorInstrumentSet set(root(), false);
        const MessageCapture log;
        QVERIFY(!set.loadPakFile(in("x.pak")));
        QCOMPARE(log.texts(), QStringList{name("Failed to load pak file: File table not found")});
    }

    void instrumentsBeforeTheDamageStay()
    {
        instrument("First", "a")
            .addInstrument("Second", "b")
            .addInstrument("Third", "c")
            .add("/sfx/instruments/b/tuning.config", "{")
            .pack(in("x.pak"));
        QuillmoorInstrumentSet set(root(), false);
        const MessageCapture log;
        QVERIFY(!set.loadPakFile(in("x.pak")));
        QCOMPARE(set.names(), (QStringList{name("First"), name("None")}));
        QCOMPARE(log.texts(),
                 QStringList{name("Failed to load pak file: Could not read tuning file for b. "
                                  "Reason: unterminated object.")});
    }

    void aPackageThatIsSoundIsAnsweredWithTrue()
    {
        Files().pack(in("x.pak"));
        QuillmoorInstrumentSet set(root(), false);
        QVERIFY(set.loadPakFile(in("x.pak")));
        QVERIFY(set.loadDirectory(root(), false));
    }

    void aDamagedLooseTuningIsThrown_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QString>("message");
        QTest::newRow("broken") << QByteArray(
            "{") << "Could not read tuning file for lute. Reason: unterminated object.";
        QTest::newRow("no object")
            << QByteArray("[]")
            << "Could not read tuning file for lute, root element is not an object.";
        QTest::newRow("no sample") << QByteArray("{\"mapping\":{\"60\":{\"f\":1}}}")
                                   << "Could not map instrument note 60 for lute.";
    }

    void aDamagedLooseTuningIsThrown()
    {
        QFETCH(QByteArray, contents);
        instrument("Lute", "lute")
            .add("/sfx/instruments/lute/tuning.config", contents)
            .unpack(in("user"));
        QTEST(thrownBy([&] { QuillmoorInstrumentSet(root(), false); }), "message");
    }

    void aDirectoryIsNoTuningFile()
    {
        Files()
            .add("/items/instruments/a.instrument", description("Kazoo", "kazoo"))
            .add("/sfx/instruments/kazoo/tuning.config/x", "")
            .unpack(in("user"));
        const MessageCapture log;
        QCOMPARE(names(), QStringList{name("None")});
        QCOMPARE(log.texts(), QStringList{name("No tuning file found for instrument Kazoo!")});
    }

    void aDirectoryIsNoIconFile()
    {
        instrument("Lute", "lute")
            .add("/items/instruments/lute.instrument",
                 "{\"shortdescription\":\"Lute\",\"kind\":\"lute\"}")
            .unpack(in("user"));
        const MessageCapture log;
        QCOMPARE(names(), QStringList{name("Lute")});
        QCOMPARE(log.texts(), QStringList{name("No icon file found for instrument Lute!")});
    }

    void pipesAreNotWaitedFor_data()
    {
        QTest::addColumn<QString>("pipe");
        QTest::addColumn<QString>("message");
        QTest::newRow("description") << "user/items/instruments/lute.instrument"
                                     << "Could not read instrument file lute.instrument.";
        QTest::newRow("tuning") << "user/sfx/instruments/lute/tuning.config"
                                << "No tuning file found for instrument Lute!";
        QTest::newRow("icon") << "user/items/instruments/lute.png"
                              << "No icon file found for instrument Lute!";
    }

    void pipesAreNotWaitedFor()
    {
        QFETCH(QString, pipe);
        QFETCH(QString, message);
        instrument("Lute", "lute").unpack(in("user"));
        QVERIFY(QFile::remove(m_dir->filePath(pipe)));
        QCOMPARE(mkfifo(in("pipe").toLocal8Bit().constData(), 0600), 0);
        QVERIFY(QFile::link(in("pipe"), m_dir->filePath(pipe)));
        const MessageCapture log;
        const QuillmoorInstrumentSet set(root(), false);
        QCOMPARE(log.texts(), QStringList{message});
    }

    void looseInstrumentsNeedBothDirectories()
    {
        Files().add("/items/instruments/a.instrument", "{").unpack(in("user"));
        instrument("Packed", "p").pack(in("user/x.pak"));
        const MessageCapture log;
        QCOMPARE(names(), QStringList{name("Packed")});
        QCOMPARE(log.texts(), QStringList());
    }

    void namesWithPlaceMarksStayAsTheyAre()
    {
        instrument("%1 %2", "%2").unpack(in("%2/mods/%1"));
        const QuillmoorInstrumentSet set(QDir(in("%2")), true);
        QCOMPARE(set.names(), QStringList{name("%1 %2")});
        QCOMPARE(sampleFile(set, "%1 %2"), in("%2/mods/%1/sfx/instruments/%2/c4.ogg"));
    }
};

QTEST_MAIN(TestQuillmoorInstrumentSet)
#include "tst_QuillmoorInstrumentSet.moc"
