#include "Sound/ThreadPriority.h"

#include <QtTest>

#include <algorithm>
#include <functional>
#include <thread>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

id_t thisThread()
{
    return static_cast<id_t>(syscall(SYS_gettid));
}

int niceness()
{
    return getpriority(PRIO_PROCESS, thisThread());
}

int onAnotherThread(const std::function<int()> &work)
{
    int result = 0;
    std::thread([&] { result = work(); }).join();
    return result;
}

bool mayBeNice(int value)
{
    return onAnotherThread([value] { return setpriority(PRIO_PROCESS, thisThread(), value); }) == 0;
}

} // namespace

class tst_ThreadPriority : public QObject {
    Q_OBJECT

private slots:
    void prefersTheThreadAloneWhereThatIsAllowed();
    void isInherited();
    void leavesAThreadThatIsPreferredMore();
};

void tst_ThreadPriority::prefersTheThreadAloneWhereThatIsAllowed()
{
    const int before = niceness();
    const int after = onAnotherThread([] {
        ThreadPriority::prefer();
        return niceness();
    });
    QCOMPARE(after, mayBeNice(-10) ? std::min(before, -10) : before);
    QCOMPARE(niceness(), before);
}

void tst_ThreadPriority::isInherited()
{
    const bool isAlike = onAnotherThread([] {
        ThreadPriority::prefer();
        return niceness() == onAnotherThread(niceness) ? 1 : 0;
    });
    QVERIFY(isAlike);
}

void tst_ThreadPriority::leavesAThreadThatIsPreferredMore()
{
    const int wanted = mayBeNice(-15) ? -15 : niceness();
    const int after = onAnotherThread([wanted] {
        setpriority(PRIO_PROCESS, thisThread(), wanted);
        ThreadPriority::prefer();
        return niceness();
    });
    QCOMPARE(after, mayBeNice(-10) ? std::min(wanted, -10) : wanted);
}

QTEST_APPLESS_MAIN(tst_ThreadPriority)
#include "tst_ThreadPriority.moc"
