#include "cli/Parallel.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <numeric>
#include <vector>

#include <sched.h>

class tst_Parallel : public QObject {
    Q_OBJECT

private slots:
    void everyNumberIsWorkedOnOnceAndTakenInOrder_data();
    void everyNumberIsWorkedOnOnceAndTakenInOrder();
    void resultThatIsReadyEarlyWaitsForItsTurn();
    void workIsDoneAtTheSameTime();
    void nothingIsTakenOfNothing();
    void workDoesNotRunFarAhead();
    void failureOfWorkComesInItsTurn();
    void failureOfTakingEndsTheWork();
    void endingSignalsDoNotReachTheThreads();
    void threadsAreAsManyAsUsableProcessors();
};

namespace {

constexpr std::chrono::minutes Limit(1);

/// A place where threads wait until so many are there.
class Meeting {
public:
    explicit Meeting(int expected)
        : m_missing(expected)
    {
    }

    /// False if the others do not come.
    bool attend()
    {
        std::unique_lock lock(m_mutex);
        --m_missing;
        m_arrived.notify_all();
        return m_arrived.wait_for(lock, Limit, [this] { return m_missing <= 0; });
    }

private:
    int m_missing;
    std::mutex m_mutex;
    std::condition_variable m_arrived;
};

std::vector<int> numbersBelow(int count)
{
    std::vector<int> numbers(static_cast<size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

bool blocks(int signal)
{
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, signal) == 1;
}

void nothing(int /*number*/) { }

} // namespace

void tst_Parallel::everyNumberIsWorkedOnOnceAndTakenInOrder_data()
{
    QTest::addColumn<int>("threads");

    QTest::newRow("one thread") << 1;
    QTest::newRow("three threads") << 3;
    QTest::newRow("more threads than work") << 2000;
}

void tst_Parallel::everyNumberIsWorkedOnOnceAndTakenInOrder()
{
    QFETCH(int, threads);
    std::vector<std::atomic<int>> worked(500);
    std::vector<int> taken;
    Parallel::inOrder(
        500, threads, [&](int number) { ++worked.at(static_cast<size_t>(number)); },
        [&](int number) {
            if (worked.at(static_cast<size_t>(number)) == 1)
                taken.push_back(number);
        });
    QVERIFY(taken == numbersBelow(500));
}

void tst_Parallel::resultThatIsReadyEarlyWaitsForItsTurn()
{
    Meeting firstAndLast(2);
    std::vector<int> taken;
    const auto work = [&](int number) {
        if (number != 1) // 2 begins on the thread that is done with 1, and 0 waits for it
            firstAndLast.attend();
    };
    Parallel::inOrder(3, 2, work, [&](int number) { taken.push_back(number); });
    QVERIFY(taken == numbersBelow(3));
}

void tst_Parallel::workIsDoneAtTheSameTime()
{
    Meeting all(3);
    std::atomic<int> met = 0;
    Parallel::inOrder(
        3, 3, [&](int) { met += all.attend() ? 1 : 0; }, nothing);
    QCOMPARE(met.load(), 3);
}

void tst_Parallel::nothingIsTakenOfNothing()
{
    int calls = 0;
    const auto count = [&](int) { ++calls; };
    Parallel::inOrder(0, 4, count, count);
    QCOMPARE(calls, 0);
}

void tst_Parallel::workDoesNotRunFarAhead()
{
    std::atomic<int> highest = 0;
    int lead = 0;
    const auto work = [&](int number) {
        int seen = highest;
        while (seen < number && !highest.compare_exchange_weak(seen, number))
            ;
    };
    Parallel::inOrder(5000, 2, work,
                      [&](int number) { lead = std::max(lead, highest.load() - number); });
    QVERIFY2(lead <= 16, qPrintable(QString::number(lead)));
}

void tst_Parallel::failureOfWorkComesInItsTurn()
{
    std::vector<int> taken;
    const auto work = [](int number) {
        if (number >= 2)
            throw QStringLiteral("no %1").arg(number);
    };
    try {
        Parallel::inOrder(100, 3, work, [&](int number) { taken.push_back(number); });
        QFAIL("Nothing was thrown.");
    } catch (const QString &message) {
        QCOMPARE(message, QStringLiteral("no 2"));
    }
    QVERIFY(taken == numbersBelow(2));
}

void tst_Parallel::failureOfTakingEndsTheWork()
{
    std::atomic<int> worked = 0;
    const auto take = [](int) { throw QStringLiteral("enough"); };
    try {
        Parallel::inOrder(
            100000, 3, [&](int) { ++worked; }, take);
        QFAIL("Nothing was thrown.");
    } catch (const QString &message) {
        QCOMPARE(message, QStringLiteral("enough"));
    }
    QVERIFY2(worked < 100, qPrintable(QString::number(worked)));
}

void tst_Parallel::endingSignalsDoNotReachTheThreads()
{
    std::atomic<int> blocked = 0;
    const auto work = [&](int) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            blocked += blocks(signal) ? 1 : 0;
    };
    bool isCallerFree = true;
    Parallel::inOrder(2, 2, work, [&](int) { isCallerFree = isCallerFree && !blocks(SIGINT); });
    QCOMPARE(blocked.load(), 6);
    QVERIFY(isCallerFree);
}

void tst_Parallel::threadsAreAsManyAsUsableProcessors()
{
    cpu_set_t before;
    QCOMPARE(sched_getaffinity(0, sizeof before, &before), 0);
    QCOMPARE(Parallel::threadCount(), CPU_COUNT(&before));
    int first = 0;
    while (!CPU_ISSET(first, &before))
        ++first;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(first, &one);
    QCOMPARE(sched_setaffinity(0, sizeof one, &one), 0);
    const int count = Parallel::threadCount();
    QCOMPARE(sched_setaffinity(0, sizeof before, &before), 0);
    QCOMPARE(count, 1);
}

QTEST_GUILESS_MAIN(tst_Parallel)
#include "tst_Parallel.moc"
