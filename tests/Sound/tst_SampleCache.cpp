#include "Sound/SampleCache.h"

#include <QtTest>

#include <limits>

namespace {

constexpr double Rate = 48000.0;
constexpr std::size_t KiB = 1024;

SampleCache::Sample sampleOf(std::size_t frames, bool stereo = false)
{
    const auto sample = std::make_shared<AudioSample>();
    sample->left.assign(frames, 0.5F);
    sample->right.assign(stereo ? frames : 0, 0.25F);
    return sample;
}

SampleCache::Sample prepared(SampleCache &cache, const SampleCache::Sample &source, double rate)
{
    SampleCache::Sample result;
    if (cache.prepare(source, rate, result) != FMOD_OK)
        qFatal("preparing failed");
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
    void emptySoundIsFine();
    void absurdRatesAreRefused_data();
    void absurdRatesAreRefused();
};

void tst_SampleCache::theOutputsRateNeedsNoCopy()
{
    SampleCache cache(Rate, 100 * KiB);
    const auto source = sampleOf(100);
    QCOMPARE(prepared(cache, source, Rate), source);
    QCOMPARE(cache.bytes(), std::size_t{0});
}

void tst_SampleCache::aSecondRequestFindsTheFirst()
{
    SampleCache cache(Rate, 100 * KiB);
    const auto source = sampleOf(1000);
    const auto first = prepared(cache, source, 24000);
    QCOMPARE(first->frames(), std::size_t{2000});
    QCOMPARE(prepared(cache, source, 24000), first);
    QCOMPARE(cache.count(), std::size_t{1});
}

void tst_SampleCache::ratesAndSoundsAreKeptApart()
{
    SampleCache cache(Rate, 100 * KiB);
    const auto one = sampleOf(1000);
    const auto other = sampleOf(500);
    QCOMPARE(prepared(cache, one, 24000)->frames(), std::size_t{2000});
    QCOMPARE(prepared(cache, one, 96000)->frames(), std::size_t{500});
    QCOMPARE(prepared(cache, other, 24000)->frames(), std::size_t{1000});
    QCOMPARE(cache.count(), std::size_t{3});
}

void tst_SampleCache::monoStaysMono()
{
    SampleCache cache(Rate, 100 * KiB);
    QVERIFY(!prepared(cache, sampleOf(100), 24000)->isStereo());
    QVERIFY(prepared(cache, sampleOf(100, true), 24000)->isStereo());
}

void tst_SampleCache::sizeIsCountedInBytes()
{
    SampleCache cache(Rate, 100 * KiB);
    prepared(cache, sampleOf(100), 24000);
    QCOMPARE(cache.bytes(), std::size_t{800});
    prepared(cache, sampleOf(100, true), 24000);
    QCOMPARE(cache.bytes(), std::size_t{2400});
}

void tst_SampleCache::leastRecentlyUsedGoesFirst()
{
    SampleCache cache(Rate, 20 * KiB); // two of 8 KiB
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
    SampleCache cache(Rate, 10 * KiB);
    const auto held = prepared(cache, sampleOf(KiB), 24000);
    prepared(cache, sampleOf(KiB), 24000);
    QCOMPARE(cache.count(), std::size_t{1});
    QCOMPARE(held->frames(), 2 * KiB);
    QCOMPARE(held.use_count(), 1L);
}

void tst_SampleCache::whatIsTooLargeIsPreparedButNotKept()
{
    SampleCache cache(Rate, 1 * KiB);
    QCOMPARE(prepared(cache, sampleOf(KiB), 24000)->frames(), 2 * KiB);
    QCOMPARE(cache.count(), std::size_t{0});
    QCOMPARE(cache.bytes(), std::size_t{0});
}

void tst_SampleCache::forgettingDropsAllRatesOfOneSound()
{
    SampleCache cache(Rate, 100 * KiB);
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

void tst_SampleCache::emptySoundIsFine()
{
    SampleCache cache(Rate, 100 * KiB);
    QCOMPARE(prepared(cache, sampleOf(0), 24000)->frames(), std::size_t{0});
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
    SampleCache cache(Rate, 100 * KiB);
    SampleCache::Sample result = sampleOf(7);
    QCOMPARE(cache.prepare(sampleOf(10), rate, result), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(result->frames(), std::size_t{7});
    QCOMPARE(cache.count(), std::size_t{0});
}

QTEST_APPLESS_MAIN(tst_SampleCache)
#include "tst_SampleCache.moc"
