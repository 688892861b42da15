#include "Sound/SilentClock.h"

#include "WatchedSource.h"

#include <QtTest>

#include <ctime>
#include <memory>
#include <vector>

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr double Blocks = 2 * 512;

double framesIn(SteadyClock::duration time)
{
    return 48000 * std::chrono::duration<double>(time).count();
}

/// Keeps whoever pulls it for the first time for 300 ms.
class StumblingSource final : public AudioSource {
public:
    void fill(float *, std::size_t frames) noexcept override
    {
        if (m_frames == 0)
            std::this_thread::sleep_for(milliseconds(300));
        m_frames += frames;
    }
    std::uint64_t frames() const { return m_frames; }

private:
    std::atomic<std::uint64_t> m_frames{0};
};

} // namespace

class tst_SilentClock : public QObject {
    Q_OBJECT

private slots:
    void keepsTime();
    void delayIsMadeUpFor();
    void restsWhileADevicePulls();
    void nothingIsPulledAfterItsEnd();
    void endsAtOnce();
    void endsWithoutAStart();
    void costsLittle();
};

/// A busy machine may make it late, but what it has missed it makes up for.
void tst_SilentClock::keepsTime()
{
    WatchedSource source;
    AudioGate gate(source);
    SilentClock clock(gate);
    const SteadyClock::time_point earliest = SteadyClock::now();
    clock.start();
    const SteadyClock::time_point latest = SteadyClock::now();
    while (SteadyClock::now() - latest < milliseconds(2000)) {
        const auto frames = static_cast<double>(source.frames());
        QVERIFY(frames <= framesIn(SteadyClock::now() - earliest) + Blocks);
        QTest::qWait(1);
    }
    QTRY_VERIFY(source.frames() >= 96000 - 2 * 512);
    // Asked in this order: no time passes unseen between the two.
    const auto isUpToDate = [&] {
        const SteadyClock::duration time = SteadyClock::now() - latest;
        return static_cast<double>(source.frames()) >= framesIn(time) - Blocks;
    };
    QTRY_VERIFY(isUpToDate());
}

void tst_SilentClock::delayIsMadeUpFor()
{
    StumblingSource source;
    AudioGate gate(source);
    SilentClock clock(gate);
    clock.start();
    const SteadyClock::time_point start = SteadyClock::now();
    const auto isUpToDate = [&] {
        const SteadyClock::duration time = SteadyClock::now() - start;
        return time > milliseconds(300)
            && static_cast<double>(source.frames()) >= framesIn(time) - Blocks;
    };
    QTRY_VERIFY(isUpToDate());
}

void tst_SilentClock::restsWhileADevicePulls()
{
    constexpr std::uint64_t Pulls = 100;
    constexpr std::size_t Frames = 48;
    WatchedSource source;
    AudioGate gate(source);
    std::vector<float> block(2 * Frames);
    gate.open();
    gate.fillForDevice(block.data(), Frames);
    SilentClock clock(gate);
    clock.start();
    const SteadyClock::time_point start = SteadyClock::now();
    SteadyClock::duration longest{};
    SteadyClock::time_point last = start;
    for (std::uint64_t i = 1; i < Pulls; ++i) {
        QTest::qWait(1);
        gate.fillForDevice(block.data(), Frames);
        const SteadyClock::time_point now = SteadyClock::now();
        longest = std::max(longest, now - last);
        last = now;
    }
    // Where this thread stood still for so long, the clock was right to step in.
    if (longest < AudioGate::Patience - milliseconds(50))
        QCOMPARE(source.frames(), Frames * Pulls);
    gate.close();
    const std::uint64_t frames = source.frames();
    QTRY_VERIFY(source.frames() > frames);
    QVERIFY(!source.wasCrowded());
}

void tst_SilentClock::nothingIsPulledAfterItsEnd()
{
    WatchedSource source;
    AudioGate gate(source);
    auto clock = std::make_unique<SilentClock>(gate);
    clock->start();
    QTRY_VERIFY(source.frames() > 0);
    clock.reset();
    const std::uint64_t frames = source.frames();
    QTest::qWait(50);
    QCOMPARE(source.frames(), frames);
}

void tst_SilentClock::endsAtOnce()
{
    WatchedSource source;
    AudioGate gate(source);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20; ++i) {
        SilentClock clock(gate);
        clock.start();
    }
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
}

void tst_SilentClock::endsWithoutAStart()
{
    WatchedSource source;
    AudioGate gate(source);
    {
        const SilentClock clock(gate);
    }
    QCOMPARE(source.frames(), std::uint64_t{0});
}

void tst_SilentClock::costsLittle()
{
    WatchedSource source;
    AudioGate gate(source);
    SilentClock clock(gate);
    const std::clock_t before = std::clock();
    clock.start();
    QTRY_VERIFY(source.frames() >= 48000);
    QVERIFY(std::clock() - before < CLOCKS_PER_SEC / 10);
}

QTEST_APPLESS_MAIN(tst_SilentClock)
#include "tst_SilentClock.moc"
