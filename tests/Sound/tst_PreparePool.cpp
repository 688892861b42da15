#include "Sound/PreparePool.h"

#include "WholeSample.h"

#include <QtTest>

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
