#include "ui/pianoroll/PianoKeys.h"

#include <QtTest>

class tst_PianoKeys : public QObject {
    Q_OBJECT

private slots:
    void pitchesHaveNames_data();
    void pitchesHaveNames();
    void keysFillAnOctave_data();
    void keysFillAnOctave();
    void thereAreKeysFrom21To108();
    void pitchClassesGoOnBelowZero();
};

void tst_PianoKeys::pitchesHaveNames_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isBlack");
    QTest::newRow("lowest") << 21 << "A1" << false;
    QTest::newRow("A sharp") << 22 << "A#1" << true;
    QTest::newRow("C") << 60 << "C5" << false;
    QTest::newRow("C sharp") << 61 << "C#5" << true;
    QTest::newRow("D") << 62 << "D5" << false;
    QTest::newRow("D sharp") << 63 << "D#5" << true;
    QTest::newRow("E") << 64 << "E5" << false;
    QTest::newRow("F") << 65 << "F5" << false;
    QTest::newRow("F sharp") << 66 << "F#5" << true;
    QTest::newRow("G") << 67 << "G5" << false;
    QTest::newRow("G sharp") << 68 << "G#5" << true;
    QTest::newRow("A") << 69 << "A5" << false;
    QTest::newRow("B") << 71 << "B5" << false;
    QTest::newRow("highest") << 108 << "C9" << false;
}

void tst_PianoKeys::pitchesHaveNames()
{
    QFETCH(int, pitch);
    QTEST(PianoKeys::name(pitch), "name");
    QTEST(PianoKeys::isBlack(pitch), "isBlack");
}

void tst_PianoKeys::keysFillAnOctave_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<QRectF>("outline");
    QTest::newRow("C") << 60 << QRectF(0, 60, 1, 5.0 / 3);
    QTest::newRow("C sharp") << 61 << QRectF(0, 61, 0.6, 1);
    QTest::newRow("D") << 62 << QRectF(0, 60 + 5.0 / 3, 1, 5.0 / 3);
    QTest::newRow("D sharp") << 63 << QRectF(0, 63, 0.6, 1);
    QTest::newRow("E") << 64 << QRectF(0, 60 + 10.0 / 3, 1, 5.0 / 3);
    QTest::newRow("F") << 65 << QRectF(0, 65, 1, 1.75);
    QTest::newRow("F sharp") << 66 << QRectF(0, 66, 0.6, 1);
    QTest::newRow("G") << 67 << QRectF(0, 66.75, 1, 1.75);
    QTest::newRow("G sharp") << 68 << QRectF(0, 68, 0.6, 1);
    QTest::newRow("A") << 69 << QRectF(0, 68.5, 1, 1.75);
    QTest::newRow("A sharp") << 70 << QRectF(0, 70, 0.6, 1);
    QTest::newRow("B") << 71 << QRectF(0, 70.25, 1, 1.75);
    QTest::newRow("lowest") << 21 << QRectF(0, 20.5, 1, 1.75);
    QTest::newRow("highest") << 108 << QRectF(0, 108, 1, 5.0 / 3);
}

void tst_PianoKeys::keysFillAnOctave()
{
    QFETCH(int, pitch);
    QTEST(PianoKeys::outline(pitch), "outline");
}

void tst_PianoKeys::thereAreKeysFrom21To108()
{
    QVERIFY(!PianoKeys::isKey(20));
    QVERIFY(PianoKeys::isKey(21));
    QVERIFY(PianoKeys::isKey(108));
    QVERIFY(!PianoKeys::isKey(109));
}

void tst_PianoKeys::pitchClassesGoOnBelowZero()
{
    QCOMPARE(PianoKeys::pitchClass(-1), 11);
    QCOMPARE(PianoKeys::pitchClass(-12), 0);
    QVERIFY(PianoKeys::isBlack(-2));
    QVERIFY(!PianoKeys::isBlack(-1));
}

QTEST_APPLESS_MAIN(tst_PianoKeys)
#include "tst_PianoKeys.moc"
