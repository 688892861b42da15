#include "Player/TrackPlayer.h"
#include "PlayerStage.h"
#include "Sound/BuiltinSystem.h"
#include "Sound/ThreadPriority.h"
#include "support/MessageCapture.h"
#include "support/VirtualClock.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <random>
#include <thread>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

#if QUILLMOOR_HAS_THREAD_SANITIZER
constexpr qint64 HammerMs = 30000;
#else
constexpr qint64 HammerMs = 2000;
#endif

int niceness()
{
    return getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
}

/// A number below `end`.
quint32 below(quint32 end, std::minstd_rand &random)
{
    return static_cast<quint32>(random() % end);
}

/// Short notes of a pitch that is mapped, and some of one that is not.
Track notes(std::minstd_rand &random)
{
    std::vector<TrackEvent> events;
    for (quint64 i = 0; i < 300; ++i)
        events.push_back(TrackEvent::makeNote(below(20, random) == 0 ? 99 : 60 + below(12, random),
                                              below(500000, random), below(20000, random)));
    events.push_back(TrackEvent::makeTempo(below(500000, random), 1, 4, 60 + below(200, random)));
    return PlayerStage::track(events);
}

/// A tenth of a second that is no silence.
QByteArray wave()
{
    const char header[] = "RIFF\x9c\x22\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x44\xac\0\0\x88\x58\x01"
                          "\0\x02\0\x10\0data\x78\x22\0\0";
    return QByteArray(header, sizeof header - 1) + QByteArray(8824, '\x11');
}

Instrument instrumentIn(const QTemporaryDir &dir)
{
    QFile file(dir.filePath(text("a.wav")));
    if (!file.open(QIODevice::WriteOnly) || file.write(wave()) < 0)
        qFatal("no sample");
    QByteArray mapping = "\"60\": {\"file\": \"a.wav\", \"f\": 200}";
    for (int note = 61; note < 72; ++note)
        mapping += ", \"" + QByteArray::number(note)
            + "\": {\"f\": " + QByteArray::number(200 + 10 * (note - 60)) + "}";
    return Instrument::fromBytes(text("harp"), "{\"fadeout\": 0.1, \"mapping\": {" + mapping + "}}",
                                 dir.path() + QLatin1Char('/'));
}

/// Does something to a player, any time something else.
class Hammer {
public:
    Hammer(TrackPlayer &player, const Instrument &instrument)
        : m_player(player)
        , m_instrument(instrument)
    {
    }

    void strike()
    {
        const QString id = QString::number(below(8, m_random));
        const float level = static_cast<float>(below(100, m_random)) / 100;
        switch (below(14, m_random)) {
        case 0:
            m_player.playNote(m_instrument, 55 + static_cast<int>(below(20, m_random)));
            break;
        case 1:
            m_player.playTrack(id, m_instrument, notes(m_random), false, level, level);
            break;
        case 2:
        case 3:
            m_player.playTrack(id, text("Main"), m_instrument, notes(m_random), false, level,
                               -level);
            break;
        case 4:
            m_player.muteTrack(id, level > 0.5F);
            break;
        case 5:
            m_player.changeInstrument(id, level > 0.2F ? m_instrument : Instrument());
            break;
        case 6:
        case 7:
            m_player.setVolume(id, level);
            break;
        case 8:
        case 9:
            m_player.setPan(id, level);
            break;
        case 10:
        case 11:
            m_player.seek(id, below(500000, m_random));
            break;
        case 12:
            m_player.stopTrack(id);
            break;
        default:
            strikeAll();
        }
    }

private:
    void strikeAll()
    {
        if (below(4, m_random) == 0)
            m_player.stopAll();
        else
            m_player.seekAll(below(500000, m_random));
    }

    TrackPlayer &m_player;
    Instrument m_instrument;
    std::minstd_rand m_random; // in its initial state
};

} // namespace

/// For the thread sanitizer, under which it takes its time.
class tst_TrackPlayerThreads : public QObject {
    Q_OBJECT

private slots:
    void everyCallWhileAnotherThreadPulls();
    void theWorkersThreadIsPreferred();
};

void tst_TrackPlayerThreads::everyCallWhileAnotherThreadPulls()
{
    QTemporaryDir dir;
    VirtualClock clock;
    clock.runFreely(512);
    MessageCapture log;
    {
        TrackPlayer player(nullptr, [&clock](FMOD::System **system) {
            return createBuiltinSystem(system, 2, clock.outputs());
        });
        QSignalSpy started(&player, &TrackPlayer::trackStarted);
        QSignalSpy pressed(&player, &TrackPlayer::notePressed);
        Hammer hammer(player, instrumentIn(dir));
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < HammerMs) {
            for (int i = 0; i < 10; ++i)
                hammer.strike();
            QTest::qWait(1);
        }
        QVERIFY(started.size() > 10);
        QVERIFY(!pressed.isEmpty());
    }
    QVERIFY(!clock.isRunning());
    const QStringList logged = log.texts();
    QCOMPARE(logged.count(text("Invalid note index")), logged.size());
    QVERIFY(logged.size() <= HammerMs / 1000 + 1);
}

void tst_TrackPlayerThreads::theWorkersThreadIsPreferred()
{
    int preferred = 0;
    std::thread([&] {
        ThreadPriority::prefer();
        preferred = niceness();
    }).join();
    VirtualClock clock;
    std::atomic<int> worker = 99;
    {
        const TrackPlayer player(nullptr, [&](FMOD::System **system) {
            worker = niceness();
            return createBuiltinSystem(system, 2, clock.outputs());
        });
    }
    QCOMPARE(worker.load(), preferred);
}

QTEST_GUILESS_MAIN(tst_TrackPlayerThreads)
#include "tst_TrackPlayerThreads.moc"
