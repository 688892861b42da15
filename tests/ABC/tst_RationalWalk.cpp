#include "ABC/RationalWalk.h"

#include "ABC/LengthText.h"
#include "AbcTestSupport.h"

#include <QtTest>

#include <cmath>
#include <ctime>

using RationalWalk::Fraction;

namespace {

QString text(Fraction f)
{
    return QStringLiteral("%1/%2").arg(f.num).arg(f.den);
}

/// The walk one step at a time, in floating point.
Fraction slowNearest(double value)
{
    const double whole = std::floor(value);
    Fraction low{0, 1};
    Fraction high{1, 1};
    const double part = value - whole;
    const auto isNear = [part](Fraction f) {
        return std::abs(static_cast<double>(f.num) / static_cast<double>(f.den) - part) < 1e-5;
    };
    Fraction found = isNear(low) ? low : high;
    while (!isNear(found)) {
        found = {low.num + high.num, low.den + high.den};
        if (static_cast<double>(found.num) > part * static_cast<double>(found.den))
            high = found;
        else
            low = found;
    }
    return {found.num + static_cast<quint64>(whole) * found.den, found.den};
}

} // namespace

class TestRationalWalk : public QObject {
    Q_OBJECT

private slots:
    void findsTheNearestFraction_data()
    {
        QTest::addColumn<quint32>("num");
        QTest::addColumn<QString>("expected");
        QTest::newRow("quarter") << 30240U << "1/4"_s;
        QTest::newRow("three eighths") << 45360U << "3/8"_s;
        QTest::newRow("third") << 40320U << "1/3"_s;
        QTest::newRow("whole") << 120960U << "1/1"_s;
        QTest::newRow("two wholes") << 241920U << "2/1"_s;
        QTest::newRow("nearly an eighth") << 15119U << "1/8"_s;
        QTest::newRow("nearly a whole") << 120959U << "1/1"_s;
        QTest::newRow("a tick") << 1U << "0/1"_s;
        QTest::newRow("two ticks") << 2U << "1/37687"_s;
        QTest::newRow("zero") << 0U << "0/1"_s;
        QTest::newRow("the largest number") << 4294967295U << "5610159/158"_s;
    }
    void findsTheNearestFraction()
    {
        QFETCH(quint32, num);
        QTEST(text(RationalWalk::nearest(num, 120960)), "expected");
    }
    void takesTheSameWayAsSingleSteps()
    {
        for (quint32 ticks = 1; ticks < 400000; ticks += 331)
            QCOMPARE(text(RationalWalk::nearest(ticks, 120960)),
                     text(slowNearest(ticks / 120960.0)));
    }
    void findsFractionsThatGiveTheNumberBack()
    {
        for (const quint32 den : {1U, 7U, 945U, 30240U, 120960U, 151200U, 4294967295U}) {
            for (quint32 i = 0; i < 2000; ++i) {
                const quint32 num = static_cast<quint32>(quint64{i} * 2654435761U % den);
                const auto found = RationalWalk::firstExact(num, den);
                if (den <= RationalWalk::MaxDenominator)
                    QVERIFY(found);
                if (!found)
                    continue;
                QVERIFY(found->den <= RationalWalk::MaxDenominator);
                QCOMPARE(found->num * den / found->den, quint64{num});
                const double error =
                    static_cast<double>(found->num) / static_cast<double>(found->den)
                    - static_cast<double>(num) / den;
                QVERIFY(error < 1e-5 && error > -1e-15);
            }
        }
    }
    void findsTheGreatestFractionBelow()
    {
        QCOMPARE(text(RationalWalk::greatestBelow(30239, 30240, 9)), "8/9"_s);
        QCOMPARE(text(RationalWalk::greatestBelow(30239, 30240, 99)), "98/99"_s);
        QCOMPARE(text(RationalWalk::greatestBelow(1, 3, 2)), "0/1"_s);
        QCOMPARE(text(RationalWalk::greatestBelow(1, 3, 9)), "1/3"_s);
        QCOMPARE(text(RationalWalk::greatestBelow(0, 3, 9)), "0/1"_s);
        QCOMPARE(text(RationalWalk::greatestBelow(314159, 1000000, 120960)), "28547/90868"_s);
        for (quint32 num = 0; num < 1000; num += 7) {
            Fraction best{0, 1};
            for (quint64 den = 1; den <= 60; ++den) {
                const Fraction f{num * den / 1000, den};
                if (f.num * best.den > best.num * f.den)
                    best = f;
            }
            QCOMPARE(text(RationalWalk::greatestBelow(num, 1000, 60)), text(best));
        }
    }
    void isFastForAnyInput()
    {
        const std::clock_t start = std::clock();
        quint64 sum = 0;
        for (quint32 i = 0; i < 20000; ++i) {
            sum += RationalWalk::nearest(i, 120960).den;
            sum += RationalWalk::firstExact(1 + i % 3, 4294967295U - i).value_or(Fraction()).den;
            sum += RationalWalk::greatestBelow(1, 2 + i, 120960).den;
        }
        QVERIFY(sum > 0);
        QVERIFY(std::clock() - start < 2 * CLOCKS_PER_SEC);
    }

    void writesTheLengthsThatFit()
    {
        QCOMPARE(lengthText(30240, 30240, 9).text, std::string());
        QCOMPARE(lengthText(45360, 30240, 9).text, std::string("3/"));
        QCOMPARE(lengthText(30239, 30240, 12).text, std::string("30239/30240"));
        QCOMPARE(lengthText(30239, 30240, 9).text, std::string("9998/9999"));
        QCOMPARE(lengthText(30239, 30240, 9).ticks, quint64{30236});
        QCOMPARE(lengthText(1, 4000000, 9).text, std::string("/4000000"));
        QCOMPARE(lengthText(~quint64{0}, 1, 9).text, std::string("999999999"));
        QCOMPARE(lengthText(~quint64{0}, 1, 18).text, std::string("4294967295"));
        QCOMPARE(lengthText(5, 30240, 1).text, std::string("0"));
    }
};

QTEST_APPLESS_MAIN(TestRationalWalk)
#include "tst_RationalWalk.moc"
