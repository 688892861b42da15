#include "MIDI/RealignDials.h"
#include "MIDI/Realignment.h"

#include "TrackSupport.h"

#include <QtTest>

using namespace RealignDials;
using namespace TrackSupport;

class TestRealignDials : public QObject {
    Q_OBJECT

private slots:
    void areFiveInTheOrderOfTheGrids()
    {
        QCOMPARE(Count, 5);
        const Settings::Setting settings[] = {
            Settings::RealignRegular, Settings::RealignTriplets, Settings::RealignQuintuplets,
            Settings::RealignSeptuplets, Settings::RealignNonuplets};
        const int maxima[] = {7, 6, 5, 5, 4};
        const int bases[] = {1, 3, 5, 7, 9};
        for (size_t i = 0; i < Count; ++i) {
            QCOMPARE(dials()[i].setting, settings[i]);
            QCOMPARE(dials()[i].maximum, maxima[i]);
            QCOMPARE(dials()[i].base, bases[i]);
        }
    }

    void meanAndShow_data()
    {
        QTest::addColumn<int>("dial");
        QTest::addColumn<QVector<int>>("divisions");
        QTest::addColumn<QString>("labels");
        QTest::newRow("Regular") << 0 << QVector<int>{1, 2, 4, 8, 16, 32, 64, 128}
                                 << "Whole 2nds 4ths 8ths 16ths 32nds 64ths 128ths"_s;
        QTest::newRow("Triplets") << 1 << QVector<int>{0, 3, 6, 12, 24, 48, 96}
                                  << "None 3rds 6ths 12ths 24ths 48ths 96ths"_s;
        QTest::newRow("Quintuplets")
            << 2 << QVector<int>{0, 5, 10, 20, 40, 80} << "None 5ths 10ths 20ths 40ths 80ths"_s;
        QTest::newRow("Septuplets")
            << 3 << QVector<int>{0, 7, 14, 28, 56, 112} << "None 7ths 14ths 28ths 56ths 112ths"_s;
        QTest::newRow("Nonuplets")
            << 4 << QVector<int>{0, 9, 18, 36, 72} << "None 9ths 18ths 36ths 72nds"_s;
    }
    void meanAndShow()
    {
        QFETCH(int, dial);
        QFETCH(QVector<int>, divisions);
        QCOMPARE(divisions.size(), dials()[static_cast<size_t>(dial)].maximum + 1);
        QStringList labels;
        for (int position = 0; position < divisions.size(); ++position) {
            QCOMPARE(division(dial, position), divisions.at(position));
            labels << label(dial, position);
        }
        QTEST(labels.join(QLatin1Char(' ')), "labels");
    }
    void divideAWholeNoteExactly()
    {
        for (int dial = 0; dial < Count; ++dial) {
            for (int position = 0; position < 8; ++position) {
                if (division(dial, position) != 0)
                    QCOMPARE(120960 % division(dial, position), 0);
            }
        }
    }
    void takeAPositionOutOfRangeForTheNearest()
    {
        QCOMPARE(division(0, 8), 128);
        QCOMPARE(division(0, -1), 1);
        QCOMPARE(division(4, 2147483647), 72);
        QCOMPARE(division(4, -2147483647 - 1), 0);
        QCOMPARE(label(0, 99), "128ths"_s);
        QCOMPARE(label(1, -1), "None"_s);
        QCOMPARE(RealignDials::divisions({99, -1, 99, -1, 99}), QVector<int>({128, 80, 72}));
    }

    void listTheFinestGridsAtTheirMaxima()
    {
        QCOMPARE(divisions({7, 6, 5, 5, 4}), QVector<int>({128, 96, 80, 112, 72}));
        const Track track = sortedTrackOf(
            {TrackEvent::makeNote(60, 1386, 2520), TrackEvent::makeNote(62, 5000, 777)});
        QVERIFY(realignTrack(track, divisions({7, 6, 5, 5, 4})) == quickRealignTrack(track));
    }
    void leaveTupletsAtZeroOut()
    {
        QCOMPARE(divisions({0, 0, 0, 0, 0}), QVector<int>({1}));
        QCOMPARE(divisions({4, 0, 0, 0, 0}), QVector<int>({16}));
        QCOMPARE(divisions({3, 2, 0, 1, 0}), QVector<int>({8, 6, 7}));
    }

    void namesFractions_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("name");
        QTest::newRow("1") << 1 << "1sts"_s;
        QTest::newRow("2") << 2 << "2nds"_s;
        QTest::newRow("3") << 3 << "3rds"_s;
        QTest::newRow("4") << 4 << "4ths"_s;
        QTest::newRow("10") << 10 << "10ths"_s;
        QTest::newRow("11") << 11 << "11ths"_s;
        QTest::newRow("12") << 12 << "12ths"_s;
        QTest::newRow("13") << 13 << "13ths"_s;
        QTest::newRow("21") << 21 << "21sts"_s;
        QTest::newRow("72") << 72 << "72nds"_s;
        QTest::newRow("101") << 101 << "101sts"_s;
        QTest::newRow("111") << 111 << "111ths"_s;
        QTest::newRow("112") << 112 << "112ths"_s;
        QTest::newRow("113") << 113 << "113ths"_s;
        QTest::newRow("123") << 123 << "123rds"_s;
        QTest::newRow("200") << 200 << "200ths"_s;
    }
    void namesFractions()
    {
        QFETCH(int, number);
        QTEST(fractionName(number), "name");
    }
    void namesAllFractionsUpToTwoHundred()
    {
        const QVector<int> sts{1,   21,  31,  41,  51,  61,  71,  81,  91,
                               101, 121, 131, 141, 151, 161, 171, 181, 191};
        for (int number = 1; number <= 200; ++number) {
            QString suffix = "ths"_s;
            if (sts.contains(number))
                suffix = "sts"_s;
            else if (sts.contains(number - 1))
                suffix = "nds"_s;
            else if (sts.contains(number - 2))
                suffix = "rds"_s;
            QCOMPARE(fractionName(number), QString::number(number) + suffix);
        }
    }
};

QTEST_APPLESS_MAIN(TestRealignDials)
#include "tst_RealignDials.moc"
