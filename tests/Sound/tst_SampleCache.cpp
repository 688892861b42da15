#include "Sound/SampleCache.h"

#include "Sound/Decoder.h"
#include "Sound/Resampler.h"
#include "WholeSample.h"

#include <QtTest>

#include <limits>

namespace {

constexpr double Rate = 48000.0;
constexpr std::size_t KiB = 1024;

SampleCache::Sample sampleOf(std::size_t frames, bool stereo = false)
{
    return WholeSample::preparation(
        {std::vector<float>(frames, 0.5F), std::vector<float>(stereo ? frames : 0, 0.25F)});
}

/// A cache for which the calling thread does the work, whenever a sample is asked for.
class Cache : private PreparePool, public SampleCache {
public:
    explicit Cache(std::size_t maxBytes)
        : PreparePool(0)
        , SampleCache(Rate, maxBytes, *this)
    {
    }
};

SampleCache::Sample prepared(SampleCache &cache, const SampleCache::Sample &source, double rate)
{
    SampleCache::Sample result;
    if (cache.prepare(source, rate, result) != FMOD_OK)
        qFatal("preparing failed");
    result->run(Preparation::All);
    cache.settle();
    return result;
}

} // namespace

class tst_SampleCache : public QObject {
    Q_OBJECT

private slots:
    void theOutputsRateNeedsNoCopy();
    void aSecondRequestFindsTheFirst();
    void ratesAndSoundsAreKeptApart();
    void monoStaysMono();
    void sizeIsCountedInBytes();
    void leastRecentlyUsedGoesFirst();
    void whatIsHeldLivesOn();
    void whatIsTooLargeIsPreparedButNotKept();
    void forgettingDropsAllRatesOfOneSound();
    void sampleThatIsNotMadeYetIsFoundToo();
    void sampleIsCountedWhenItIsMade();
    void sampleThatGrowsIsCountedAsFarAsItIsMade();
    void sampleThatGrowsMayBeDropped();
    void whatIsNotMadeYetIsNotDropped();
    void forgottenSoundIsNotMade();
    void brokenSoundIsSilentAtEveryRate();
    void resultThatIsTooLargeIsAnError();
    void emptySoundIsFine();
    void absurdRatesAreRefused_data();
    void absurdRatesAreRefused();
};

void tst_SampleCache::theOutputsRateNeedsNoCopy()
{
    Cache cache(100 * KiB);
    const auto source = sampleOf(100);
    QCOMPARE(prepared(cache, source, Rate), source);
    QCOMPARE(cache.bytes(), std::size_t{0});
}

void tst_SampleCache::aSecondRequestFindsTheFirst()
{
    Cache cache(100 * KiB);
    const auto source = sampleOf(1000);
    const auto first = prepared(cache, source, 24000);
    QCOMPARE(first->sample().frames(), std::size_t{2000});
    QCOMPARE(prepared(cache, source, 24000), first);
    QCOMPARE(cache.count(), std::size_t{1});
}

void tst_SampleCache::ratesAndSoundsAreKeptApart()
{
    Cache cache(100 * KiB);
    const auto one = sampleOf(1000);
    const auto other = sampleOf(500);
    QCOMPARE(prepared(cache, one, 24000)->sample().frames(), std::size_t{2000});
    QCOMPARE(prepared(cache, one, 96000)->sample().frames(), std::size_t{500});
    QCOMPARE(prepared(cache, other, 24000)->sample().frames(), std::size_t{1000});
    QCOMPARE(cache.count(), std::size_t{3});
}

void tst_SampleCache::monoStaysMono()
{
    Cache cache(100 * KiB);
    QVERIFY(!prepared(cache, sampleOf(100), 24000)->sample().isStereo());
    QVERIFY(prepared(cache, sampleOf(100, true), 24000)->sample().isStereo());
}

void tst_SampleCache::sizeIsCountedInBytes()
{
    Cache cache(100 * KiB);
    prepared(cache, sampleOf(100), 24000);
    QCOMPARE(cache.bytes(), std::size_t{800});
    prepared(cache, sampleOf(100, true), 24000);
    QCOMPARE(cache.bytes(), std::size_t{2400});
}

void tst_SampleCache::leastRecentlyUsedGoesFirst()
{
    Cache cache(20 * KiB); // two of 8 KiB
    const auto a = sampleOf(KiB);
    const auto b = sampleOf(KiB);
    const auto c = sampleOf(KiB);
    const auto preparedA = prepared(cache, a, 24000);
    const auto preparedB = prepared(cache, b, 24000);
    prepared(cache, a, 24000);
    prepared(cache, c, 24000);
    QCOMPARE(cache.count(), std::size_t{2});
    QCOMPARE(cache.bytes(), 16 * KiB);
    QCOMPARE(prepared(cache, a, 24000), preparedA);
    QVERIFY(prepared(cache, b, 24000) != preparedB);
}

void tst_SampleCache::whatIsHeldLivesOn()
{
    Cache cache(10 * KiB);
    const auto held = prepared(cache, sampleOf(KiB), 24000);
    prepared(cache, sampleOf(KiB), 24000);
    QCOMPARE(cache.count(), std::size_t{1});
    QCOMPARE(held->sample().frames(), 2 * KiB);
    QCOMPARE(held.use_count(), 1L);
}

void tst_SampleCache::whatIsTooLargeIsPreparedButNotKept()
{
    Cache cache(1 * KiB);
    QCOMPARE(prepared(cache, sampleOf(KiB), 24000)->sample().frames(), 2 * KiB);
    QCOMPARE(cache.count(), std::size_t{0});
    QCOMPARE(cache.bytes(), std::size_t{0});
}

void tst_SampleCache::forgettingDropsAllRatesOfOneSound()
{
    Cache cache(100 * KiB);
    const auto a = sampleOf(100);
    const auto b = sampleOf(100);
    prepared(cache, a, 24000);
    const auto keptB = prepared(cache, b, 24000);
    prepared(cache, a, 32000);
    cache.forget(a);
    QCOMPARE(cache.count(), std::size_t{1});
    QCOMPARE(a.use_count(), 1L);
    QCOMPARE(prepared(cache, b, 24000), keptB);
    cache.forget(a);
    QCOMPARE(cache.bytes(), std::size_t{800});
}

void tst_SampleCache::sampleThatIsNotMadeYetIsFoundToo()
{
    Cache cache(100 * KiB);
    const auto source = sampleOf(1000);
    SampleCache::Sample first;
    SampleCache::Sample second;
    QCOMPARE(cache.prepare(source, 24000, first), FMOD_OK);
    QCOMPARE(cache.prepare(source, 24000, second), FMOD_OK);
    QVERIFY(!first->sample().isComplete());
    QCOMPARE(first, second);
    QCOMPARE(cache.count(), std::size_t{1});
}

void tst_SampleCache::sampleIsCountedWhenItIsMade()
{
    Cache cache(100 * KiB);
    SampleCache::Sample result;
    QCOMPARE(cache.prepare(sampleOf(100), 24000, result), FMOD_OK);
    cache.settle();
    QCOMPARE(cache.bytes(), std::size_t{0});
    result->run(Preparation::All);
    QCOMPARE(cache.bytes(), std::size_t{0});
    cache.settle();
    QCOMPARE(cache.bytes(), std::size_t{800});
    cache.settle();
    QCOMPARE(cache.bytes(), std::size_t{800});
}

void tst_SampleCache::sampleThatGrowsIsCountedAsFarAsItIsMade()
{
    Cache cache(1000 * KiB);
    SampleCache::Sample result;
    QCOMPARE(cache.prepare(sampleOf(50000), 24000, result), FMOD_OK);
    for (const std::size_t frames : {14400, 40000}) {
        result->run(frames);
        cache.settle();
        QVERIFY(!result->sample().isComplete());
        QCOMPARE(cache.bytes(), 4 * result->sample().frames() + Resampler::WorkingBytes);
    }
    result->run(Preparation::All);
    cache.settle();
    QCOMPARE(cache.bytes(), std::size_t{400000});
}

void tst_SampleCache::sampleThatGrowsMayBeDropped()
{
    Cache cache(Resampler::WorkingBytes + 136 * KiB);
    const auto source = sampleOf(200000);
    SampleCache::Sample held;
    QCOMPARE(cache.prepare(source, 24000, held), FMOD_OK);
    held->run(14400);
    cache.settle();
    QCOMPARE(cache.count(), std::size_t{1});
    held->run(60000);
    cache.settle();
    QCOMPARE(cache.count(), std::size_t{0});
    QCOMPARE(cache.bytes(), std::size_t{0});
    QCOMPARE(whole(*held).frames(), std::size_t{400000});
}

void tst_SampleCache::whatIsNotMadeYetIsNotDropped()
{
    Cache cache(10 * KiB); // one of 8 KiB
    const auto source = sampleOf(KiB);
    SampleCache::Sample waiting;
    QCOMPARE(cache.prepare(source, 24000, waiting), FMOD_OK);
    prepared(cache, sampleOf(KiB), 24000);
    const auto last = prepared(cache, sampleOf(KiB), 24000);
    QCOMPARE(cache.count(), std::size_t{2});
    QCOMPARE(cache.bytes(), 8 * KiB);
    QCOMPARE(prepared(cache, source, 24000), waiting);
    QCOMPARE(cache.count(), std::size_t{1});
    QCOMPARE(cache.bytes(), 8 * KiB);
}

void tst_SampleCache::forgottenSoundIsNotMade()
{
    Cache cache(100 * KiB);
    SampleCache::Sample result;
    const auto source = sampleOf(100);
    QCOMPARE(cache.prepare(source, 24000, result), FMOD_OK);
    const std::weak_ptr<Preparation> watched = result;
    result.reset();
    QVERIFY(!watched.expired());
    cache.forget(source);
    QVERIFY(watched.expired());
    QVERIFY(!source->sample().isComplete());
    cache.settle();
    QCOMPARE(cache.bytes(), std::size_t{0});
}

void tst_SampleCache::brokenSoundIsSilentAtEveryRate()
{
    Cache cache(100 * KiB);
    const auto source =
        std::make_shared<Preparation>([](AudioSample &, std::size_t) { return FMOD_ERR_FILE_BAD; });
    const auto result = prepared(cache, source, 24000);
    QCOMPARE(result->sample().frames(), std::size_t{0});
    QCOMPARE(result->takeError(), FMOD_OK);
    QCOMPARE(source->takeError(), FMOD_ERR_FILE_BAD);
}

void tst_SampleCache::resultThatIsTooLargeIsAnError()
{
    Cache cache(100 * KiB);
    const auto result = prepared(cache, sampleOf(Decoder::MaxSamples / 64 + 1), Rate / 64);
    QCOMPARE(result->sample().frames(), std::size_t{0});
    QCOMPARE(result->takeError(), FMOD_ERR_MEMORY);
    QCOMPARE(cache.bytes(), std::size_t{0});
}

void tst_SampleCache::emptySoundIsFine()
{
    Cache cache(100 * KiB);
    QCOMPARE(prepared(cache, sampleOf(0), 24000)->sample().frames(), std::size_t{0});
}

void tst_SampleCache::absurdRatesAreRefused_data()
{
    QTest::addColumn<double>("rate");
    QTest::newRow("none") << 0.0;
    QTest::newRow("negative") << -1.0;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
}

void tst_SampleCache::absurdRatesAreRefused()
{
    QFETCH(double, rate);
    Cache cache(100 * KiB);
    SampleCache::Sample result = sampleOf(7);
    QCOMPARE(cache.prepare(sampleOf(10), rate, result), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(whole(*result).frames(), std::size_t{7});
    QCOMPARE(cache.count(), std::size_t{0});
}

QTEST_APPLESS_MAIN(tst_SampleCache)
#include "tst_SampleCache.moc"
