#include "Sound/LiveMix.h"

#include "RealTimeGuard.h"
#include "VoiceTraffic.h"

#include <QtTest>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

#include <unistd.h>

namespace {

using Samples = std::vector<float>;

constexpr std::size_t Voices = 300;

void start(RemoteMixer &mixer, const Samples &left, const Samples &right, std::uint64_t clock = 0)
{
    mixer.await(0, clock, {1, 1});
    mixer.provide(0, left.data(), right.data(), left.size());
}

Samples filled(LiveMix &mix, std::size_t frames)
{
    Samples samples(2 * frames, 99.0F);
    mix.fill(samples.data(), frames);
    return samples;
}

Samples stairs(std::size_t count, float factor)
{
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = factor * static_cast<float>(i + 1) / 8192.0F;
    return samples;
}

void nothing() { }

} // namespace

class tst_LiveMix : public QObject {
    Q_OBJECT

private slots:
    void leftAndRightTakeTurns();
    void anyBlockIsFilled_data();
    void anyBlockIsFilled();
    void whatIsTooLoudIsClamped();
    void whatIsNoNumberIsSilent();
    void neitherAllocatesNorLocks();
    void makesNoSystemCall();
    void forbiddenCallsAreNoticed();
};

void tst_LiveMix::leftAndRightTakeTurns()
{
    RemoteMixer mixer(1);
    LiveMix mix(mixer);
    const Samples left = {0.125F, 0.25F};
    const Samples right = {0.5F, 0.75F};
    start(mixer, left, right);
    QVERIFY((filled(mix, 3) == Samples{0.125F, 0.5F, 0.25F, 0.75F, 0, 0}));
}

void tst_LiveMix::anyBlockIsFilled_data()
{
    QTest::addColumn<int>("frames");
    for (const int frames : {0, 1, 511, 512, 1023, 1024, 1025, 4096, 5000})
        QTest::addRow("%d frames", frames) << frames;
}

void tst_LiveMix::anyBlockIsFilled()
{
    QFETCH(const int, frames);
    const auto count = static_cast<std::size_t>(frames);
    RemoteMixer mixer(1);
    LiveMix mix(mixer);
    const Samples left = stairs(5000, 1);
    const Samples right = stairs(5000, -1);
    start(mixer, left, right);
    const Samples samples = filled(mix, count);
    for (std::size_t i = 0; i < count; ++i) {
        QCOMPARE(samples[2 * i], left[i]);
        QCOMPARE(samples[2 * i + 1], right[i]);
    }
    QCOMPARE(mixer.clock(), std::uint64_t{count});
}

void tst_LiveMix::whatIsTooLoudIsClamped()
{
    RemoteMixer mixer(1);
    LiveMix mix(mixer);
    const Samples left = {1.0F, 1.001F, 70000.0F};
    const Samples right = {-1.0F, -1.001F, -70000.0F};
    start(mixer, left, right);
    QVERIFY((filled(mix, 3) == Samples{1, -1, 1, -1, 1, -1}));
}

void tst_LiveMix::whatIsNoNumberIsSilent()
{
    constexpr float Infinite = std::numeric_limits<float>::infinity();
    RemoteMixer mixer(1);
    LiveMix mix(mixer);
    const Samples left = {std::numeric_limits<float>::quiet_NaN(), Infinite, 0.5F};
    const Samples right = {-std::numeric_limits<float>::quiet_NaN(), -Infinite, 0.5F};
    start(mixer, left, right);
    QVERIFY((filled(mix, 3) == Samples{0, 0, 1, -1, 0.5F, 0.5F}));
}

void tst_LiveMix::neitherAllocatesNorLocks()
{
    RemoteMixer mixer(Voices);
    LiveMix mix(mixer);
    VoiceTraffic traffic(mixer, Voices);
    Samples block(1024); // 512 frames
    while (traffic.ended() < 5000) {
        QCOMPARE(RealTimeGuard::forbiddenCalls([&] { mix.fill(block.data(), 512); }),
                 std::size_t{0});
        traffic.step();
    }
}

void tst_LiveMix::makesNoSystemCall()
{
    RemoteMixer mixer(Voices);
    LiveMix mix(mixer);
    VoiceTraffic traffic(mixer, Voices);
    Samples block(1024); // 512 frames
    const auto work = [&] {
        for (int i = 0; i < 2000; ++i)
            mix.fill(block.data(), 512);
    };
    QVERIFY(RealTimeGuard::worksWithoutSystem(work, [&] { traffic.step(); }));
}

/// Or the two tests before would not tell anything.
void tst_LiveMix::forbiddenCallsAreNoticed()
{
    if (!RealTimeGuard::isActive)
        return;
    std::mutex mutex;
    QCOMPARE(RealTimeGuard::forbiddenCalls(nothing), std::size_t{0});
    QCOMPARE(RealTimeGuard::forbiddenCalls([&] { const std::lock_guard lock(mutex); }),
             std::size_t{1});
    std::unique_ptr<Samples> made;
    QCOMPARE(RealTimeGuard::forbiddenCalls([&] { made = std::make_unique<Samples>(5); }),
             std::size_t{2});
    QCOMPARE(RealTimeGuard::forbiddenCalls([&] { made.reset(); }), std::size_t{2});
    QVERIFY(RealTimeGuard::worksWithoutSystem(nothing, nothing));
    QVERIFY(!RealTimeGuard::worksWithoutSystem([] { getppid(); }, nothing));
}

QTEST_APPLESS_MAIN(tst_LiveMix)
#include "tst_LiveMix.moc"
