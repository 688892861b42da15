#include "model/Signals.h"

#include <QtTest>

#include <csignal>

class tst_Signals : public QObject {
    Q_OBJECT

private slots:
    void heldSignalComesAfterwards();
    void holdsMayNest();
    void watchTellsOfTheSignal();
    void watchKeepsTheFirstSignal();
    void ignoredSignalStaysIgnored();
};

namespace {

volatile std::sig_atomic_t seen = 0;

void remember(int number)
{
    seen = number;
}

/// Catches SIGINT for its lifetime.
class Catch {
public:
    Catch()
    {
        seen = 0;
        m_previous = std::signal(SIGINT, remember);
    }
    ~Catch() { std::signal(SIGINT, m_previous); }

private:
    void (*m_previous)(int);
};

} // namespace

void tst_Signals::heldSignalComesAfterwards()
{
    const Catch catching;
    {
        const SignalHold hold;
        std::raise(SIGINT);
        QCOMPARE(int{seen}, 0);
    }
    QCOMPARE(int{seen}, SIGINT);
}

void tst_Signals::holdsMayNest()
{
    const Catch catching;
    const SignalHold outer;
    {
        const SignalHold inner;
    }
    std::raise(SIGINT);
    QCOMPARE(int{seen}, 0);
}

void tst_Signals::watchTellsOfTheSignal()
{
    SignalWatch watch;
    QSignalSpy interrupted(&watch, &SignalWatch::interrupted);
    QCOMPARE(watch.received(), 0);
    std::raise(SIGTERM);
    QVERIFY(interrupted.wait());
    QCOMPARE(watch.received(), SIGTERM);
}

void tst_Signals::watchKeepsTheFirstSignal()
{
    SignalWatch watch;
    QSignalSpy interrupted(&watch, &SignalWatch::interrupted);
    std::raise(SIGINT);
    std::raise(SIGTERM);
    QVERIFY(interrupted.wait());
    QCOMPARE(watch.received(), SIGINT);
}

void tst_Signals::ignoredSignalStaysIgnored()
{
    auto *const previous = std::signal(SIGHUP, SIG_IGN);
    {
        const SignalWatch watch;
        std::raise(SIGHUP);
        QCoreApplication::processEvents();
        QCOMPARE(watch.received(), 0);
    }
    QVERIFY(std::signal(SIGHUP, previous) == SIG_IGN);
}

QTEST_GUILESS_MAIN(tst_Signals)
#include "tst_Signals.moc"
