#include "Player/MessageThrottle.h"

#include <QtTest>

class tst_MessageThrottle : public QObject {
    Q_OBJECT

private slots:
    void admitsAMessageOnceASecond();
    void countsFromTheLastAdmission();
    void admitsOtherMessagesMeanwhile();
    void boundsTheDifferentMessages();
};

void tst_MessageThrottle::admitsAMessageOnceASecond()
{
    MessageThrottle throttle;
    QVERIFY(throttle.admits(QStringLiteral("a"), 0));
    QVERIFY(!throttle.admits(QStringLiteral("a"), 0));
    QVERIFY(!throttle.admits(QStringLiteral("a"), 999));
    QVERIFY(throttle.admits(QStringLiteral("a"), 1000));
}

void tst_MessageThrottle::countsFromTheLastAdmission()
{
    MessageThrottle throttle;
    QVERIFY(throttle.admits(QStringLiteral("a"), 500));
    QVERIFY(!throttle.admits(QStringLiteral("a"), 1400));
    QVERIFY(throttle.admits(QStringLiteral("a"), 1500));
    QVERIFY(!throttle.admits(QStringLiteral("a"), 2499));
}

void tst_MessageThrottle::admitsOtherMessagesMeanwhile()
{
    MessageThrottle throttle;
    QVERIFY(throttle.admits(QStringLiteral("a"), 0));
    QVERIFY(throttle.admits(QStringLiteral("b"), 1));
    QVERIFY(throttle.admits(QString(), 2));
    QVERIFY(!throttle.admits(QString(), 3));
}

void tst_MessageThrottle::boundsTheDifferentMessages()
{
    MessageThrottle throttle;
    int admitted = 0;
    for (int i = 0; i < 1000; ++i)
        admitted += throttle.admits(QString::number(i), i < 100 ? 0 : 500) ? 1 : 0;
    QCOMPARE(admitted, 256);
    QVERIFY(!throttle.admits(QStringLiteral("0"), 999));
    QVERIFY(!throttle.admits(QStringLiteral("new"), 999));
    QVERIFY(throttle.admits(QStringLiteral("new"), 1000)); // the first hundred are old by now
    QVERIFY(!throttle.admits(QStringLiteral("100"), 1000));
}

QTEST_APPLESS_MAIN(tst_MessageThrottle)
#include "tst_MessageThrottle.moc"
