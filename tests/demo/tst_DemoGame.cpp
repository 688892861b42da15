#include "demo/DemoGame.h"

#include "Quillmoor/GameDirectory.h"
#include "Quillmoor/PakReader.h"
#include "Quillmoor/QuillmoorInstrumentSet.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

class tst_DemoGame : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void passesTheGameDirectoryTest();
    void holdsInstrumentsOfDifferentCharacter();
    void givesEveryInstrumentAnIcon();
    void mapsEveryNoteOfEveryInstrument();
    void derivesSomeNotesAndSamplesOthers();
    void hasEverySampleThatATuningNames();
    void hasSeveralFilesForADrum();
    void addsOneInstrumentForEachMod();
    void packsALooseAndAPackagedMod();
    void packageHasSeveralLevelsOfIndexBlocks();
    void packageHasChainedLeafBlocks();
    void staysBelowTwelveMegabytes();
    void writesTheSameBytesEachTime();

private:
    QString path(const QString &relative) const { return m_dir.filePath(relative); }

    QTemporaryDir m_dir;
};

namespace {

/// All files below a directory by their relative path.
QMap<QString, QByteArray> tree(const QString &root)
{
    QMap<QString, QByteArray> files;
    QDirIterator entry(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entry.hasNext()) {
        QFile file(entry.next());
        if (file.open(QIODevice::ReadOnly))
            files.insert(QDir(root).relativeFilePath(file.fileName()), file.readAll());
    }
    return files;
}

QStringList keepOnly(QStringList from, const QStringList &without)
{
    for (const QString &name : without)
        from.removeAll(name);
    return from;
}

/// A package's blocks, read straight from its bytes.
class Blocks {
public:
    explicit Blocks(const QString &path)
        : m_reader(path)
    {
        m_reader.open();
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            m_bytes = file.readAll();
    }

    int root() const { return m_reader.rootBlock(); }
    int count() const { return (m_bytes.size() - m_reader.headerSize()) / m_reader.blockSize(); }
    QByteArray tag(int block) const { return m_bytes.mid(offset(block), 2); }
    int firstChild(int block) const { return number(offset(block) + 7); }
    int nextInChain(int block) const { return number(offset(block + 1) - 4); }

private:
    int offset(int block) const { return m_reader.headerSize() + block * m_reader.blockSize(); }
    int number(int at) const { return qFromBigEndian<qint32>(m_bytes.constData() + at); }

    PakReader m_reader;
    QByteArray m_bytes;
};

} // namespace

void tst_DemoGame::initTestCase()
{
    QVERIFY(m_dir.isValid());
    DemoGame().write(m_dir.path());
}

void tst_DemoGame::passesTheGameDirectoryTest()
{
    QVERIFY(isGameDirectory(QDir(m_dir.path())));
}

void tst_DemoGame::holdsInstrumentsOfDifferentCharacter()
{
    const QuillmoorInstrumentSet set(QDir(m_dir.path()), false);
    const QString names =
        QStringLiteral("Accordion Bass Bells Cello Clarinet Drums Fiddle Flute Harp Horn Lute "
                       "Marimba Organ Piano Shawm");
    QCOMPARE(set.names(), names.split(QLatin1Char(' ')));
}

void tst_DemoGame::givesEveryInstrumentAnIcon()
{
    const QuillmoorInstrumentSet set(QDir(m_dir.path()), true);
    for (const QString &name : set.names())
        QCOMPARE(set.icon(name).availableSizes(), QList<QSize>{QSize(48, 48)});
}

void tst_DemoGame::mapsEveryNoteOfEveryInstrument()
{
    const QuillmoorInstrumentSet set(QDir(m_dir.path()), true);
    for (const QString &name : set.names()) {
        const Instrument instrument = set.instrument(name);
        QCOMPARE(instrument.mapping().size(), 88);
        QVERIFY2(instrument.fadeout() >= 0.08 && instrument.fadeout() <= 0.8, qPrintable(name));
        for (uint note = 21; note <= 108; ++note)
            QVERIFY2(!instrument.sample(note).files().isEmpty(), qPrintable(name));
    }
}

void tst_DemoGame::derivesSomeNotesAndSamplesOthers()
{
    const QuillmoorInstrumentSet set(QDir(m_dir.path()), false);
    const Instrument lute = set.instrument(QStringLiteral("Lute"));
    QCOMPARE(lute.name(), QStringLiteral("lute"));
    QCOMPARE(lute.sample(36).pitch(), 1.0);
    QVERIFY(lute.sample(36).files().first().endsWith(
        QLatin1String("/assets/packed.pak::/sfx/instruments/lute/c2.ogg")));
    QCOMPARE(lute.sample(37).files(), lute.sample(36).files());
    QVERIFY(qAbs(lute.sample(37).pitch() - 1.0594631) < 1e-5);
}

void tst_DemoGame::hasEverySampleThatATuningNames()
{
    PakReader package(path(QStringLiteral("assets/packed.pak")));
    const QStringList files = package.fileList();
    const QString prefix =
        QStringLiteral("pak://%1::").arg(path(QStringLiteral("assets/packed.pak")));
    const QuillmoorInstrumentSet set(QDir(m_dir.path()), false);
    for (const QString &name : set.names()) {
        const Instrument instrument = set.instrument(name);
        for (const InstrumentSample &sample : instrument.mapping()) {
            for (const QString &file : sample.files())
                QVERIFY2(files.contains(file.mid(prefix.size())), qPrintable(file));
        }
    }
}

void tst_DemoGame::hasSeveralFilesForADrum()
{
    const QuillmoorInstrumentSet set(QDir(m_dir.path()), false);
    QCOMPARE(set.instrument(QStringLiteral("Drums")).sample(38).files().size(), 4);
}

void tst_DemoGame::addsOneInstrumentForEachMod()
{
    const QuillmoorInstrumentSet plain(QDir(m_dir.path()), false);
    const QuillmoorInstrumentSet withMods(QDir(m_dir.path()), true);
    QCOMPARE(keepOnly(withMods.names(), plain.names()),
             (QStringList{QStringLiteral("Music Box"), QStringLiteral("Tin Whistle")}));
}

void tst_DemoGame::packsALooseAndAPackagedMod()
{
    QVERIFY(QFile::exists(
        path(QStringLiteral("mods/Street Music/items/instruments/Tin Whistle.instrument"))));
    QVERIFY(QFile::exists(
        path(QStringLiteral("mods/Street Music/sfx/instruments/tinwhistle/tuning.config"))));
    PakReader package(path(QStringLiteral("mods/Music Box.modpak")));
    QVERIFY(package.hasFile(QStringLiteral("/items/instruments/Music Box.instrument")));
}

void tst_DemoGame::packageHasSeveralLevelsOfIndexBlocks()
{
    const Blocks blocks(path(QStringLiteral("assets/packed.pak")));
    QCOMPARE(blocks.tag(blocks.root()), QByteArray("II"));
    QCOMPARE(blocks.tag(blocks.firstChild(blocks.root())), QByteArray("II"));
}

void tst_DemoGame::packageHasChainedLeafBlocks()
{
    const Blocks blocks(path(QStringLiteral("assets/packed.pak")));
    int chained = 0;
    for (int block = 0; block < blocks.count(); ++block)
        chained += blocks.tag(block) == "LL" && blocks.nextInChain(block) != -1 ? 1 : 0;
    QVERIFY2(chained > 100, qPrintable(QString::number(chained)));
}

void tst_DemoGame::staysBelowTwelveMegabytes()
{
    int size = 0;
    for (const QByteArray &file : tree(m_dir.path()))
        size += file.size();
    QVERIFY2(size < 12000000, qPrintable(QString::number(size)));
}

void tst_DemoGame::writesTheSameBytesEachTime()
{
    const QTemporaryDir other;
    DemoGame().write(other.path());
    QCOMPARE(tree(other.path()).keys(), tree(m_dir.path()).keys());
    QVERIFY(tree(other.path()) == tree(m_dir.path()));
}

QTEST_MAIN(tst_DemoGame)
#include "tst_DemoGame.moc"
