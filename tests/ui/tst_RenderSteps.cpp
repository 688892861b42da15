#include "ui/RenderSteps.h"

#include <QtTest>

#include <limits>

class tst_RenderSteps : public QObject {
    Q_OBJECT

private slots:
    void bothFitAProgressBar_data();
    void bothFitAProgressBar();
};

void tst_RenderSteps::bothFitAProgressBar_data()
{
    constexpr quint64 largest = std::numeric_limits<quint64>::max();
    QTest::addColumn<quint64>("progress");
    QTest::addColumn<quint64>("total");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("maximum");
    QTest::newRow("as they are") << quint64{3} << quint64{7} << 3 << 7;
    QTest::newRow("nothing") << quint64{0} << quint64{0} << 0 << 0;
    QTest::newRow("beyond the end") << quint64{9} << quint64{7} << 7 << 7;
    QTest::newRow("largest number")
        << quint64{2147483646} << quint64{2147483647} << 2147483646 << 2147483647;
    QTest::newRow("beyond it") << quint64{2147483648} << quint64{2147483648} << 1073741824
                               << 1073741824;
    QTest::newRow("largest of all") << largest / 2 << largest << 1073741823 << 2147483647;
    QTest::newRow("no step yet") << largest << quint64{100} << 100 << 100;
}

void tst_RenderSteps::bothFitAProgressBar()
{
    QFETCH(quint64, progress);
    QFETCH(quint64, total);
    const RenderSteps steps = RenderSteps::of(progress, total);
    QTEST(steps.value, "value");
    QTEST(steps.maximum, "maximum");
}

QTEST_APPLESS_MAIN(tst_RenderSteps)
#include "tst_RenderSteps.moc"
