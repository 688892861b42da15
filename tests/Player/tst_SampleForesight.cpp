#include "Player/SampleForesight.h"

#include "PlayerStage.h"
#include "Sound/BuiltinSystem.h"
#include "Sound/LiveStatus.h"
#include "support/MessageCapture.h"
#include "support/VirtualClock.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr std::size_t BlockFrames = 512;
constexpr quint32 LowestPitch = 30;
constexpr int ChordNotes = 40;
constexpr quint64 ChordTime = 60480; // ticks: a second
constexpr quint64 ChordLength = 6048;

/// A tenth of a second of a constant level.
QByteArray wave()
{
    const char header[] = "RIFF\xa4\x25\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x80\xbb\0\0\0\x77\x01"
                          "\0\x02\0\x10\0data\x80\x25\0\0";
    return QByteArray(header, sizeof header - 1) + QByteArray(9600, '\1');
}

/// Each note has a file of its own. `folder` ends with a slash.
Instrument instrumentIn(const QString &folder)
{
    QStringList entries;
    for (int i = 0; i < ChordNotes; ++i)
        entries << QStringLiteral(R"("%1": {"file": "%1.wav", "f": 200})").arg(30 + i);
    const QString tuning =
        QStringLiteral(R"({"fadeout": 0, "mapping": {%1}})").arg(entries.join(QLatin1Char(',')));
    return Instrument::fromBytes(text("organ"), tuning.toUtf8(), folder);
}

void writeSamples(const QTemporaryDir &dir)
{
    for (int i = 0; i < ChordNotes; ++i) {
        QFile file(dir.filePath(QStringLiteral("%1.wav").arg(30 + i)));
        if (!file.open(QIODevice::WriteOnly) || file.write(wave()) < 0)
            qFatal("no sample");
    }
}

QString folderOf(const QTemporaryDir &dir)
{
    return dir.path() + QLatin1Char('/');
}

Track chordAt(quint64 time)
{
    std::vector<TrackEvent> events;
    for (quint32 i = 0; i < ChordNotes; ++i)
        events.push_back(TrackEvent::makeNote(LowestPitch + i, time, ChordLength));
    return PlayerStage::track(events);
}

/// A worker of the built-in engine that makes one sample in a pass and no more: far too slow for
/// the chord in the 100 ms of the scheduling.
class SlowPlayer {
public:
    SlowPlayer()
        : worker([this](FMOD::System **made) {
            const FMOD_RESULT result = createBuiltinSystem(&system, 0, clock.outputs());
            *made = system;
            return result;
        })
    {
        QObject::connect(&worker, &PlayerWorker::notePressed, &worker, [this] { ++pressed; });
        worker.initialize();
    }
    ~SlowPlayer() { worker.terminate(); }
    SlowPlayer(const SlowPlayer &) = delete;
    SlowPlayer &operator=(const SlowPlayer &) = delete;

    void play(const Instrument &instrument, const Track &track)
    {
        worker.playTrack(text("T1"), instrument, track, false, 0.1F, 0.0F);
    }

    /// Passes, a block of the output after each.
    void run(int passes)
    {
        for (int i = 0; i < passes; ++i) {
            QMetaObject::invokeMethod(&worker, "update", Qt::QueuedConnection);
            QCoreApplication::sendPostedEvents(&worker);
            clock.pull(BlockFrames);
        }
    }

    std::uint64_t lateStarts() const { return LiveStatus::lateStarts(*system); }

    VirtualClock clock;
    FMOD::System *system = nullptr;
    int pressed = 0;
    PlayerWorker worker;
};

} // namespace

class tst_SampleForesight : public QObject {
    Q_OBJECT

private slots:
    void unheardSoundsAreReadyInTime();
    void theBeginningHasNoMoreThanTheLookAhead();
    void aSeekLooksAheadFromThere();
    void aNewInstrumentIsLookedAtAgain();
    void whatCannotBeLoadedIsToldWhenItIsDue();
    void anotherProviderLoadsWhenItSchedules();
};

void tst_SampleForesight::unheardSoundsAreReadyInTime()
{
    const QTemporaryDir dir;
    writeSamples(dir);
    SlowPlayer player;
    player.play(instrumentIn(folderOf(dir)), chordAt(ChordTime));
    player.run(150);
    QCOMPARE(player.pressed, ChordNotes);
    QCOMPARE(player.lateStarts(), std::uint64_t{0});
}

/// Shows that the other tests' chord is late without foresight.
void tst_SampleForesight::theBeginningHasNoMoreThanTheLookAhead()
{
    const QTemporaryDir dir;
    writeSamples(dir);
    SlowPlayer player;
    player.play(instrumentIn(folderOf(dir)), chordAt(0));
    player.run(150);
    QCOMPARE(player.pressed, ChordNotes);
    QVERIFY(player.lateStarts() > 0);
}

void tst_SampleForesight::aSeekLooksAheadFromThere()
{
    const QTemporaryDir dir;
    writeSamples(dir);
    SlowPlayer player;
    Track track = chordAt(3 * ChordTime);
    track.addEvent(TrackEvent::makeNote(LowestPitch, 100 * ChordTime, ChordLength));
    track.sortEvents();
    player.play(instrumentIn(folderOf(dir)), track);
    player.worker.seek(text("T1"), 50 * ChordTime);
    player.run(20); // passes the chord over
    player.worker.seek(text("T1"), 2 * ChordTime);
    player.run(150);
    QCOMPARE(player.pressed, ChordNotes);
    QCOMPARE(player.lateStarts(), std::uint64_t{0});
}

void tst_SampleForesight::aNewInstrumentIsLookedAtAgain()
{
    const QTemporaryDir dir;
    const QTemporaryDir other;
    writeSamples(dir);
    writeSamples(other);
    SlowPlayer player;
    player.play(instrumentIn(folderOf(dir)), chordAt(2 * ChordTime));
    player.run(100);
    player.worker.changeInstrument(text("T1"), instrumentIn(folderOf(other)));
    player.run(150);
    QCOMPARE(player.pressed, ChordNotes);
    QCOMPARE(player.lateStarts(), std::uint64_t{0});
}

void tst_SampleForesight::whatCannotBeLoadedIsToldWhenItIsDue()
{
    MessageCapture capture;
    SlowPlayer player;
    const Instrument broken = Instrument::fromBytes(
        text("organ"), R"({"fadeout": 0, "mapping": {"30": {"file": "x", "f": 200}}})",
        text("pak://"));
    player.play(broken,
                PlayerStage::track({TrackEvent::makeNote(30, ChordTime, ChordLength),
                                    TrackEvent::makeNote(99, ChordTime, ChordLength)}));
    player.run(80); // due after 100
    QCOMPARE(capture.texts(), QStringList());
    player.run(40);
    QVERIFY(!capture.texts().isEmpty());
}

void tst_SampleForesight::anotherProviderLoadsWhenItSchedules()
{
    PlayerStage stage;
    stage.play(text("T1"), {PlayerStage::quarter(60, ChordTime)});
    stage.fake.clearCalls();
    for (int pass = 0; pass < 50; ++pass)
        stage.passAt(0); // enough to look two seconds ahead
    QVERIFY(stage.fake.calls(text("FMOD_System_CreateSound")).isEmpty());
    stage.passAt(48000);
    QCOMPARE(stage.fake.calls(text("FMOD_System_CreateSound")).size(), 1);
}

QTEST_GUILESS_MAIN(tst_SampleForesight)
#include "tst_SampleForesight.moc"
