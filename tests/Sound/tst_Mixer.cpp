#include "Sound/Mixer.h"
#include "WholeSample.h"
#include "support/OwnAllocator.h"

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

using Samples = std::vector<float>;

struct Mix {
    Samples left;
    Samples right;

    bool operator==(const Mix &other) const { return left == other.left && right == other.right; }
};

void append(Mix &mix, Mixer &mixer, std::size_t frames)
{
    const std::size_t start = mix.left.size();
    // Not silent before: the mixer writes, it does not add.
    mix.left.resize(start + frames, 99.0F);
    mix.right.resize(start + frames, 99.0F);
    mixer.mix(mix.left.data() + start, mix.right.data() + start, frames);
}

Mix mixed(Mixer &mixer, std::size_t frames)
{
    Mix mix;
    append(mix, mixer, frames);
    return mix;
}

/// 1, 2, 3, … over 1024: sums of these are exact.
Samples stairs(std::size_t count, float factor = 1.0F)
{
    Samples samples;
    for (std::size_t i = 0; i < count; ++i)
        samples.push_back(factor * static_cast<float>(i % 1000 + 1) / 1024.0F);
    return samples;
}

Samples noise(std::size_t count, unsigned seed)
{
    Samples samples;
    for (std::size_t i = 0; i < count; ++i) {
        seed = seed * 1664525U + 1013904223U;
        samples.push_back(static_cast<float>(static_cast<int>(seed)) / 2147483648.0F);
    }
    return samples;
}

Mixer::Voice mono(const Samples &samples, std::uint64_t start = 0, Mixer::Gain gain = {1, 1})
{
    return {samples.data(), samples.data(), samples.size(), start, gain};
}

Mixer::Voice stereo(const Samples &left, const Samples &right, std::uint64_t start = 0,
                    Mixer::Gain gain = {1, 1})
{
    return {left.data(), right.data(), left.size(), start, gain};
}

Mixer::Voice fading(const Samples &samples, std::uint64_t begin, std::uint64_t frames,
                    std::uint64_t start = 0)
{
    Mixer::Voice voice = mono(samples, start, {1, 0.5F});
    voice.fade = {begin, frames};
    return voice;
}

/// The largest bend of a curve: for a click it is about as large as the curve itself.
float largestBend(const Samples &samples)
{
    float worst = 0;
    for (std::size_t i = 2; i < samples.size(); ++i)
        worst = std::max(worst, std::abs(samples[i] - 2 * samples[i - 1] + samples[i - 2]));
    return worst;
}

Samples slice(const Samples &samples, std::size_t from, std::size_t count)
{
    const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(from);
    return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

} // namespace

class tst_Mixer : public QObject {
    Q_OBJECT

private slots:
    void withoutVoicesThereIsSilence();
    void awaitedVoiceStartsOnTime();
    void awaitedVoiceThatComesLateStartsAtOnce();
    void awaitedVoiceKeepsItsPlaceInTheOrder();
    void stoppedVoiceIsNotAwaitedAnyMore();
    void samplesAreProvidedOnce();
    void monoVoiceIsExact();
    void stereoVoiceIsExact();
    void voicesAddUp();
    void startIsExactToTheFrame_data();
    void startIsExactToTheFrame();
    void startInThePastStartsAtOnce();
    void voiceVanishesAtItsEnd_data();
    void voiceVanishesAtItsEnd();
    void emptyVoiceEndsAtOnce();
    void blocksMakeNoDifference_data();
    void blocksMakeNoDifference();
    void everyProcessorMixesTheSame();
    void gainBeforeTheStartIsSetAtOnce();
    void gainGoesInAStraightLine();
    void gainThatChangesOnItsWayDoesNotJump();
    void fadeInBlocksIsOneLine();
    void stopFadesInFewMilliseconds();
    void stopBeforeTheStartIsSilent();
    void stoppedVoiceTakesNoMoreGain();
    void stopWhileTheGainChangesDoesNotJump();
    void voiceThatEndsWhileStoppingEndsOnce();
    void slotIsUsedAgainOnlyAfterItsEnd();
    void unknownSlotsAreIgnored();
    void clockCountsFrames();
    void clockGoesBeyond32Bits();
    void voicePlaysWhatHasGrownMeanwhile();
    void voiceAheadOfItsSampleIsSilentThere();
    void sampleMayEndBeforeItsVoiceKnows();
    void gainGoesOnWhileFramesAreMissing();
    void stopEndsAVoiceThatIsAheadOfItsSample();
    void voiceStoppedBeforeTheStartDoesNotWaitForItsSample();
    void fadeIsOneLineToTheEnd_data();
    void fadeIsOneLineToTheEnd();
    void fadeBeginsFromTheGainOfThen();
    void fadeTakesNoGain();
    void fadeOfALateVoiceIsOnItsWay();
    void fadeThatIsOverEndsALateVoice();
    void fadeGoesOnWhileFramesAreMissing();
    void shortFadeDoesNotClick();
    void endlessFadeChangesNothing();
    void stopCutsALongFadeShort();
    void stopLetsAFadeEnd();
    void stopComesBeforeTheFade();
    void nothingIsAllocated();
};

void tst_Mixer::awaitedVoiceStartsOnTime()
{
    const Samples samples = stairs(100);
    const CompleteSample sample{samples};
    Mixer mixer(4);
    mixer.await(1, 150, {1, 0.5F});
    Mix mix = mixed(mixer, 100);
    mixer.provide(1, sample);
    append(mix, mixer, 200);
    QVERIFY(slice(mix.left, 0, 150) == Samples(150, 0.0F));
    QVERIFY(slice(mix.left, 150, 100) == samples);
    QCOMPARE(mix.right[150], samples[0] / 2);
    QVERIFY(slice(mix.left, 250, 50) == Samples(50, 0.0F));
    QCOMPARE(mixer.ended().size(), std::size_t{1});
}

void tst_Mixer::awaitedVoiceThatComesLateStartsAtOnce()
{
    const Samples samples = stairs(100);
    const CompleteSample sample{samples};
    Mixer mixer(4);
    mixer.await(0, 10, {1, 1});
    QVERIFY(mixed(mixer, 100).left == Samples(100, 0.0F));
    QCOMPARE(mixer.voices(), std::size_t{1});
    mixer.provide(0, sample);
    QVERIFY(mixed(mixer, 100).left == samples);
}

void tst_Mixer::awaitedVoiceKeepsItsPlaceInTheOrder()
{
    std::vector<Samples> sounds;
    std::deque<CompleteSample> samples;
    Mixer expected(16);
    for (unsigned i = 0; i < 11; ++i) {
        sounds.push_back(noise(500, i));
        samples.emplace_back(sounds.back());
    }
    for (unsigned i = 0; i < 11; ++i)
        expected.start(i, mono(sounds[i], 10 * i, {0.3F, 0.7F}));
    Mixer mixer(16);
    for (unsigned i = 0; i < 11; ++i)
        mixer.await(i, 10 * i, {0.3F, 0.7F});
    for (unsigned i = 11; i-- > 0;)
        mixer.provide(i, samples[i]);
    QVERIFY(mixed(mixer, 700) == mixed(expected, 700));
}

void tst_Mixer::stoppedVoiceIsNotAwaitedAnyMore()
{
    const CompleteSample sample{stairs(100)};
    Mixer mixer(4);
    mixer.await(3, 50, {1, 1});
    mixer.stop(3);
    mixer.provide(3, sample);
    QVERIFY(mixed(mixer, 200).left == Samples(200, 0.0F));
    QCOMPARE(mixer.voices(), std::size_t{0});
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{3});
}

void tst_Mixer::samplesAreProvidedOnce()
{
    const Samples samples = stairs(100);
    const CompleteSample others{stairs(50, 2.0F)};
    Mixer mixer(2);
    mixer.start(0, mono(samples));
    mixer.provide(0, others);
    mixer.provide(1, others);
    mixer.provide(2, others);
    mixer.await(0, 0, {1, 1});
    mixer.await(2, 0, {1, 1});
    QVERIFY(mixed(mixer, 100).left == samples);
}

void tst_Mixer::voicePlaysWhatHasGrownMeanwhile()
{
    const Samples samples = stairs(300);
    for (const std::size_t block : {1U, 7U, 50U, 60U}) {
        AudioSample sample;
        sample.allocate(1000, false);
        Mixer mixer(1);
        mixer.await(0, 0, {1, 1});
        Mix mix;
        for (std::size_t made = 0; made < 300; made += 60) {
            sample.append(samples.data() + made, nullptr, 60);
            sample.publish();
            mixer.provide(0, sample); // counts once
            while (mix.left.size() + block <= made + 60)
                append(mix, mixer, block);
        }
        sample.complete();
        append(mix, mixer, 400 - mix.left.size());
        QVERIFY(slice(mix.left, 0, 300) == samples);
        QVERIFY(slice(mix.left, 300, 100) == Samples(100, 0.0F));
        QCOMPARE(mixer.ended().size(), std::size_t{1});
        QCOMPARE(mixer.missedFrames(), std::uint64_t{0});
    }
}

void tst_Mixer::voiceAheadOfItsSampleIsSilentThere()
{
    const Samples samples = stairs(300);
    AudioSample sample;
    sample.allocate(300, false);
    sample.append(samples.data(), nullptr, 100);
    sample.publish();
    Mixer mixer(1);
    mixer.await(0, 0, {1, 1});
    mixer.provide(0, sample);
    Mix mix = mixed(mixer, 80);
    append(mix, mixer, 80);
    QCOMPARE(mixer.missedFrames(), std::uint64_t{60});
    append(mix, mixer, 10);
    QCOMPARE(mixer.missedFrames(), std::uint64_t{70});
    sample.append(samples.data() + 100, nullptr, 200);
    sample.publish();
    sample.complete();
    append(mix, mixer, 200);
    QVERIFY(slice(mix.left, 0, 100) == slice(samples, 0, 100));
    QVERIFY(slice(mix.left, 100, 70) == Samples(70, 0.0F));
    QVERIFY(slice(mix.left, 170, 130) == slice(samples, 170, 130));
    QCOMPARE(mixer.missedFrames(), std::uint64_t{70});
    QCOMPARE(mixer.ended().size(), std::size_t{1});
}

void tst_Mixer::sampleMayEndBeforeItsVoiceKnows()
{
    const Samples samples = stairs(100);
    AudioSample sample;
    sample.allocate(1000, false);
    sample.append(samples.data(), nullptr, 100);
    sample.publish();
    Mixer mixer(1);
    mixer.await(0, 0, {1, 1});
    mixer.provide(0, sample);
    Mix mix = mixed(mixer, 150);
    QVERIFY(mixer.ended().empty());
    sample.complete();
    append(mix, mixer, 50);
    QCOMPARE(mixer.ended().size(), std::size_t{1});
    QVERIFY(slice(mix.left, 100, 100) == Samples(100, 0.0F));
}

void tst_Mixer::gainGoesOnWhileFramesAreMissing()
{
    const Samples ones(3000, 1.0F);
    AudioSample sample;
    sample.allocate(3000, false);
    sample.append(ones.data(), nullptr, 100);
    sample.publish();
    Mixer mixer(1);
    mixer.await(0, 0, {1, 1});
    mixer.provide(0, sample);
    mixed(mixer, 50);
    mixer.setGain(0, {0.5F, 0.5F});
    mixed(mixer, 100);
    sample.append(ones.data(), nullptr, 2900);
    sample.publish();
    QCOMPARE(mixed(mixer, 1).left[0], 1.0F - 0.5F * 101 / 1024);
    QVERIFY(slice(mixed(mixer, 1023).left, 922, 101) == Samples(101, 0.5F));
}

void tst_Mixer::stopEndsAVoiceThatIsAheadOfItsSample()
{
    const Samples ones(100, 1.0F);
    AudioSample sample;
    sample.allocate(3000, false);
    sample.append(ones.data(), nullptr, 100);
    sample.publish();
    Mixer mixer(1);
    mixer.await(0, 0, {1, 1});
    mixer.provide(0, sample);
    mixed(mixer, 50);
    mixer.stop(0);
    mixed(mixer, 255);
    QVERIFY(mixer.ended().empty());
    mixed(mixer, 1);
    QCOMPARE(mixer.ended().size(), std::size_t{1});
}

void tst_Mixer::voiceStoppedBeforeTheStartDoesNotWaitForItsSample()
{
    AudioSample sample;
    sample.allocate(3000, false);
    sample.appendSilence(100);
    sample.publish();
    Mixer mixer(1);
    mixer.await(0, 5000, {1, 1});
    mixer.provide(0, sample);
    mixed(mixer, 50);
    mixer.stop(0);
    mixed(mixer, 1);
    QCOMPARE(mixer.ended().size(), std::size_t{1});
}

void tst_Mixer::withoutVoicesThereIsSilence()
{
    Mixer mixer(4);
    const Mix mix = mixed(mixer, 100);
    QVERIFY(mix.left == Samples(100, 0.0F));
    QVERIFY(mix.right == Samples(100, 0.0F));
}

void tst_Mixer::monoVoiceIsExact()
{
    Mixer mixer(4);
    const Samples samples = noise(64, 1);
    mixer.start(0, mono(samples, 0, {1.0F, 0.5F}));
    const Mix mix = mixed(mixer, 64);
    QVERIFY(mix.left == samples);
    for (std::size_t i = 0; i < 64; ++i)
        QCOMPARE(mix.right[i], samples[i] * 0.5F);
}

void tst_Mixer::stereoVoiceIsExact()
{
    Mixer mixer(4);
    const Samples left = noise(64, 1);
    const Samples right = noise(64, 2);
    mixer.start(0, stereo(left, right));
    const Mix mix = mixed(mixer, 64);
    QVERIFY(mix.left == left);
    QVERIFY(mix.right == right);
}

void tst_Mixer::voicesAddUp()
{
    Mixer mixer(8);
    const Samples a = stairs(100);
    const Samples b = stairs(100, 2);
    const Samples c = stairs(100, 4);
    mixer.start(0, mono(a, 0, {1, 0.5F}));
    mixer.start(1, stereo(b, c, 0, {0.25F, 1}));
    mixer.start(2, mono(c, 0, {0, 1}));
    mixer.start(3, mono(a, 0, {2, 2}));
    mixer.start(4, mono(b, 0, {1, 0}));
    const Mix mix = mixed(mixer, 100);
    for (std::size_t i = 0; i < 100; ++i) {
        QCOMPARE(mix.left[i], a[i] + 0.25F * b[i] + 2 * a[i] + b[i]);
        QCOMPARE(mix.right[i], 0.5F * a[i] + c[i] + c[i] + 2 * a[i]);
    }
}

void tst_Mixer::startIsExactToTheFrame_data()
{
    QTest::addColumn<int>("start");
    for (const int start : {0, 1, 511, 1023, 1024, 1025, 2047, 2048, 3000})
        QTest::newRow(qPrintable(QString::number(start))) << start;
}

void tst_Mixer::startIsExactToTheFrame()
{
    QFETCH(int, start);
    Mixer mixer(1);
    const Samples samples = stairs(1500);
    mixer.start(0, mono(samples, static_cast<std::uint64_t>(start)));
    Mix mix;
    for (int block = 0; block < 5; ++block)
        append(mix, mixer, 1024);
    Samples expected(5120, 0.0F);
    std::copy(samples.begin(), samples.end(), expected.begin() + start);
    QVERIFY(mix.left == expected);
    QVERIFY(mix.right == expected);
}

void tst_Mixer::startInThePastStartsAtOnce()
{
    Mixer mixer(1);
    mixed(mixer, 1024);
    const Samples samples = stairs(10);
    mixer.start(0, mono(samples, 1000));
    QVERIFY(slice(mixed(mixer, 16).left, 0, 10) == samples);
}

void tst_Mixer::voiceVanishesAtItsEnd_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("blocks");
    QTest::newRow("inside a block") << 100 << 1;
    QTest::newRow("with the block") << 1024 << 1;
    QTest::newRow("just beyond the block") << 1025 << 2;
    QTest::newRow("with the second block") << 2048 << 2;
}

void tst_Mixer::voiceVanishesAtItsEnd()
{
    QFETCH(int, frames);
    QFETCH(int, blocks);
    Mixer mixer(9);
    const Samples samples(static_cast<std::size_t>(frames), 1.0F);
    mixer.start(7, mono(samples));
    for (int block = 0; block < blocks; ++block) {
        QCOMPARE(mixer.voices(), std::size_t{1});
        QVERIFY(mixer.ended().empty());
        mixed(mixer, 1024);
    }
    QCOMPARE(mixer.voices(), std::size_t{0});
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{7});
    QVERIFY(mixed(mixer, 1024).left == Samples(1024, 0.0F));
}

void tst_Mixer::emptyVoiceEndsAtOnce()
{
    Mixer mixer(1);
    mixer.start(0, {nullptr, nullptr, 0, 99999, {1, 1}});
    QVERIFY(mixed(mixer, 10).left == Samples(10, 0.0F));
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
}

namespace {

constexpr std::size_t SceneFrames = 12000;
constexpr std::size_t SceneVoices = 40;

/// Many voices that start, change, fade and stop, at times that all block sizes share.
Mix scene(std::size_t block, const MixKernels::Table &kernels = MixKernels::best())
{
    Mixer mixer(SceneVoices, kernels);
    std::vector<Samples> samples;
    for (unsigned i = 0; i < SceneVoices; ++i) {
        const std::size_t length = 3000 + 200 * std::size_t{i};
        samples.push_back(noise(length, i + 1));
        samples.push_back(noise(length, i + 100));
    }
    for (unsigned i = 0; i < SceneVoices; ++i) {
        const std::size_t first = 2 * std::size_t{i};
        const Samples &left = samples[first];
        const Samples &right = samples[i % 3 == 0 ? first + 1 : first];
        const float gain = 0.01F * static_cast<float>(i + 1);
        Mixer::Voice voice = stereo(left, right, 77 * std::uint64_t{i}, {gain, 0.5F - gain});
        if (i % 4 == 1)
            voice.fade = {177 * std::uint64_t{i}, 133 * std::uint64_t{i}};
        mixer.start(i, voice);
    }
    Mix mix;
    for (std::size_t time = 0; time < SceneFrames; time += block) {
        if (time % 3000 == 0 && time > 0) {
            for (unsigned i = 0; i < SceneVoices; i += 5)
                mixer.setGain(i, {0.3F, 0.0001F * static_cast<float>(time)});
            mixer.stop(static_cast<unsigned>(time / 1000));
        }
        append(mix, mixer, block);
    }
    return mix;
}

} // namespace

void tst_Mixer::blocksMakeNoDifference_data()
{
    QTest::addColumn<int>("block");
    for (const int block : {1, 3, 60, 500, 1000, 1500})
        QTest::newRow(qPrintable(QString::number(block))) << block;
}

void tst_Mixer::blocksMakeNoDifference()
{
    QFETCH(int, block);
    QVERIFY(scene(static_cast<std::size_t>(block)) == scene(3000));
}

void tst_Mixer::everyProcessorMixesTheSame()
{
    QVERIFY(scene(1000, MixKernels::best()) == scene(1000, MixKernels::portable()));
}

void tst_Mixer::gainBeforeTheStartIsSetAtOnce()
{
    Mixer mixer(1);
    const Samples samples(100, 1.0F);
    mixer.start(0, mono(samples, 50));
    mixed(mixer, 20);
    mixer.setGain(0, {0.5F, 0.25F});
    const Mix mix = mixed(mixer, 40);
    QVERIFY(slice(mix.left, 30, 10) == Samples(10, 0.5F));
    QVERIFY(slice(mix.right, 30, 10) == Samples(10, 0.25F));
}

void tst_Mixer::gainGoesInAStraightLine()
{
    Mixer mixer(1);
    const Samples samples(8000, 1.0F);
    mixer.start(0, mono(samples));
    mixed(mixer, 1000);
    mixer.setGain(0, {0.0F, 0.5F});
    const Mix mix = mixed(mixer, 2000);
    QCOMPARE(Mixer::GainRampFrames, 1024U);
    for (std::size_t i = 0; i < 1024; ++i) {
        QCOMPARE(mix.left[i], 1.0F - static_cast<float>(i + 1) / 1024);
        QCOMPARE(mix.right[i], 1.0F - static_cast<float>(i + 1) / 2048);
    }
    QVERIFY(slice(mix.left, 1024, 976) == Samples(976, 0.0F));
    QVERIFY(slice(mix.right, 1024, 976) == Samples(976, 0.5F));
}

void tst_Mixer::gainThatChangesOnItsWayDoesNotJump()
{
    Mixer mixer(1);
    const Samples samples(8000, 1.0F);
    mixer.start(0, mono(samples));
    Mix mix = mixed(mixer, 100);
    for (int i = 0; i < 20; ++i) {
        mixer.setGain(0, i % 2 == 0 ? Mixer::Gain{0, 0} : Mixer::Gain{1, 1});
        append(mix, mixer, 100);
    }
    QVERIFY(largestBend(mix.left) < 2.1F / 1024);
}

void tst_Mixer::fadeInBlocksIsOneLine()
{
    Mixer mixer(1);
    const Samples samples(20000, 1.0F);
    mixer.start(0, mono(samples));
    Mix mix = mixed(mixer, 1024);
    for (int i = 7; i >= 0; --i) {
        const float gain = static_cast<float>(i) / 8;
        mixer.setGain(0, {gain, gain});
        append(mix, mixer, 1024);
    }
    for (std::size_t i = 0; i < 8192; ++i)
        QCOMPARE(mix.left[1024 + i], 1.0F - static_cast<float>(i + 1) / 8192);
}

void tst_Mixer::stopFadesInFewMilliseconds()
{
    Mixer mixer(1);
    const Samples samples(8000, 1.0F);
    mixer.start(0, mono(samples));
    Mix mix = mixed(mixer, 1024);
    mixer.stop(0);
    append(mix, mixer, 1024);
    QCOMPARE(Mixer::StopRampFrames, 256U);
    QVERIFY(largestBend(mix.left) <= 1.0F / 256);
    QCOMPARE(mix.left[1024 + 127], 0.5F);
    QVERIFY(slice(mix.left, 1024 + 255, 769) == Samples(769, 0.0F));
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
}

void tst_Mixer::stopBeforeTheStartIsSilent()
{
    Mixer mixer(1);
    const Samples samples(100, 1.0F);
    mixer.start(0, mono(samples, 50));
    mixer.stop(0);
    QVERIFY(mixed(mixer, 200).left == Samples(200, 0.0F));
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
}

void tst_Mixer::stoppedVoiceTakesNoMoreGain()
{
    Mixer mixer(1);
    const Samples samples(8000, 1.0F);
    mixer.start(0, mono(samples));
    mixed(mixer, 100);
    mixer.stop(0);
    mixed(mixer, 100);
    mixer.setGain(0, {1, 1});
    mixer.stop(0);
    const Mix mix = mixed(mixer, 300);
    QVERIFY(slice(mix.left, 155, 145) == Samples(145, 0.0F));
    QCOMPARE(mixer.voices(), std::size_t{0});
}

void tst_Mixer::stopWhileTheGainChangesDoesNotJump()
{
    Mixer mixer(1);
    const Samples samples(8000, 1.0F);
    mixer.start(0, mono(samples));
    Mix mix = mixed(mixer, 100);
    mixer.setGain(0, {0.25F, 0});
    append(mix, mixer, 500);
    mixer.stop(0);
    append(mix, mixer, 500);
    QVERIFY(largestBend(mix.left) < 1.1F / 256);
    QVERIFY(largestBend(mix.right) < 1.1F / 256);
    QCOMPARE(mix.left.back(), 0.0F);
}

void tst_Mixer::voiceThatEndsWhileStoppingEndsOnce()
{
    Mixer mixer(1);
    const Samples samples(200, 1.0F);
    mixer.start(0, mono(samples));
    mixed(mixer, 100);
    mixer.stop(0);
    mixed(mixer, 1000);
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
}

void tst_Mixer::slotIsUsedAgainOnlyAfterItsEnd()
{
    Mixer mixer(1);
    const Samples one(100, 1.0F);
    const Samples other(100, 0.5F);
    mixer.start(0, mono(one));
    mixer.start(0, mono(other));
    QCOMPARE(mixed(mixer, 100).left[0], 1.0F);
    mixer.clearEnded();
    mixer.start(0, mono(other));
    QCOMPARE(mixed(mixer, 100).left[0], 0.5F);
}

void tst_Mixer::unknownSlotsAreIgnored()
{
    Mixer mixer(1);
    const Samples samples(100, 1.0F);
    mixer.start(1, mono(samples));
    mixer.setGain(0, {1, 1});
    mixer.stop(0);
    mixer.setGain(5, {1, 1});
    mixer.stop(5);
    QVERIFY(mixed(mixer, 10).left == Samples(10, 0.0F));
    QCOMPARE(mixer.voices(), std::size_t{0});
}

void tst_Mixer::clockCountsFrames()
{
    Mixer mixer(1);
    QCOMPARE(mixer.clock(), std::uint64_t{0});
    mixed(mixer, 1024);
    mixed(mixer, 7);
    QCOMPARE(mixer.clock(), std::uint64_t{1031});
}

void tst_Mixer::clockGoesBeyond32Bits()
{
    Mixer mixer(1);
    const Samples samples(10, 1.0F);
    mixer.start(0, mono(samples, std::uint64_t{1} << 32));
    QVERIFY(mixed(mixer, 1024).left == Samples(1024, 0.0F));
    QCOMPARE(mixer.voices(), std::size_t{1});
}

void tst_Mixer::fadeIsOneLineToTheEnd_data()
{
    QTest::addColumn<int>("block");
    for (const int block : {1, 7, 512, 1024, 1500, 8000})
        QTest::newRow(qPrintable(QString::number(block))) << block;
}

void tst_Mixer::fadeIsOneLineToTheEnd()
{
    QFETCH(int, block);
    const auto frames = static_cast<std::size_t>(block);
    const Samples samples(20000, 1.0F);
    Mixer mixer(1);
    mixer.start(0, fading(samples, 1500, 4000));
    Mix mix;
    while (mix.left.size() + frames < 5500)
        append(mix, mixer, frames);
    QVERIFY(mixer.ended().empty());
    append(mix, mixer, frames);
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
    append(mix, mixer, 1);

    QVERIFY(slice(mix.left, 0, 1500) == Samples(1500, 1.0F));
    for (std::size_t i = 0; i < 4000; ++i) {
        const float gain = 1.0F - static_cast<float>(i + 1) / 4000;
        QVERIFY(std::abs(mix.left[1500 + i] - gain) < 1e-6F);
        QVERIFY(std::abs(mix.right[1500 + i] - gain / 2) < 1e-6F);
    }
    QVERIFY(slice(mix.left, 5500, mix.left.size() - 5500) == Samples(mix.left.size() - 5500, 0.0F));
}

void tst_Mixer::fadeBeginsFromTheGainOfThen()
{
    const Samples samples(20000, 1.0F);
    Mixer mixer(1);
    mixer.start(0, fading(samples, 3000, 2000));
    Mix mix = mixed(mixer, 100);
    mixer.setGain(0, {0.5F, 0.25F});
    append(mix, mixer, 2600); // the ramp is over
    QCOMPARE(mix.left.back(), 0.5F);
    append(mix, mixer, 1300);
    QVERIFY(std::abs(mix.left[3999] - 0.25F) < 1e-6F);

    Mixer other(1);
    other.start(0, fading(samples, 600, 4000));
    mix = mixed(other, 100);
    other.setGain(0, {0.0F, 1.0F}); // until 1124
    append(mix, other, 5000);
    QVERIFY(largestBend(mix.left) < 2.1F / 1024);
    QVERIFY(largestBend(mix.right) < 2.1F / 1024);
    QVERIFY(slice(mix.left, 1624, 100) == Samples(100, 0.0F));
    QVERIFY(std::abs(mix.right[2599] - 0.5F) < 1e-6F);
}

void tst_Mixer::fadeTakesNoGain()
{
    const Samples samples(20000, 1.0F);
    Mixer expected(1);
    expected.start(0, fading(samples, 512, 4000));
    const Mix wanted = mixed(expected, 5120);
    Mixer mixer(1);
    mixer.start(0, fading(samples, 512, 4000));
    Mix mix = mixed(mixer, 512);
    for (int i = 9; i > 0; --i) {
        mixer.setGain(0, {0.1F * static_cast<float>(i), 1.0F});
        append(mix, mixer, 512);
    }
    QVERIFY(mix == wanted);
}

void tst_Mixer::fadeOfALateVoiceIsOnItsWay()
{
    const CompleteSample sample{Samples(20000, 1.0F)};
    Mixer mixer(1);
    mixer.await(0, 100, {1, 0.5F}, {1000, 4000});
    mixed(mixer, 2500);
    mixer.setGain(0, {0.625F, 0.3125F}); // what is so already
    mixer.provide(0, sample);
    const Mix mix = mixed(mixer, 3000);
    for (std::size_t i = 0; i < 2500; ++i)
        QVERIFY(std::abs(mix.left[i] - static_cast<float>(2499 - i) / 4000) < 1e-6F);
    QVERIFY(std::abs(mix.right[499] - 0.25F) < 1e-6F);
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
}

void tst_Mixer::fadeThatIsOverEndsALateVoice()
{
    const CompleteSample sample{Samples(20000, 1.0F)};
    Mixer mixer(1);
    mixer.await(0, 100, {1, 1}, {1000, 4000});
    mixed(mixer, 5000);
    QVERIFY(mixer.ended().empty()); // its sample is still to come
    mixer.provide(0, sample);
    QVERIFY(mixed(mixer, 10).left == Samples(10, 0.0F));
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
}

void tst_Mixer::fadeGoesOnWhileFramesAreMissing()
{
    const Samples ones(9000, 1.0F);
    AudioSample sample;
    sample.allocate(9000, false);
    sample.append(ones.data(), nullptr, 600);
    sample.publish();
    Mixer mixer(1);
    mixer.await(0, 0, {1, 1}, {500, 4000});
    mixer.provide(0, sample);
    Mix mix = mixed(mixer, 3000);
    sample.append(ones.data(), nullptr, 8400);
    sample.publish();
    append(mix, mixer, 1400);
    QVERIFY(std::abs(mix.left[599] - 0.975F) < 1e-6F);
    QVERIFY(slice(mix.left, 600, 2400) == Samples(2400, 0.0F));
    for (std::size_t i = 3000; i < 4400; ++i)
        QVERIFY(std::abs(mix.left[i] - static_cast<float>(4499 - i) / 4000) < 1e-6F);
    QVERIFY(mixer.ended().empty());
    mixed(mixer, 100);
    QCOMPARE(mixer.ended().size(), std::size_t{1});
}

void tst_Mixer::shortFadeDoesNotClick()
{
    const Samples samples(20000, 1.0F);
    for (const unsigned frames : {0U, 1U, 255U}) {
        Mixer mixer(1);
        mixer.start(0, fading(samples, 1000, frames));
        Mix mix = mixed(mixer, 1010);
        mixer.stop(0);
        append(mix, mixer, 500);
        QVERIFY(largestBend(mix.left) <= 1.1F / 256);
        QVERIFY(std::abs(mix.left[1127] - 0.5F) < 1e-6F);
        QVERIFY(slice(mix.left, 1255, 255) == Samples(255, 0.0F));
        QCOMPARE(mixer.ended().size(), std::size_t{1});
    }
}

void tst_Mixer::endlessFadeChangesNothing()
{
    const Samples samples = stairs(9000);
    Mixer mixer(1);
    mixer.start(0, fading(samples, 100, std::numeric_limits<std::uint64_t>::max()));
    QVERIFY(mixed(mixer, 9000).left == samples);
}

void tst_Mixer::stopCutsALongFadeShort()
{
    const Samples samples(20000, 1.0F);
    Mixer mixer(1);
    mixer.start(0, fading(samples, 1000, 8000));
    Mix mix = mixed(mixer, 5000);
    mixer.stop(0);
    append(mix, mixer, 500);
    QVERIFY(std::abs(mix.left[5127] - 0.25F) < 1e-6F);
    QVERIFY(slice(mix.left, 5255, 245) == Samples(245, 0.0F));
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
}

void tst_Mixer::stopLetsAFadeEnd()
{
    const Samples samples(20000, 1.0F);
    Mixer early(1);
    early.start(0, fading(samples, 1000, 8292));
    mixed(early, 9035); // 257 frames before its end
    early.stop(0);
    mixed(early, 256);
    QCOMPARE(early.ended().size(), std::size_t{1});

    Mixer expected(1);
    expected.start(0, fading(samples, 1000, 8292)); // 100 frames of it beyond the eighth point
    const Mix wanted = mixed(expected, 9300);
    Mixer mixer(1);
    mixer.start(0, fading(samples, 1000, 8292));
    Mix mix = mixed(mixer, 9036); // 256 before its end
    mixer.stop(0);
    mixer.stop(0);
    append(mix, mixer, 264);
    QVERIFY(mix == wanted);
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
}

void tst_Mixer::stopComesBeforeTheFade()
{
    const Samples samples(20000, 1.0F);
    Mixer mixer(1);
    mixer.start(0, fading(samples, 1000, 8000));
    Mix mix = mixed(mixer, 900);
    mixer.stop(0);
    append(mix, mixer, 500);
    QVERIFY(std::abs(mix.left[1027] - 0.5F) < 1e-6F);
    QVERIFY(slice(mix.left, 1155, 245) == Samples(245, 0.0F));
    QVERIFY(mixer.ended() == std::vector<Mixer::Slot>{0});
}

void tst_Mixer::nothingIsAllocated()
{
    constexpr unsigned Voices = 100;
    Mixer mixer(Voices);
    const Samples samples = noise(2000, 1);
    Samples left(1024);
    Samples right(1024);
    const std::size_t before = OwnAllocator::allocations;
    for (unsigned i = 0; i < Voices; ++i)
        mixer.start(i, fading(samples, 30 * std::uint64_t{i}, 300, 20 * std::uint64_t{i}));
    for (unsigned block = 0; block < 10; ++block) {
        mixer.setGain(block, {0.5F, 0.5F});
        mixer.stop(90 + block);
        mixer.mix(left.data(), right.data(), 1024);
    }
    const std::size_t after = OwnAllocator::allocations;
    QCOMPARE(after, before);
    QCOMPARE(mixer.ended().size(), std::size_t{Voices});
}

QTEST_APPLESS_MAIN(tst_Mixer)
#include "tst_Mixer.moc"
