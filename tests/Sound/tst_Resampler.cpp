#include "Sound/Decoder.h"
#include "Sound/Resampler.h"
#include "Spectrum.h"
#include "WholeSample.h"

#include <QtTest>

#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double Rate = 48000.0;
constexpr std::size_t SpectrumFrames = 16384;
constexpr std::size_t EdgeFrames = 4096;

/// A full-scale sine of `frequency` cycles per frame of the source.
WholeSample sine(double frequency, std::size_t frames)
{
    WholeSample sample;
    for (std::size_t i = 0; i < frames; ++i)
        sample.left.push_back(
            static_cast<float>(std::sin(2 * M_PI * frequency * static_cast<double>(i) + 0.3)));
    return sample;
}

/// Long enough that the result has SpectrumFrames away from its edges.
std::size_t sourceFrames(double ratio)
{
    return static_cast<std::size_t>((SpectrumFrames + 2 * EdgeFrames) * ratio) + 64;
}

struct Outcome {
    FMOD_RESULT result;
    WholeSample sample;
};

/// In pieces of so many frames.
Outcome made(const WholeSample &source, double frequency,
             std::size_t pieceFrames = Preparation::All)
{
    Resampler resampler(WholeSample::preparation(source), frequency, Rate);
    AudioSample result;
    FMOD_RESULT outcome = FMOD_OK;
    while (outcome == FMOD_OK && !result.isComplete())
        outcome = resampler.make(
            result, pieceFrames == Preparation::All ? pieceFrames : result.frames() + pieceFrames);
    return {outcome, WholeSample(result)};
}

WholeSample resampled(const WholeSample &source, double ratio)
{
    const Outcome outcome = made(source, Rate * ratio);
    if (outcome.result != FMOD_OK)
        qFatal("resampling failed with %d", outcome.result);
    return outcome.sample;
}

WholeSample noise(std::size_t frames, bool stereo)
{
    WholeSample sample;
    unsigned state = 1;
    for (std::size_t i = 0; i < frames * (stereo ? 2 : 1); ++i) {
        state = state * 1664525U + 1013904223U;
        const float value = static_cast<float>(static_cast<int>(state)) / 2147483648.0F;
        (i < frames ? sample.left : sample.right).push_back(value);
    }
    return sample;
}

/// A source that is made in portions, and announces more than there is.
std::shared_ptr<Preparation> growing(const WholeSample &whole, std::size_t announcedFrames)
{
    return std::make_shared<Preparation>(
        [whole, announcedFrames](AudioSample &sample, std::size_t frames) {
            if (sample.frames() == 0)
                sample.allocate(announcedFrames, whole.isStereo());
            while (!sample.has(frames)) {
                const std::size_t done = sample.frames();
                const std::size_t count = std::min<std::size_t>(1111, whole.frames() - done);
                sample.append(whole.left.data() + done,
                              whole.isStereo() ? whole.right.data() + done : nullptr, count);
                sample.publish();
                if (count == 0)
                    sample.complete();
            }
            return FMOD_OK;
        });
}

/// One channel by the library alone.
std::vector<float> atOnce(const std::vector<float> &source, double ratio)
{
    const soxr_io_spec_t format = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    const auto length =
        static_cast<std::size_t>(std::ceil(static_cast<double>(source.size()) / ratio));
    std::vector<float> result(length);
    if (soxr_oneshot(Rate * ratio, Rate, 1, source.data(), source.size(), nullptr, result.data(),
                     length, nullptr, &format, &quality, nullptr)
        != nullptr)
        qFatal("resampling failed");
    std::transform(result.begin(), result.end(), result.begin(), cleanSample);
    return result;
}

WholeSample atOnce(const WholeSample &source, double ratio)
{
    return {atOnce(source.left, ratio), atOnce(source.right, ratio)};
}

} // namespace

class tst_Resampler : public QObject {
    Q_OBJECT

private slots:
    void imagesAndAliasesStay100DecibelsDown_data();
    void imagesAndAliasesStay100DecibelsDown();
    void whatLiesAboveTheOutputsRangeIsGone_data();
    void whatLiesAboveTheOutputsRangeIsGone();
    void passBandIsFlat_data() { imagesAndAliasesStay100DecibelsDown_data(); }
    void passBandIsFlat();
    void frameZeroStaysFrameZero_data();
    void frameZeroStaysFrameZero();
    void bothChannelsOfStereoAreTreatedAlike();
    void lengthIsTheSourcesTime_data();
    void lengthIsTheSourcesTime();
    void emptySoundStaysEmpty();
    void oneFrameIsEnough();
    void absurdRatesAreRefused_data();
    void absurdRatesAreRefused();
    void hugeResultIsRefused();
    void piecesGiveTheWhole_data();
    void piecesGiveTheWhole();
    void headNeedsLittleOfTheSource_data();
    void headNeedsLittleOfTheSource();
    void sourceMayEndBeforeItsAnnouncedEnd();
    void resultThatOnlySeemsHugeIsMade();
};

void tst_Resampler::imagesAndAliasesStay100DecibelsDown_data()
{
    QTest::addColumn<double>("ratio");
    const double ratios[] = {0.125,
                             0.1337,
                             0.25,
                             1 / M_E,
                             0.5,
                             0.61803,
                             0.75,
                             0.9375,
                             0.9999,
                             1.0001,
                             1.0594630943592953,
                             44100. / 48000.,
                             1.25,
                             1.5,
                             1.7818,
                             2.0,
                             2.5198,
                             M_PI,
                             3.9999,
                             4.0};
    for (const double ratio : ratios)
        QTest::newRow(qPrintable(QString::number(ratio, 'g', 8))) << ratio;
}

void tst_Resampler::imagesAndAliasesStay100DecibelsDown()
{
    QFETCH(double, ratio);
    // The highest frequency that both sides can hold, in cycles per frame of the source.
    const double limit = 0.5 * std::min(1.0, 1.0 / ratio);
    for (const double part : {0.01, 0.1, 0.3, 0.5, 0.7, 0.85, 0.9}) {
        const double frequency = limit * part;
        const WholeSample result = resampled(sine(frequency, sourceFrames(ratio)), ratio);
        QVERIFY(result.frames() >= SpectrumFrames + 2 * EdgeFrames);
        const Spectrum spectrum(result.left.data() + EdgeFrames, SpectrumFrames);
        const double worst = spectrum.strongest(frequency * ratio);
        QVERIFY2(worst < -100.0,
                 qPrintable(QStringLiteral("%1 dB at %2 of the band").arg(worst).arg(part)));
    }
}

void tst_Resampler::whatLiesAboveTheOutputsRangeIsGone_data()
{
    QTest::addColumn<double>("ratio");
    for (const double ratio : {1.0594630943592953, 1.25, 1.5, 2.0, M_PI, 4.0})
        QTest::newRow(qPrintable(QString::number(ratio, 'g', 8))) << ratio;
}

void tst_Resampler::whatLiesAboveTheOutputsRangeIsGone()
{
    QFETCH(double, ratio);
    const double limit = 0.5 / ratio;
    for (const double part : {0.02, 0.2, 0.5, 0.9}) {
        const double frequency = limit + (0.5 - limit) * part;
        const WholeSample result = resampled(sine(frequency, sourceFrames(ratio)), ratio);
        const Spectrum spectrum(result.left.data() + EdgeFrames, SpectrumFrames);
        QVERIFY2(spectrum.strongest() < -100.0, qPrintable(QString::number(spectrum.strongest())));
    }
}

void tst_Resampler::passBandIsFlat()
{
    QFETCH(double, ratio);
    const double limit = 0.5 * std::min(1.0, 1.0 / ratio);
    for (const double part : {0.1, 0.5, 0.9}) {
        const WholeSample result = resampled(sine(limit * part, sourceFrames(ratio)), ratio);
        const Spectrum spectrum(result.left.data() + EdgeFrames, SpectrumFrames);
        const double level = spectrum.at(limit * part * ratio);
        QVERIFY2(std::abs(level) < 0.01, qPrintable(QString::number(level)));
    }
}

void tst_Resampler::frameZeroStaysFrameZero_data()
{
    imagesAndAliasesStay100DecibelsDown_data();
}

void tst_Resampler::frameZeroStaysFrameZero()
{
    QFETCH(double, ratio);
    const double frequency = 0.1 * std::min(1.0, 1.0 / ratio);
    const WholeSample result = resampled(sine(frequency, sourceFrames(ratio)), ratio);
    double worst = 0;
    for (std::size_t i = EdgeFrames; i < EdgeFrames + SpectrumFrames; ++i) {
        const double ideal = std::sin(2 * M_PI * frequency * static_cast<double>(i) * ratio + 0.3);
        worst = std::max(worst, std::abs(static_cast<double>(result.left[i]) - ideal));
    }
    QVERIFY2(worst < 2e-4, qPrintable(QString::number(worst)));
}

void tst_Resampler::bothChannelsOfStereoAreTreatedAlike()
{
    const WholeSample stereo = noise(40000, true);
    WholeSample left;
    left.left = stereo.left;
    WholeSample right;
    right.left = stereo.right;
    const WholeSample result = resampled(stereo, 0.7);
    QVERIFY(result.isStereo());
    QVERIFY(result.left == resampled(left, 0.7).left);
    QVERIFY(result.right == resampled(right, 0.7).left);
}

void tst_Resampler::lengthIsTheSourcesTime_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<int>("expected");
    QTest::newRow("half speed") << 1000 << 0.5 << 2000;
    QTest::newRow("double speed") << 1000 << 2.0 << 500;
    QTest::newRow("begun frame") << 1001 << 2.0 << 501;
    QTest::newRow("slowest") << 10 << 1.0 / 64 << 640;
    QTest::newRow("fastest") << 6400 << 64.0 << 100;
    QTest::newRow("over several chunks") << 100000 << 0.8 << 125000;
}

void tst_Resampler::lengthIsTheSourcesTime()
{
    QFETCH(int, frames);
    QFETCH(double, ratio);
    QFETCH(int, expected);
    const WholeSample result = resampled(noise(static_cast<std::size_t>(frames), true), ratio);
    QCOMPARE(static_cast<int>(result.left.size()), expected);
    QCOMPARE(static_cast<int>(result.right.size()), expected);
}

void tst_Resampler::emptySoundStaysEmpty()
{
    QCOMPARE(resampled(WholeSample(), 0.5).frames(), std::size_t{0});
}

void tst_Resampler::oneFrameIsEnough()
{
    QCOMPARE(resampled(noise(1, false), 0.3).frames(), std::size_t{4});
    QCOMPARE(resampled(noise(1, false), 3.0).frames(), std::size_t{1});
}

void tst_Resampler::absurdRatesAreRefused_data()
{
    QTest::addColumn<double>("frequency");
    QTest::newRow("none") << 0.0;
    QTest::newRow("negative") << -48000.0;
    QTest::newRow("too slow") << 749.0;
    QTest::newRow("too fast") << 3073000.0;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
}

void tst_Resampler::absurdRatesAreRefused()
{
    QFETCH(double, frequency);
    const Outcome outcome = made(noise(100, false), frequency);
    QCOMPARE(outcome.result, FMOD_ERR_INVALID_PARAM);
    QCOMPARE(outcome.sample.frames(), std::size_t{0});
}

void tst_Resampler::hugeResultIsRefused()
{
    WholeSample source;
    source.left.resize(Decoder::MaxSamples / 4);
    QCOMPARE(made(source, Rate / 8).result, FMOD_ERR_MEMORY);
}

void tst_Resampler::piecesGiveTheWhole_data()
{
    imagesAndAliasesStay100DecibelsDown_data();
    QTest::newRow("slowest") << 1 / 64.0;
    QTest::newRow("fastest") << 64.0;
}

/// As the converter's library gives it where it is fed with everything at once.
void tst_Resampler::piecesGiveTheWhole()
{
    QFETCH(double, ratio);
    const WholeSample source = noise(ratio < 0.1 ? 3000 : 60000, true);
    const WholeSample expected = atOnce(source, ratio);
    for (const std::size_t pieceFrames : {std::size_t{701}, std::size_t{14400}, Preparation::All}) {
        const Outcome outcome = made(source, Rate * ratio, pieceFrames);
        QVERIFY(outcome.sample.left == expected.left);
        QVERIFY(outcome.sample.right == expected.right);
    }
}

void tst_Resampler::headNeedsLittleOfTheSource_data()
{
    QTest::addColumn<double>("ratio");
    for (const double ratio : {0.25, 0.5, 44100 / 48000.0, 1.5, 4.0})
        QTest::newRow(qPrintable(QString::number(ratio, 'g', 8))) << ratio;
}

void tst_Resampler::headNeedsLittleOfTheSource()
{
    QFETCH(double, ratio);
    const auto source = growing(noise(500000, true), 500000);
    Resampler resampler(source, Rate * ratio, Rate);
    AudioSample result;
    QCOMPARE(resampler.make(result, 14400), FMOD_OK);
    QVERIFY(result.frames() >= 14400);
    QVERIFY(result.frames() < 14400 + 4096);
    QVERIFY(static_cast<double>(source->sample().frames()) < 14400 * ratio + 16384);
}

void tst_Resampler::sourceMayEndBeforeItsAnnouncedEnd()
{
    const WholeSample heard = noise(60000, true);
    for (const double ratio : {0.7, 1.9}) {
        Resampler resampler(growing(heard, 200000), Rate * ratio, Rate);
        AudioSample result;
        QCOMPARE(resampler.make(result, 14400), FMOD_OK);
        QVERIFY(!result.isComplete());
        QCOMPARE(resampler.make(result, Preparation::All), FMOD_OK);
        QVERIFY(WholeSample(result).left == atOnce(heard, ratio).left);
        QVERIFY(WholeSample(result).right == atOnce(heard, ratio).right);
    }
}

void tst_Resampler::resultThatOnlySeemsHugeIsMade()
{
    const WholeSample heard = noise(10000, false);
    Resampler resampler(growing(heard, Decoder::MaxSamples), Rate / 8, Rate);
    AudioSample result;
    QCOMPARE(resampler.make(result, 1), FMOD_OK);
    QCOMPARE(resampler.make(result, Preparation::All), FMOD_OK);
    QCOMPARE(result.frames(), std::size_t{80000});
}

QTEST_APPLESS_MAIN(tst_Resampler)
#include "tst_Resampler.moc"
