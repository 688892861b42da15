#include "Sound/PreparePool.h"

#include "WholeSample.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <future>
#include <new>
#include <stdexcept>

namespace {

/// A job that reports its start and goes on when it is told to.
struct Gate {
    std::promise<void> started;
    std::promise<void> opened;

    Preparation::Make job()
    {
        return WholeSample::made([this](WholeSample &sample) {
            started.set_value();
            opened.get_future().wait();
            sample.left = {1, 2, 3};
            return FMOD_OK;
        });
    }
};

Preparation::Make counting(std::atomic<int> &runs)
{
    return WholeSample::made([&runs](WholeSample &sample) {
        sample.left.assign(static_cast<std::size_t>(++runs), 0.5F);
        return FMOD_OK;
    });
}

/// Counts up to `length` in portions of 100 frames, and notes in which order this happens.
class Portions {
public:
    explicit Portions(std::size_t length)
        : m_length(length)
    {
    }

    Preparation::Make job(int name)
    {
        return [this, name](AudioSample &sample, std::size_t frames) {
            if (sample.maxFrames() == 0)
                sample.allocate(m_length, false);
            m_order.push_back(name); // by one thread at a time
            while (!sample.has(frames))
                append(sample);
            return FMOD_OK;
        };
    }

    const std::vector<int> &order() const { return m_order; }

private:
    void append(AudioSample &sample) const
    {
        const std::vector<float> portion(100, 0.5F);
        sample.append(portion.data(), portion.data(),
                      std::min(portion.size(), m_length - sample.frames()));
        sample.publish();
        if (sample.frames() == m_length)
            sample.complete();
    }

    std::size_t m_length;
    std::vector<int> m_order;
};

} // namespace

class tst_PreparePool : public QObject {
    Q_OBJECT

private slots:
    void sampleIsMadeOnce();
    void sampleIsMadeByTheOneWhoNeedsItFirst();
    void withoutThreadsTheCallerMakesIt();
    void threadsMakeWhatNobodyWaitsFor();
    void waiterGetsWhatAnotherThreadMakes();
    void jobsMayBuildOnOthers();
    void manyThreadsAskForTheSame();
    void errorGivesSilenceAndIsToldOnce();
    void exceptionGivesSilenceAndAnError_data();
    void exceptionGivesSilenceAndAnError();
    void sampleIsMadeAsFarAsItIsWanted();
    void errorInTheMiddleKeepsWhatWasThere();
    void jobThatDoesNothingEnds();
    void readersSeeTheSampleGrow();
    void allHeadsComeBeforeFurtherPieces();
    void whatWasAskedForIsMadeOnce();
    void nothingIsMadeUnasked();
    void jobsMemoryGoesWithTheJob();
    void whatNobodyHoldsIsNotMade();
    void longQueueIsWorkedOffByTheCaller();
    void queueMayBeLongerWhereNobodyHasTime();
    void callerStandsInForThreadsThatAreMissing();
    void callerDoesNotStandInForThreads();
    void endWaitsForTheRunningAndLeavesTheRest();
    void numberOfThreadsIsSensible();
};

void tst_PreparePool::sampleIsMadeOnce()
{
    std::atomic<int> runs{0};
    Preparation preparation(counting(runs));
    QVERIFY(!preparation.sample().isComplete());
    preparation.run(Preparation::All);
    QVERIFY(preparation.sample().isComplete());
    preparation.run(Preparation::All);
    QCOMPARE(whole(preparation).frames(), std::size_t{1});
    QCOMPARE(runs.load(), 1);
}

void tst_PreparePool::sampleIsMadeByTheOneWhoNeedsItFirst()
{
    std::atomic<int> runs{0};
    Gate gate;
    PreparePool pool(1);
    const auto first = pool.add(gate.job());
    gate.started.get_future().wait();
    const auto second = pool.add(counting(runs));
    QCOMPARE(whole(*second).frames(), std::size_t{1}); // the only thread is busy
    gate.opened.set_value();
    QCOMPARE(whole(*first).frames(), std::size_t{3});
    QCOMPARE(runs.load(), 1);
}

void tst_PreparePool::withoutThreadsTheCallerMakesIt()
{
    PreparePool pool(0);
    std::thread::id worker;
    const auto preparation = pool.add(WholeSample::made([&worker](WholeSample &) {
        worker = std::this_thread::get_id();
        return FMOD_OK;
    }));
    QVERIFY(!preparation->sample().isComplete());
    preparation->makeUpTo(1);
    QVERIFY(worker == std::this_thread::get_id());
}

void tst_PreparePool::threadsMakeWhatNobodyWaitsFor()
{
    std::promise<std::thread::id> worker;
    PreparePool pool(2);
    const auto preparation = pool.add(WholeSample::made([&worker](WholeSample &) {
        worker.set_value(std::this_thread::get_id());
        return FMOD_OK;
    }));
    QVERIFY(worker.get_future().get() != std::this_thread::get_id());
}

void tst_PreparePool::waiterGetsWhatAnotherThreadMakes()
{
    Gate gate;
    PreparePool pool(1);
    const auto preparation = pool.add(gate.job());
    gate.started.get_future().wait();
    auto waiter =
        std::async(std::launch::async, [preparation] { return whole(*preparation).frames(); });
    QVERIFY(!preparation->sample().isComplete());
    gate.opened.set_value();
    QCOMPARE(whole(*preparation).frames(), std::size_t{3});
    QCOMPARE(waiter.get(), std::size_t{3});
}

void tst_PreparePool::jobsMayBuildOnOthers()
{
    for (const unsigned threads : {0U, 1U, 2U, 8U}) {
        PreparePool pool(threads);
        std::vector<std::shared_ptr<Preparation>> results;
        for (std::size_t i = 1; i <= 200; ++i) {
            const auto source = pool.add(WholeSample::made([i](WholeSample &sample) {
                sample.left.assign(i, 1.0F);
                return FMOD_OK;
            }));
            results.push_back(pool.add(WholeSample::made([source](WholeSample &sample) {
                sample.left.assign(2 * whole(*source).frames(), 1.0F);
                return FMOD_OK;
            })));
        }
        for (std::size_t i = 200; i > 0; --i)
            QCOMPARE(whole(*results[i - 1]).frames(), 2 * i);
    }
}

void tst_PreparePool::manyThreadsAskForTheSame()
{
    std::atomic<int> runs{0};
    PreparePool pool(4);
    for (int round = 0; round < 100; ++round) {
        const auto preparation = pool.add(counting(runs));
        auto other =
            std::async(std::launch::async, [preparation] { preparation->run(Preparation::All); });
        QCOMPARE(whole(*preparation).frames(), static_cast<std::size_t>(round + 1));
        other.get();
    }
    QCOMPARE(runs.load(), 100);
}

void tst_PreparePool::errorGivesSilenceAndIsToldOnce()
{
    Preparation preparation(WholeSample::made([](WholeSample &sample) {
        sample.left = {1, 2, 3};
        return FMOD_ERR_FILE_BAD;
    }));
    preparation.run(1);
    QCOMPARE(preparation.takeError(), FMOD_ERR_FILE_BAD);
    QCOMPARE(preparation.takeError(), FMOD_OK);
    QCOMPARE(whole(preparation).frames(), std::size_t{0});
}

void tst_PreparePool::exceptionGivesSilenceAndAnError_data()
{
    QTest::addColumn<bool>("lacksMemory");
    QTest::addColumn<int>("error");
    QTest::newRow("no memory") << true << int{FMOD_ERR_MEMORY};
    QTest::newRow("anything else") << false << int{FMOD_ERR_INTERNAL};
}

void tst_PreparePool::exceptionGivesSilenceAndAnError()
{
    QFETCH(bool, lacksMemory);
    QFETCH(int, error);
    PreparePool pool(1);
    const auto preparation =
        pool.add(WholeSample::made([lacksMemory](WholeSample &sample) -> FMOD_RESULT {
            sample.left = {1, 2, 3};
            if (lacksMemory)
                throw std::bad_alloc();
            throw std::runtime_error("odd");
        }));
    QCOMPARE(whole(*preparation).frames(), std::size_t{0});
    QCOMPARE(int{preparation->takeError()}, error);
}

void tst_PreparePool::sampleIsMadeAsFarAsItIsWanted()
{
    Portions portions(1050);
    Preparation preparation(portions.job(1));
    preparation.run(150);
    QCOMPARE(preparation.sample().frames(), std::size_t{200});
    QCOMPARE(preparation.sample().maxFrames(), std::size_t{1050});
    preparation.run(200);
    QCOMPARE(portions.order().size(), std::size_t{1});
    preparation.makeUpTo(1050);
    QCOMPARE(preparation.sample().frames(), std::size_t{1050});
    QVERIFY(preparation.sample().isComplete());
    preparation.makeUpTo(Preparation::All);
    QCOMPARE(portions.order().size(), std::size_t{2});
    QVERIFY(whole(preparation).left == std::vector<float>(1050, 0.5F));
}

void tst_PreparePool::errorInTheMiddleKeepsWhatWasThere()
{
    Preparation preparation([](AudioSample &sample, std::size_t) {
        if (sample.frames() > 0)
            return FMOD_ERR_FILE_BAD;
        sample.allocate(1000, true);
        sample.appendSilence(10);
        sample.publish();
        sample.appendSilence(20);
        return FMOD_OK;
    });
    preparation.makeUpTo(10);
    QCOMPARE(preparation.takeError(), FMOD_OK);
    preparation.makeUpTo(11);
    QCOMPARE(preparation.takeError(), FMOD_ERR_FILE_BAD);
    QCOMPARE(preparation.takeError(), FMOD_OK);
    QVERIFY(preparation.sample().isComplete());
    QCOMPARE(preparation.sample().frames(), std::size_t{10});
    QCOMPARE(preparation.sample().maxFrames(), std::size_t{10});
    QCOMPARE(preparation.sample().bytes(), std::size_t{80});
}

void tst_PreparePool::jobThatDoesNothingEnds()
{
    Preparation preparation([](AudioSample &, std::size_t) { return FMOD_OK; });
    preparation.makeUpTo(1);
    QCOMPARE(preparation.takeError(), FMOD_ERR_INTERNAL);
    QCOMPARE(whole(preparation).frames(), std::size_t{0});
}

void tst_PreparePool::readersSeeTheSampleGrow()
{
    constexpr std::size_t Length = 100000;
    Portions portions(Length);
    PreparePool pool(1);
    const auto preparation = pool.add(portions.job(1));
    pool.ask(preparation, Length);
    const AudioSample &sample = preparation->sample();
    std::size_t seen = 0;
    while (seen < Length) {
        const std::size_t frames = sample.frames();
        for (; seen < frames; ++seen)
            QCOMPARE(sample.left()[seen], 0.5F);
    }
}

void tst_PreparePool::allHeadsComeBeforeFurtherPieces()
{
    constexpr int Sounds = 16;
    Portions portions(100000);
    Gate gate;
    PreparePool pool(1);
    const auto busy = pool.add(gate.job());
    gate.started.get_future().wait();
    std::vector<std::shared_ptr<Preparation>> all;
    std::vector<int> expected;
    for (int i = 0; i < Sounds; ++i) {
        all.push_back(pool.add(portions.job(i)));
        pool.ask(all.back(), 50000);
        expected.push_back(i);
    }
    for (int i = 0; i < Sounds; ++i)
        expected.push_back(i);
    gate.opened.set_value();
    while (!all.back()->sample().has(50000))
        std::this_thread::yield();
    for (const auto &preparation : all) {
        QVERIFY(preparation->sample().frames() >= 50000);
        QVERIFY(preparation->sample().frames() < 50100);
    }
    QVERIFY(portions.order() == expected);
}

void tst_PreparePool::whatWasAskedForIsMadeOnce()
{
    Portions portions(100000);
    PreparePool pool(0);
    const auto preparation = pool.add(portions.job(1));
    pool.ask(preparation, 100); // its head has more
    pool.standIn();
    QCOMPARE(preparation->sample().frames(), Preparation::HeadFrames);
    for (int i = 0; i < 3; ++i)
        pool.ask(preparation, 20000);
    pool.standIn();
    QCOMPARE(preparation->sample().frames(), std::size_t{20000});
    pool.ask(preparation, 20000);
    pool.standIn();
    QCOMPARE(portions.order().size(), std::size_t{2});
}

void tst_PreparePool::nothingIsMadeUnasked()
{
    Portions portions(1000000);
    std::shared_ptr<Preparation> preparation;
    {
        PreparePool pool(2);
        preparation = pool.add(portions.job(1));
        preparation->makeUpTo(1);
    }
    QVERIFY(preparation->sample().frames() <= Preparation::HeadFrames);
}

void tst_PreparePool::jobsMemoryGoesWithTheJob()
{
    const auto bytes = std::make_shared<int>(7);
    Preparation preparation(WholeSample::made([bytes](WholeSample &) { return FMOD_OK; }));
    QCOMPARE(bytes.use_count(), 2L);
    preparation.run(Preparation::All);
    QCOMPARE(bytes.use_count(), 1L);
}

void tst_PreparePool::whatNobodyHoldsIsNotMade()
{
    std::atomic<int> runs{0};
    Gate gate;
    PreparePool pool(1);
    const auto busy = pool.add(gate.job());
    gate.started.get_future().wait();
    pool.add(counting(runs));
    const auto last = pool.add(counting(runs));
    gate.opened.set_value();
    QCOMPARE(whole(*last).frames(), std::size_t{1});
    QCOMPARE(runs.load(), 1);
}

void tst_PreparePool::longQueueIsWorkedOffByTheCaller()
{
    std::atomic<int> runs{0};
    PreparePool pool(0);
    std::vector<std::shared_ptr<Preparation>> all;
    for (std::size_t i = 0; i < PreparePool::MaxQueued; ++i)
        all.push_back(pool.add(counting(runs)));
    QCOMPARE(runs.load(), 0);
    all.push_back(pool.add(counting(runs)));
    QCOMPARE(runs.load(), 1);
    QVERIFY(all.front()->sample().isComplete());
    QVERIFY(!all.back()->sample().isComplete());
}

void tst_PreparePool::queueMayBeLongerWhereNobodyHasTime()
{
    std::atomic<int> runs{0};
    PreparePool pool(0);
    pool.setMaxQueued(PreparePool::MaxQueuedLive);
    std::vector<std::shared_ptr<Preparation>> all;
    for (std::size_t i = 0; i < 512; ++i)
        all.push_back(pool.add(counting(runs)));
    QCOMPARE(runs.load(), 0);
    all.push_back(pool.add(counting(runs)));
    QCOMPARE(runs.load(), 1);
}

void tst_PreparePool::callerStandsInForThreadsThatAreMissing()
{
    std::atomic<int> runs{0};
    PreparePool pool(0);
    pool.standIn(); // has nothing to do
    const auto first = pool.add(counting(runs));
    pool.add(counting(runs)); // nobody holds it
    const auto last = pool.add(counting(runs));
    pool.standIn();
    QVERIFY(first->sample().isComplete());
    pool.standIn();
    QVERIFY(!last->sample().isComplete());
    pool.standIn();
    QVERIFY(last->sample().isComplete());
    pool.standIn();
    QCOMPARE(runs.load(), 2);
}

void tst_PreparePool::callerDoesNotStandInForThreads()
{
    std::atomic<int> runs{0};
    Gate gate;
    PreparePool pool(1);
    const auto busy = pool.add(gate.job());
    gate.started.get_future().wait();
    const auto queued = pool.add(counting(runs));
    pool.standIn();
    QCOMPARE(runs.load(), 0);
    gate.opened.set_value();
    QCOMPARE(whole(*queued).frames(), std::size_t{1});
}

void tst_PreparePool::endWaitsForTheRunningAndLeavesTheRest()
{
    std::atomic<int> runs{0};
    Gate gate;
    std::shared_ptr<Preparation> running;
    std::shared_ptr<Preparation> queued;
    {
        PreparePool pool(1);
        running = pool.add(gate.job());
        queued = pool.add(counting(runs));
        gate.started.get_future().wait();
        gate.opened.set_value();
    }
    QVERIFY(running->sample().isComplete());
    QCOMPARE(whole(*running).frames(), std::size_t{3});
    QCOMPARE(whole(*queued).frames(), std::size_t{1});
    QCOMPARE(runs.load(), 1);
}

void tst_PreparePool::numberOfThreadsIsSensible()
{
    QVERIFY(PreparePool::defaultThreads() >= 1);
    QVERIFY(PreparePool::defaultThreads() <= 8);
}

QTEST_APPLESS_MAIN(tst_PreparePool)
#include "tst_PreparePool.moc"
