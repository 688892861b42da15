#include "Player/SoundCache.h"
#include "Quillmoor/PakWriter.h"
#include "support/FakeFmod.h"

#include <QFile>
#include <QtTest>

#include <vector>

namespace {

/// A fake system and a cache that notes the results it met.
class Stage {
public:
    Stage()
    {
        QCOMPARE(FMOD::System_Create(&system), FMOD_OK);
        fake.clearCalls();
    }
    ~Stage() { QCOMPARE(system->release(), FMOD_OK); }
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;

    FMOD::Sound *sound(const QString &path) { return cache.sound(*system, path); }

    QString messageOf(const QString &path)
    {
        try {
            cache.sound(*system, path);
        } catch (const QString &message) {
            return message;
        }
        return QStringLiteral("nothing thrown");
    }

    FakeFmod fake;
    FMOD::System *system = nullptr;
    std::vector<FMOD_RESULT> results;
    SoundCache cache{[this](FMOD_RESULT result) { results.push_back(result); }};
};

QString packageWith(const QTemporaryDir &dir, const QString &path, const QByteArray &contents)
{
    PakWriter writer;
    writer.add(path, contents);
    QString fileName = dir.filePath(QStringLiteral("sounds.pak"));
    writer.save(fileName);
    return fileName;
}

} // namespace

class tst_SoundCache : public QObject {
    Q_OBJECT

private slots:
    void loadsAFileOnce();
    void passesTheNameInTheLocalEncoding();
    void loadsFromAPackageWithAZeroFilledRecord();
    void throwsForAPackagePathWithoutSeparator();
    void throwsWhatThePackageReaderThrows();
    void looksAtABrokenPathOnlyOnce();
    void remembersASoundThatCouldNotBeMade();
    void releasesAllAndForgets();
};

void tst_SoundCache::loadsAFileOnce()
{
    Stage stage;
    FMOD::Sound *const sound = stage.sound(QStringLiteral("/game/c4.ogg"));
    QVERIFY(sound);
    QCOMPARE(stage.sound(QStringLiteral("/game/c4.ogg")), sound);
    QVERIFY(stage.sound(QStringLiteral("/game/d4.ogg")) != sound);
    QCOMPARE(stage.fake.calls(),
             QStringList() << QStringLiteral("FMOD_System_CreateSound(system1, \"/game/c4.ogg\", "
                                             "0x148, null) -> sound1")
                           << QStringLiteral("FMOD_System_CreateSound(system1, \"/game/d4.ogg\", "
                                             "0x148, null) -> sound2"));
    stage.cache.releaseAll();
}

void tst_SoundCache::passesTheNameInTheLocalEncoding()
{
    Stage stage;
    const QString path = QString::fromUtf8("/spiel/fl\xC3\xB6te.ogg");
    stage.sound(path);
    const QString expected = QString::fromLocal8Bit(path.toLocal8Bit());
    QVERIFY(
        stage.fake.calls().constFirst().contains(QLatin1Char('"') + expected + QLatin1Char('"')));
    stage.cache.releaseAll();
}

void tst_SoundCache::loadsFromAPackageWithAZeroFilledRecord()
{
    QTemporaryDir dir;
    const QString package = packageWith(dir, QStringLiteral("/c4.ogg"), "OggS-and-more");
    Stage stage;
    const QString path = QStringLiteral("pak://%1::/c4.ogg").arg(package);
    FMOD::Sound *const sound = stage.sound(path);
    QVERIFY(sound);
    QVERIFY(QFile::remove(package));
    QCOMPARE(stage.sound(path), sound);
    QCOMPARE(stage.fake.calls(),
             QStringList(QStringLiteral("FMOD_System_CreateSound(system1, data:4f6767532d616e64, "
                                        "0x948, {cbsize=216, length=13, rest=0}) -> sound1")));
    stage.cache.releaseAll();
}

void tst_SoundCache::throwsForAPackagePathWithoutSeparator()
{
    Stage stage;
    const QString message = QStringLiteral("Invalid pak:// filename");
    QCOMPARE(stage.messageOf(QStringLiteral("pak:///game/a.pak")), message);
    QCOMPARE(stage.messageOf(QStringLiteral("pak:///game/a.pak:/c4.ogg")), message);
    QCOMPARE(stage.messageOf(QStringLiteral("pak://")), message);
    QCOMPARE(stage.fake.calls(), QStringList());
}

void tst_SoundCache::throwsWhatThePackageReaderThrows()
{
    QTemporaryDir dir;
    const QString package = packageWith(dir, QStringLiteral("/c4.ogg"), "OggS");
    Stage stage;
    QCOMPARE(stage.messageOf(QStringLiteral("pak://%1::/d4.ogg").arg(package)),
             QStringLiteral("File not found"));
    QCOMPARE(stage.fake.calls(), QStringList());
}

void tst_SoundCache::looksAtABrokenPathOnlyOnce()
{
    QTemporaryDir dir;
    const QString package = packageWith(dir, QStringLiteral("/c4.ogg"), "OggS");
    const QString path = QStringLiteral("pak://%1::/d4.ogg").arg(package);
    Stage stage;
    QCOMPARE(stage.messageOf(path), QStringLiteral("File not found"));
    packageWith(dir, QStringLiteral("/d4.ogg"), "OggS");
    QCOMPARE(stage.messageOf(path), QStringLiteral("File not found"));
    stage.cache.forgetFailures();
    QCOMPARE(stage.messageOf(path), QStringLiteral("nothing thrown"));
    stage.cache.releaseAll();
}

void tst_SoundCache::remembersASoundThatCouldNotBeMade()
{
    Stage stage;
    stage.fake.fail(QStringLiteral("FMOD_System_CreateSound"), 1, FMOD_ERR_FILE_NOTFOUND);
    QVERIFY(!stage.sound(QStringLiteral("/missing.ogg")));
    QVERIFY(!stage.sound(QStringLiteral("/missing.ogg")));
    QCOMPARE(stage.fake.calls().size(), 1);
    QVERIFY((stage.results == std::vector<FMOD_RESULT>{FMOD_ERR_FILE_NOTFOUND}));
    stage.cache.releaseAll();
    QCOMPARE(stage.fake.calls().size(), 1);
}

void tst_SoundCache::releasesAllAndForgets()
{
    Stage stage;
    stage.sound(QStringLiteral("/a.ogg"));
    stage.sound(QStringLiteral("/b.ogg"));
    stage.fake.clearCalls();
    stage.cache.releaseAll();
    QStringList calls = stage.fake.calls();
    calls.sort();
    QCOMPARE(calls,
             QStringList() << QStringLiteral("FMOD_Sound_Release(sound1)")
                           << QStringLiteral("FMOD_Sound_Release(sound2)"));
    stage.fake.clearCalls();
    stage.cache.releaseAll();
    QCOMPARE(stage.fake.calls(), QStringList());
    QVERIFY(stage.sound(QStringLiteral("/a.ogg")));
    QCOMPARE(stage.fake.calls().size(), 1);
    stage.cache.releaseAll();
}

QTEST_APPLESS_MAIN(tst_SoundCache)
#include "tst_SoundCache.moc"
