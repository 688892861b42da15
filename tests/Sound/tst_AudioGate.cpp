#include "Sound/AudioGate.h"

#include "RealTimeGuard.h"
#include "WatchedSource.h"

#include <QtTest>

#include <algorithm>
#include <thread>
#include <vector>

namespace {

using Samples = std::vector<float>;
using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t Block = 512;

enum class Got { Music, Silence, Both };

Got pullAsDevice(AudioGate &gate, std::size_t frames = Block)
{
    Samples block(AudioOutput::Channels * frames, 99.0F);
    gate.fillForDevice(block.data(), frames);
    if (block == Samples(block.size(), WatchedSource::Level))
        return Got::Music;
    return block == Samples(block.size(), 0.0F) ? Got::Silence : Got::Both;
}

void pullAsClock(AudioGate &gate)
{
    Samples scratch(AudioOutput::Channels * Block);
    gate.pullForClock(scratch.data(), Block);
}

/// What the clock gets while the device pauses for so long and then pulls once.
std::uint64_t clockFramesInPause(AudioGate &gate, const WatchedSource &source, milliseconds pause)
{
    const std::uint64_t before = source.frames();
    const SteadyClock::time_point end = SteadyClock::now() + pause;
    while (SteadyClock::now() < end)
        pullAsClock(gate);
    const std::uint64_t frames = source.frames() - before;
    pullAsDevice(gate);
    return frames;
}

/// Well over what is waited for at first, and far from what is then.
constexpr milliseconds LongPause{400};

/// Makes long pauses until the clock keeps out of them; more than two only on a busy machine.
/// Answers how many that took.
int pausesToLearn(AudioGate &gate, const WatchedSource &source)
{
    int pauses = 0;
    while (clockFramesInPause(gate, source, LongPause) > 0 && pauses < 20)
        ++pauses;
    return pauses;
}

/// A source that whoever pulls it does not get out of, until it is let.
class SlowSource final : public AudioSource {
public:
    void fill(float *, std::size_t) noexcept override
    {
        m_isInside = true;
        while (!m_isFree)
            std::this_thread::yield();
        m_isInside = false;
    }

    void waitForVisitor() const
    {
        while (!m_isInside)
            std::this_thread::yield();
    }
    void letGo() { m_isFree = true; }
    bool isVisited() const { return m_isInside; }

private:
    std::atomic<bool> m_isInside{false};
    std::atomic<bool> m_isFree{false};
};

} // namespace

class tst_AudioGate : public QObject {
    Q_OBJECT

private slots:
    void deviceGetsSilenceUntilItMayPull();
    void clockPullsUntilTheDeviceDoes();
    void clockTakesOverFromAClosedDevice();
    void clockTakesOverFromAPausingDevice();
    void pausingDeviceComesBack();
    void habitOfLongPausesIsLearnt();
    void singleLongPauseIsNoHabit();
    void veryLongPausesAreNoHabit();
    void habitIsForgotten();
    void otherDeviceHasOtherHabits();
    void racingDeviceIsKeptBack();
    void filledBuffersAreNoRace();
    void nobodyGetsThroughAShutGate();
    void shuttingWaitsForWhoIsInside();
    void nobodyWaitsForTheOther();
    void theyTakeTurns();
    void neitherAllocatesNorLocks();
    void makesNoSystemCall();
};

void tst_AudioGate::deviceGetsSilenceUntilItMayPull()
{
    WatchedSource source;
    AudioGate gate(source);
    QCOMPARE(pullAsDevice(gate), Got::Silence);
    QVERIFY(!gate.isDevicePulling());
    gate.open();
    QVERIFY(!gate.isDevicePulling());
    QCOMPARE(source.frames(), std::uint64_t{0});
    QCOMPARE(pullAsDevice(gate, 100), Got::Music);
    QVERIFY(gate.isDevicePulling());
    QCOMPARE(source.frames(), std::uint64_t{100});
}

void tst_AudioGate::clockPullsUntilTheDeviceDoes()
{
    WatchedSource source;
    AudioGate gate(source);
    pullAsClock(gate);
    gate.open();
    pullAsClock(gate);
    QCOMPARE(source.frames(), std::uint64_t{2 * Block});
    pullAsDevice(gate);
    pullAsClock(gate);
    QCOMPARE(source.frames(), std::uint64_t{3 * Block});
}

void tst_AudioGate::clockTakesOverFromAClosedDevice()
{
    WatchedSource source;
    AudioGate gate(source);
    gate.open();
    pullAsDevice(gate);
    gate.close();
    QVERIFY(!gate.isDevicePulling());
    QCOMPARE(pullAsDevice(gate), Got::Silence);
    pullAsClock(gate);
    QCOMPARE(source.frames(), std::uint64_t{2 * Block});
    gate.open();
    pullAsClock(gate);
    QCOMPARE(source.frames(), std::uint64_t{3 * Block});
}

void tst_AudioGate::clockTakesOverFromAPausingDevice()
{
    WatchedSource source;
    AudioGate gate(source);
    gate.open();
    const SteadyClock::time_point before = SteadyClock::now();
    pullAsDevice(gate);
    const SteadyClock::time_point after = SteadyClock::now();
    while (source.frames() == Block) {
        pullAsClock(gate);
        QVERIFY(SteadyClock::now() - after < milliseconds(10000));
    }
    QVERIFY(SteadyClock::now() - before >= AudioGate::Patience);
    QVERIFY(AudioGate::Patience + milliseconds(11) < milliseconds(200)); // with a tick of the clock
    QVERIFY(!gate.isDevicePulling());
}

void tst_AudioGate::pausingDeviceComesBack()
{
    WatchedSource source;
    AudioGate gate(source);
    gate.open();
    pullAsDevice(gate);
    QTRY_VERIFY(!gate.isDevicePulling());
    pullAsClock(gate);
    QCOMPARE(pullAsDevice(gate), Got::Music);
    QVERIFY(gate.isDevicePulling());
}

void tst_AudioGate::habitOfLongPausesIsLearnt()
{
    WatchedSource source;
    AudioGate gate(source);
    gate.open();
    pullAsDevice(gate);
    const int pauses = pausesToLearn(gate, source);
    QVERIFY2(pauses >= 2 && pauses < 20, qPrintable(QString::number(pauses)));
    QTRY_VERIFY(!gate.isDevicePulling()); // when it stops altogether
    pullAsClock(gate);
    QCOMPARE(pullAsDevice(gate), Got::Music);
}

void tst_AudioGate::singleLongPauseIsNoHabit()
{
    WatchedSource source;
    AudioGate gate(source);
    gate.open();
    pullAsDevice(gate);
    QVERIFY(clockFramesInPause(gate, source, LongPause) > 0);
    QVERIFY(clockFramesInPause(gate, source, LongPause) > 0);
}

/// The clock takes a device's place that does not come for seconds, however often.
void tst_AudioGate::veryLongPausesAreNoHabit()
{
    WatchedSource source;
    AudioGate gate(source);
    gate.open();
    pullAsDevice(gate);
    for (int i = 0; i < 2; ++i)
        QVERIFY(clockFramesInPause(gate, source, milliseconds(1010)) > 0);
    QVERIFY(clockFramesInPause(gate, source, LongPause) > 0);
}

/// In one of some attempts: a busy machine makes it pause again meanwhile.
void tst_AudioGate::habitIsForgotten()
{
    const auto isForgotten = [] {
        WatchedSource source;
        AudioGate gate(source);
        gate.open();
        pullAsDevice(gate);
        pausesToLearn(gate, source);
        const SteadyClock::time_point end = SteadyClock::now() + AudioGate::Memory;
        while (SteadyClock::now() <= end + milliseconds(20))
            clockFramesInPause(gate, source, milliseconds(10));
        return clockFramesInPause(gate, source, LongPause) > 0;
    };
    bool hasForgotten = false;
    for (int i = 0; i < 5 && !hasForgotten; ++i)
        hasForgotten = isForgotten();
    QVERIFY(hasForgotten);
}

void tst_AudioGate::otherDeviceHasOtherHabits()
{
    WatchedSource source;
    AudioGate gate(source);
    gate.open();
    pullAsDevice(gate);
    QVERIFY(pausesToLearn(gate, source) < 20);
    gate.open();
    pullAsDevice(gate);
    QVERIFY(clockFramesInPause(gate, source, LongPause) > 0);
}

void tst_AudioGate::racingDeviceIsKeptBack()
{
    WatchedSource source;
    AudioGate gate(source);
    const SteadyClock::time_point start = SteadyClock::now();
    gate.open();
    while (pullAsDevice(gate) == Got::Music)
        QVERIFY(SteadyClock::now() - start < milliseconds(10000));
    QVERIFY(gate.isDeviceRacing());
    const double seconds = std::chrono::duration<double>(SteadyClock::now() - start).count();
    QVERIFY(source.frames() > 48000);
    QVERIFY(static_cast<double>(source.frames()) < (1.0 + 1.2 * seconds) * 48000 + 2 * Block);
    QCOMPARE(pullAsDevice(gate), Got::Silence);
    gate.open();
    QVERIFY(!gate.isDeviceRacing());
    QCOMPARE(pullAsDevice(gate), Got::Music);
}

void tst_AudioGate::filledBuffersAreNoRace()
{
    WatchedSource source;
    AudioGate gate(source);
    gate.open();
    for (int i = 0; i < 48000 / 480; ++i)
        QCOMPARE(pullAsDevice(gate, 480), Got::Music);
    QVERIFY(!gate.isDeviceRacing());
}

void tst_AudioGate::nobodyGetsThroughAShutGate()
{
    WatchedSource source;
    AudioGate gate(source);
    gate.open();
    gate.shut();
    pullAsClock(gate);
    QCOMPARE(pullAsDevice(gate), Got::Silence);
    gate.open();
    QCOMPARE(pullAsDevice(gate), Got::Silence);
    gate.close();
    pullAsClock(gate);
    QCOMPARE(source.frames(), std::uint64_t{0});
}

void tst_AudioGate::shuttingWaitsForWhoIsInside()
{
    SlowSource source;
    AudioGate gate(source);
    gate.open();
    std::thread device([&] { pullAsDevice(gate); });
    source.waitForVisitor();
    std::thread helper([&] { source.letGo(); });
    gate.shut();
    QVERIFY(!source.isVisited());
    device.join();
    helper.join();
}

void tst_AudioGate::nobodyWaitsForTheOther()
{
    SlowSource source;
    AudioGate gate(source);
    gate.open();
    std::thread clock([&] { pullAsClock(gate); });
    source.waitForVisitor();
    QCOMPARE(pullAsDevice(gate), Got::Silence);
    QVERIFY(!gate.isDevicePulling());
    source.letGo();
    clock.join();
}

void tst_AudioGate::theyTakeTurns()
{
    constexpr int Rounds = 100;
    WatchedSource source;
    AudioGate gate(source);
    std::atomic<bool> isOver{false};
    std::atomic<int> devicePulls{0};
    std::thread device([&] {
        while (!isOver)
            if (pullAsDevice(gate, 1) == Got::Music)
                ++devicePulls;
    });
    std::thread clock([&] {
        while (!isOver)
            pullAsClock(gate);
    });
    for (int round = 0; round < Rounds; ++round) {
        const int pulls = devicePulls;
        gate.open();
        while (devicePulls == pulls)
            std::this_thread::yield();
        gate.close();
        const std::uint64_t frames = source.frames();
        while (source.frames() < frames + Block)
            std::this_thread::yield();
    }
    gate.shut();
    isOver = true;
    device.join();
    clock.join();
    QVERIFY(!source.wasCrowded());
}

void tst_AudioGate::neitherAllocatesNorLocks()
{
    WatchedSource source;
    AudioGate gate(source);
    Samples block(AudioOutput::Channels * Block);
    const auto both = [&] {
        gate.fillForDevice(block.data(), Block);
        gate.pullForClock(block.data(), Block);
    };
    QCOMPARE(RealTimeGuard::forbiddenCalls(both), std::size_t{0});
    gate.open();
    QCOMPARE(RealTimeGuard::forbiddenCalls(both), std::size_t{0});
}

void tst_AudioGate::makesNoSystemCall()
{
    const auto nothing = [] {};
    // On some machines even this is one.
    if (!RealTimeGuard::worksWithoutSystem([] { (void)SteadyClock::now(); }, nothing))
        return;
    WatchedSource source;
    AudioGate gate(source);
    Samples block(AudioOutput::Channels * Block);
    gate.open();
    QVERIFY(RealTimeGuard::worksWithoutSystem(
        [&] {
            for (int i = 0; i < 1000; ++i) // of which the last ones are held back
                gate.fillForDevice(block.data(), Block);
        },
        nothing));
}

QTEST_APPLESS_MAIN(tst_AudioGate)
#include "tst_AudioGate.moc"
