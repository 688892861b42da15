#include "Sound/RemoteMixer.h"
#include "VoiceTraffic.h"
#include "WholeSample.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace {

using Samples = std::vector<float>;
using Slots = std::vector<RemoteMixer::Slot>;

constexpr std::size_t FewCommands = 4;

void start(RemoteMixer &mixer, RemoteMixer::Slot slot, const AudioSample &samples,
           std::uint64_t clock = 0, RemoteMixer::Gain gain = {1, 1})
{
    mixer.await(slot, clock, gain);
    mixer.provide(slot, samples);
}

/// The left side.
Samples mixed(RemoteMixer &mixer, std::size_t frames)
{
    Samples left(frames, 99.0F);
    Samples right(frames, 99.0F);
    mixer.mix(left.data(), right.data(), frames);
    return left;
}

Samples mixedAfterAll(RemoteMixer &mixer, std::size_t frames)
{
    Samples left(frames, 99.0F);
    Samples right(frames, 99.0F);
    mixer.mixAfterAll(left.data(), right.data(), frames);
    return left;
}

Slots ended(RemoteMixer &mixer)
{
    Slots all;
    for (RemoteMixer::Slot slot = 0; mixer.takeEnded(slot);)
        all.push_back(slot);
    return all;
}

Slots countUp(std::size_t count)
{
    Slots all(count);
    for (std::size_t i = 0; i < count; ++i)
        all[i] = static_cast<RemoteMixer::Slot>(i);
    return all;
}

} // namespace

class tst_RemoteMixer : public QObject {
    Q_OBJECT

private slots:
    void commandsWaitForTheNextBlock();
    void clockIsThatOfTheMixedBlocks();
    void endedSlotsComeBack();
    void slotMayBeUsedAgainAtOnce();
    void whatDoesNotFitComesLaterInItsOrder();
    void laterCommandsSendWhatWaits();
    void onlyTheLastOfManyGainsCounts();
    void gainThatWaitsFallsToNoOtherVoice();
    void gainOfAVoiceWithoutRoomArrives();
    void mixAfterAllLeavesNothingBehind();
    void everySlotCanEndInOneBlock();
    void unknownSlotsAreIgnored();
    void lateStartsAreCounted();
    void twoThreadsAgree_data();
    void twoThreadsAgree();
};

void tst_RemoteMixer::commandsWaitForTheNextBlock()
{
    RemoteMixer mixer(2);
    const CompleteSample ones{Samples(100, 1.0F)};
    QVERIFY(mixed(mixer, 10) == Samples(10, 0.0F));
    start(mixer, 1, ones);
    QVERIFY(mixed(mixer, 10) == Samples(10, 1.0F));
    mixer.stop(1);
    QCOMPARE(mixed(mixer, 10)[0], 1.0F - 1.0F / 256);
}

void tst_RemoteMixer::clockIsThatOfTheMixedBlocks()
{
    RemoteMixer mixer(1);
    QCOMPARE(mixer.clock(), std::uint64_t{0});
    mixed(mixer, 512);
    mixed(mixer, 3);
    QCOMPARE(mixer.clock(), std::uint64_t{515});
}

void tst_RemoteMixer::endedSlotsComeBack()
{
    RemoteMixer mixer(3);
    const CompleteSample ones{Samples(10, 1.0F)};
    start(mixer, 2, ones);
    start(mixer, 0, ones, 5);
    mixed(mixer, 9);
    QVERIFY(ended(mixer).empty());
    mixed(mixer, 1);
    QVERIFY((ended(mixer) == Slots{2}));
    mixed(mixer, 5);
    QVERIFY((ended(mixer) == Slots{0}));
}

void tst_RemoteMixer::slotMayBeUsedAgainAtOnce()
{
    RemoteMixer mixer(1);
    const CompleteSample ones{Samples(10, 1.0F)};
    for (int i = 0; i < 100; ++i) {
        start(mixer, 0, ones, 0, {0.5F, 0.5F});
        QVERIFY(mixed(mixer, 10) == Samples(10, 0.5F));
        QVERIFY((ended(mixer) == Slots{0}));
    }
}

void tst_RemoteMixer::whatDoesNotFitComesLaterInItsOrder()
{
    RemoteMixer mixer(3, FewCommands);
    const CompleteSample ones{Samples(100, 1.0F)};
    for (const RemoteMixer::Slot slot : {0U, 1U, 2U})
        start(mixer, slot, ones); // 6 commands
    mixer.stop(2);
    QVERIFY(!mixer.flush());
    QVERIFY(mixed(mixer, 10) == Samples(10, 2.0F));
    QVERIFY(mixer.flush());
    QVERIFY(mixed(mixer, 10) == Samples(10, 2.0F)); // the third one stopped before it was heard
    QVERIFY((ended(mixer) == Slots{2}));
}

void tst_RemoteMixer::laterCommandsSendWhatWaits()
{
    RemoteMixer mixer(4, FewCommands);
    const CompleteSample ones{Samples(100, 1.0F)};
    for (const RemoteMixer::Slot slot : {0U, 1U, 2U})
        start(mixer, slot, ones);
    mixed(mixer, 1);
    mixer.await(3, 0, {1, 1});
    QVERIFY(mixed(mixer, 10) == Samples(10, 3.0F));
}

void tst_RemoteMixer::onlyTheLastOfManyGainsCounts()
{
    RemoteMixer mixer(2, FewCommands);
    const CompleteSample ones{Samples(5000, 1.0F)};
    start(mixer, 0, ones, 100);
    start(mixer, 1, ones, 100);
    for (int i = 0; i <= 100000; ++i) {
        const float gain = static_cast<float>(i) / 100000;
        mixer.setGain(0, {gain, gain});
        mixer.setGain(1, {gain * 0.5F, gain * 0.5F});
    }
    mixed(mixer, 1);
    QVERIFY(mixer.flush()); // no more than these two
    mixed(mixer, 99);
    QVERIFY(mixed(mixer, 10) == Samples(10, 1.5F));
}

void tst_RemoteMixer::gainThatWaitsFallsToNoOtherVoice()
{
    RemoteMixer mixer(1, FewCommands);
    const CompleteSample ones{Samples(4, 1.0F)};
    start(mixer, 0, ones);
    mixed(mixer, 4);
    for (int i = 0; i < 10; ++i)
        mixer.setGain(0, {0.25F, 0.25F}); // fills the ring; one more waits
    QVERIFY((ended(mixer) == Slots{0}));
    start(mixer, 0, ones);
    QVERIFY(mixedAfterAll(mixer, 4) == Samples(4, 1.0F));
}

void tst_RemoteMixer::gainOfAVoiceWithoutRoomArrives()
{
    RemoteMixer mixer(3, FewCommands);
    const CompleteSample ones{Samples(100, 1.0F)};
    for (const RemoteMixer::Slot slot : {0U, 1U, 2U})
        start(mixer, slot, ones);
    mixer.setGain(2, {0.5F, 0.5F}); // behind the start that waits itself
    QVERIFY(mixedAfterAll(mixer, 10) == Samples(10, 2.5F));
}

void tst_RemoteMixer::mixAfterAllLeavesNothingBehind()
{
    constexpr std::size_t Voices = 5000;
    RemoteMixer mixer(Voices, FewCommands);
    const CompleteSample ones{Samples(10, 1.0F)};
    for (RemoteMixer::Slot slot = 0; slot < Voices; ++slot)
        start(mixer, slot, ones);
    QVERIFY(mixedAfterAll(mixer, 10) == Samples(10, 5000.0F));
    QVERIFY(ended(mixer) == countUp(Voices));
}

void tst_RemoteMixer::everySlotCanEndInOneBlock()
{
    constexpr std::size_t Voices = 65536;
    RemoteMixer mixer(Voices);
    const CompleteSample ones{Samples(10, 1.0F)};
    for (int round = 0; round < 2; ++round) {
        for (RemoteMixer::Slot slot = 0; slot < Voices; ++slot)
            start(mixer, slot, ones, 2000);
        mixedAfterAll(mixer, 2000);
        mixed(mixer, 100);
        QVERIFY(ended(mixer) == countUp(Voices));
    }
}

void tst_RemoteMixer::unknownSlotsAreIgnored()
{
    RemoteMixer mixer(1);
    const CompleteSample ones{Samples(10, 1.0F)};
    start(mixer, 1, ones);
    mixer.setGain(1, {1, 1});
    mixer.stop(7);
    QVERIFY(mixed(mixer, 10) == Samples(10, 0.0F));
    QVERIFY(ended(mixer).empty());
}

void tst_RemoteMixer::lateStartsAreCounted()
{
    RemoteMixer mixer(5);
    const CompleteSample ones{Samples(10, 1.0F)};
    const CompleteSample nothing{WholeSample()};
    mixed(mixer, 100);
    start(mixer, 0, ones, 100);
    start(mixer, 1, ones, 0); // at once
    mixer.await(2, 105, {1, 1});
    mixer.await(3, 105, {1, 1});
    mixed(mixer, 10);
    QCOMPARE(mixer.lateStarts(), std::uint64_t{0});
    mixer.provide(2, ones);
    mixer.provide(3, nothing); // it could not be late
    mixer.await(4, 105, {1, 1});
    mixer.stop(4);
    mixer.provide(4, ones);
    QVERIFY(mixed(mixer, 10) == Samples(10, 1.0F));
    QCOMPARE(mixer.lateStarts(), std::uint64_t{1});
}

void tst_RemoteMixer::twoThreadsAgree_data()
{
    QTest::addColumn<int>("commands");
    QTest::newRow("a ring that is always full") << 4;
    QTest::newRow("a ring with room") << 8192;
}

void tst_RemoteMixer::twoThreadsAgree()
{
    QFETCH(const int, commands);
    constexpr std::size_t Slots = 50;
    constexpr std::size_t Lives = 3000;
    RemoteMixer mixer(Slots, static_cast<std::size_t>(commands));
    std::atomic<bool> isDone{false};
    float loudest = 0;
    std::thread mixing([&] {
        while (!isDone) {
            for (const float sample : mixed(mixer, 64))
                loudest = std::max(loudest, sample);
            std::this_thread::yield();
        }
    });
    VoiceTraffic traffic(mixer, Slots);
    while (traffic.ended() < Lives)
        traffic.step();
    isDone = true;
    mixing.join();
    QVERIFY(loudest > 0.0F);
    QVERIFY(loudest <= float{Slots});
}

QTEST_APPLESS_MAIN(tst_RemoteMixer)
#include "tst_RemoteMixer.moc"
