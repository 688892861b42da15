#include "MIDI/KeyChoice.h"

#include "TrackSupport.h"

#include <QtTest>

namespace {

/// "mode row", with "maj" behind it for a major key that was spelled out; "-" for no key.
QString found(const QString &text)
{
    const std::optional<KeyChoice> key = KeyChoice::fromText(text);
    if (!key)
        return "-"_s;
    return QStringLiteral("%1 %2%3").arg(key->mode).arg(key->row).arg(
        key->hasMajorQualifier ? " maj"_s : QString());
}

const QStringList Suffixes{""_s, "m"_s, "mix"_s, "dor"_s, "phr"_s, "lyd"_s, "loc"_s};

} // namespace

class TestKeyChoice : public QObject {
    Q_OBJECT

private slots:
    void isCMajorAtFirst()
    {
        QCOMPARE(KeyChoice().text(), "C"_s);
        QVERIFY(KeyChoice().isSupportedByGame());
    }

    void namesEveryKey_data()
    {
        QTest::addColumn<QString>("tonics"); // major minor mix dor phr lyd loc
        QTest::newRow("0") << "C# A# G# D# E# F# B#"_s;
        QTest::newRow("1") << "F# D# C# G# A# B E#"_s;
        QTest::newRow("2") << "B G# F# C# D# E A#"_s;
        QTest::newRow("3") << "E C# B F# G# A D#"_s;
        QTest::newRow("4") << "A F# E B C# D G#"_s;
        QTest::newRow("5") << "D B A E F# G C#"_s;
        QTest::newRow("6") << "G E D A B C F#"_s;
        QTest::newRow("7") << "C A G D E F B"_s;
        QTest::newRow("8") << "F D C G A Bb E"_s;
        QTest::newRow("9") << "Bb G F C D Eb A"_s;
        QTest::newRow("10") << "Eb C Bb F G Ab D"_s;
        QTest::newRow("11") << "Ab F Eb Bb C Db G"_s;
        QTest::newRow("12") << "Db Bb Ab Eb F Gb C"_s;
        QTest::newRow("13") << "Gb Eb Db Ab Bb Cb F"_s;
        QTest::newRow("14") << "Cb Ab Gb Db Eb Fb Bb"_s;
    }
    void namesEveryKey()
    {
        QFETCH(QString, tonics);
        const auto row = QString::fromLatin1(QTest::currentDataTag()).toUInt();
        const QStringList list = tonics.split(QLatin1Char(' '));
        QCOMPARE(list.size(), 7);
        for (int mode = 0; mode < 7; ++mode) {
            const QString name = list.at(mode) + Suffixes.at(mode);
            const KeyChoice key{static_cast<quint32>(mode), row};
            QCOMPARE(key.text(), name);
            const QString expected = QStringLiteral("%1 %2").arg(mode).arg(row);
            QCOMPARE(found(name), expected);
            QCOMPARE(found(name.toUpper()), expected);
            QCOMPARE(found(name.toLower()), expected);
            QCOMPARE(KeyChoice::fromText(name)->text(), name);
        }
        const QString spelledOut = list.first() + "maj"_s;
        QCOMPARE((KeyChoice{0, row, true}.text()), spelledOut);
        QCOMPARE(KeyChoice::fromText(spelledOut)->text(), spelledOut);
    }
    void qualifiesMajorOnly()
    {
        QCOMPARE((KeyChoice{0, 10, true}.text()), "Ebmaj"_s);
        QCOMPARE((KeyChoice{0, 10, false}.text()), "Eb"_s);
        QCOMPARE((KeyChoice{1, 10, true}.text()), "Cm"_s);
        QCOMPARE((KeyChoice{2, 6, true}.text()), "Dmix"_s);
    }
    void knowsWhatTheGameSupports()
    {
        for (quint32 mode = 0; mode < 7; ++mode)
            QCOMPARE((KeyChoice{mode, 7}.isSupportedByGame()), mode < 2);
    }

    void readsAKey_data()
    {
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *text, const char *expected) {
            QTest::newRow(text) << QString::fromLatin1(expected);
        };
        row("Bb", "0 9");
        row("D dor", "3 7");
        row("Gb", "0 13");
        row("F#", "0 1");
        row("F#m", "1 4");
        row("c#", "0 0");
        row("Bbm", "1 12");
        row("bb", "0 9");
        row("b", "0 2");
        row("BBM", "1 12");
        row("A maj", "0 4 maj");
        row("Cmaj", "0 7 maj");
        row("C major", "0 7 maj");
        row("Cion", "0 7 maj");
        row("C Ionian", "0 7 maj");
        row("A aeo", "1 7");
        row("F# AEOLIAN", "1 4");
        row("C aeo", "1 10");
        row("Amin", "1 7");
        row("A minor", "1 7");
        row("A m", "1 7");
        row("A M", "1 7");
        row("Am7", "1 7");
        row("Gmix", "2 7");
        row("E \t phr", "4 7");
        row("FLYDIAN", "5 7");
        row("b loc", "6 7");
        row("Gb exp", "0 13");
        row("Gb exp _b", "0 13");
        row("  D", "0 5");
        row("7 G", "0 6");
        row("C clef=bass", "0 7");
        row("clef=bass", "0 7"); // the "c", followed by no mode
        row("treble", "-");
        row("Cb", "0 14");
        row("C##", "0 0");
        row("C=", "0 7");
        row("C dur", "0 7");
        row("G#", "-");
        row("Fbm", "-");
        row("Fblyd", "5 14");
        row("B#loc", "6 0");
        row("B#", "-");
        row("H", "-");
        row("HP", "-");
        row("Hp", "-");
        row("none", "-"); // "n" is a letter, and no tonic
        row("exp", "0 3");
        row("123 ^_=", "-");
        row(" ", "-");
    }
    void readsAKey() { QTEST(found(QString::fromLatin1(QTest::currentDataTag())), "expected"); }
    void findsNoKeyInAnEmptyText()
    {
        QCOMPARE(found(QString()), "-"_s);
        QCOMPARE(found(""_s), "-"_s);
        QCOMPARE(found("♯♭é"_s), "-"_s);
    }
};

QTEST_APPLESS_MAIN(TestKeyChoice)
#include "tst_KeyChoice.moc"
