#include "ABC/KeyTable.h"

#include "AbcTestSupport.h"

#include <QtTest>

class TestKeyTable : public QObject {
    Q_OBJECT

private slots:
    void findsEveryTonicInItsRow()
    {
        for (quint32 row = 0; row < KeyTable::RowCount; ++row) {
            for (quint32 mode = 0; mode < KeyTable::ModeCount; ++mode) {
                QCOMPARE(KeyTable::row(KeyTable::tonic(row, mode), mode).value_or(99), row);
                QCOMPARE(
                    KeyTable::row(KeyTable::displayTonic(row, mode).toUpper(), mode).value_or(99),
                    row);
            }
        }
        QVERIFY(!KeyTable::row("H"_s, 0));
        QVERIFY(!KeyTable::row("Bb"_s, 0));
        QVERIFY(!KeyTable::row("FB"_s, 0));
        QVERIFY(!KeyTable::row(""_s, 0));
    }

    void holdsTheTonics_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("expected");
        QTest::newRow("0") << 0 << "C# A# G# D# E# F# B#"_s;
        QTest::newRow("1") << 1 << "F# D# C# G# A# B E#"_s;
        QTest::newRow("2") << 2 << "B G# F# C# D# E A#"_s;
        QTest::newRow("3") << 3 << "E C# B F# G# A D#"_s;
        QTest::newRow("4") << 4 << "A F# E B C# D G#"_s;
        QTest::newRow("5") << 5 << "D B A E F# G C#"_s;
        QTest::newRow("6") << 6 << "G E D A B C F#"_s;
        QTest::newRow("7") << 7 << "C A G D E F B"_s;
        QTest::newRow("8") << 8 << "F D C G A BB E"_s;
        QTest::newRow("9") << 9 << "BB G F C D EB A"_s;
        QTest::newRow("10") << 10 << "EB C BB F G AB D"_s;
        QTest::newRow("11") << 11 << "AB F EB BB C DB G"_s;
        QTest::newRow("12") << 12 << "DB BB AB EB F GB C"_s;
        QTest::newRow("13") << 13 << "GB EB DB AB BB CB F"_s;
        QTest::newRow("14") << 14 << "CB AB GB DB EB FB BB"_s;
    }
    void holdsTheTonics()
    {
        QFETCH(int, row);
        QStringList tonics;
        for (quint32 mode = 0; mode < KeyTable::ModeCount; ++mode)
            tonics << KeyTable::tonic(static_cast<quint32>(row), mode);
        QTEST(tonics.join(QLatin1Char(' ')), "expected");
    }

    void holdsTheAccidentals_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("expected");
        QTest::newRow("0") << 0 << "1 1 1 1 1 1 1"_s;
        QTest::newRow("1") << 1 << "1 1 1 1 1 1 0"_s;
        QTest::newRow("2") << 2 << "1 1 0 1 1 1 0"_s;
        QTest::newRow("3") << 3 << "1 1 0 1 1 0 0"_s;
        QTest::newRow("4") << 4 << "1 0 0 1 1 0 0"_s;
        QTest::newRow("5") << 5 << "1 0 0 1 0 0 0"_s;
        QTest::newRow("6") << 6 << "0 0 0 1 0 0 0"_s;
        QTest::newRow("7") << 7 << "0 0 0 0 0 0 0"_s;
        QTest::newRow("8") << 8 << "0 0 0 0 0 0 -1"_s;
        QTest::newRow("9 flattens A instead of B") << 9 << "0 0 -1 0 0 -1 0"_s;
        QTest::newRow("10") << 10 << "0 0 -1 0 0 -1 -1"_s;
        QTest::newRow("11") << 11 << "0 -1 -1 0 0 -1 -1"_s;
        QTest::newRow("12") << 12 << "0 -1 -1 0 -1 -1 -1"_s;
        QTest::newRow("13") << 13 << "-1 -1 -1 0 -1 -1 -1"_s;
        QTest::newRow("14") << 14 << "-1 -1 -1 -1 -1 -1 -1"_s;
    }
    void holdsTheAccidentals()
    {
        QFETCH(int, row);
        QStringList texts;
        for (int letter = 0; letter < 7; ++letter)
            texts << QString::number(KeyTable::accidental(static_cast<quint32>(row), letter));
        QTEST(texts.join(QLatin1Char(' ')), "expected");
    }

    void holdsTheSpellings_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("expected");
        QTest::newRow("0") << 0 << "1 1 2 1 2 1 1 2 1 2 1 0"_s;
        QTest::newRow("1") << 1 << "1 1 2 1 0 1 1 2 1 2 1 0"_s;
        QTest::newRow("2") << 2 << "1 1 2 1 0 1 1 2 1 0 1 0"_s;
        QTest::newRow("3") << 3 << "1 1 0 1 0 1 1 2 1 0 1 0"_s;
        QTest::newRow("4") << 4 << "1 1 0 1 0 1 1 0 1 0 1 0"_s;
        QTest::newRow("5") << 5 << "0 1 0 1 0 1 1 0 1 0 1 0"_s;
        QTest::newRow("6") << 6 << "0 1 0 1 0 0 1 0 1 0 1 0"_s;
        QTest::newRow("7") << 7 << "0 1 0 1 0 0 1 0 1 0 -1 0"_s;
        QTest::newRow("8") << 8 << "0 1 0 -1 0 0 1 0 1 0 -1 0"_s;
        QTest::newRow("9") << 9 << "0 1 0 -1 0 0 1 0 -1 0 -1 0"_s;
        QTest::newRow("10") << 10 << "0 -1 0 -1 0 0 1 0 -1 0 -1 0"_s;
        QTest::newRow("11") << 11 << "0 -1 0 -1 0 0 -1 0 -1 0 -1 0"_s;
        QTest::newRow("12") << 12 << "0 -1 0 -1 0 0 -1 0 -1 0 -1 -1"_s;
        QTest::newRow("13") << 13 << "0 -1 0 -1 -1 0 -1 0 -1 0 -1 -1"_s;
        QTest::newRow("14") << 14 << "0 -1 0 -1 -1 0 -1 0 -1 -2 -1 -1"_s;
    }
    void holdsTheSpellings()
    {
        QFETCH(int, row);
        QStringList texts;
        for (quint32 pitchClass = 0; pitchClass < 12; ++pitchClass)
            texts << QString::number(
                KeyTable::spelling(static_cast<quint32>(row), pitchClass).accidental);
        QTEST(texts.join(QLatin1Char(' ')), "expected");
    }

    void spellsEveryPitchClassAsItSounds()
    {
        for (quint32 row = 0; row < KeyTable::RowCount; ++row) {
            for (quint32 pitchClass = 0; pitchClass < 12; ++pitchClass) {
                const KeyTable::Spelling spelling = KeyTable::spelling(row, pitchClass);
                QVERIFY(spelling.letter < 7);
                QCOMPARE(KeyTable::semitone(spelling.letter) + spelling.accidental
                             + 12 * spelling.octave,
                         static_cast<int>(pitchClass));
            }
        }
    }

    void namesKeysForDisplay()
    {
        QCOMPARE(KeyTable::displayTonic(9, KeyTable::Major), "Bb"_s);
        QCOMPARE(KeyTable::displayTonic(2, KeyTable::Major), "B"_s);
        QCOMPARE(KeyTable::displayTonic(14, KeyTable::Locrian), "Bb"_s);
        QCOMPARE(KeyTable::displayName(8, KeyTable::Minor), "Dm"_s);
        QCOMPARE(KeyTable::displayName(14, KeyTable::Major), "Cb"_s);
        QCOMPARE(KeyTable::displayName(0, KeyTable::Dorian), "D#dor"_s);
        QCOMPARE(KeyTable::displayName(7, KeyTable::Mixolydian), "Gmix"_s);
        QCOMPARE(KeyTable::displayName(7, KeyTable::Phrygian), "Ephr"_s);
        QCOMPARE(KeyTable::displayName(7, KeyTable::Lydian), "Flyd"_s);
        QCOMPARE(KeyTable::displayName(7, KeyTable::Locrian), "Bloc"_s);
    }
    void knowsTheModes()
    {
        QCOMPARE(KeyTable::mode(""_s), 0U);
        QCOMPARE(KeyTable::mode("MAJ"_s), 0U);
        QCOMPARE(KeyTable::mode("MIN"_s), 1U);
        QCOMPARE(KeyTable::mode("M"_s), 1U);
        QCOMPARE(KeyTable::mode("MIX"_s), 2U);
        QCOMPARE(KeyTable::mode("DOR"_s), 3U);
        QCOMPARE(KeyTable::mode("PHR"_s), 4U);
        QCOMPARE(KeyTable::mode("LYD"_s), 5U);
        QCOMPARE(KeyTable::mode("LOC"_s), 6U);
        QCOMPARE(KeyTable::mode("ION"_s), 0U);
        QCOMPARE(KeyTable::mode("AEO"_s), 0U);
    }
    void takesAbsurdKeysForCMajor()
    {
        QCOMPARE(KeyTable::displayName(15, 7), "C"_s);
        QCOMPARE(KeyTable::accidental(4294967295U, 3), 0);
        QCOMPARE(KeyTable::spelling(4294967295U, 10).accidental, -1);
        QCOMPARE(KeyTable::row("C"_s, 99).value_or(99), 7U);
    }
};

QTEST_APPLESS_MAIN(TestKeyTable)
#include "tst_KeyTable.moc"
