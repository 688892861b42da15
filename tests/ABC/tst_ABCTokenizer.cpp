#include "ABC/ABCTokenizer.h"

#include "AbcTestSupport.h"

#include <QtTest>

using T = ABCTokenizer;

namespace {

QString nameOf(T::Kind kind)
{
    static const char *const names[] = {"Unknown",
                                        "EndOfInput",
                                        "HeaderField",
                                        "InlineField",
                                        "Instruction",
                                        "Whitespace",
                                        "Note",
                                        "Rest",
                                        "Annotation",
                                        "VariantEnding",
                                        "Bar",
                                        "ChordSymbol",
                                        "Tuplet",
                                        "SlurStart",
                                        "SlurEnd",
                                        "ChordStart",
                                        "ChordEnd",
                                        "GraceStart",
                                        "GraceEnd",
                                        "BrokenRhythm",
                                        "BangDecoration",
                                        "PlusDecoration",
                                        "LineContinuation",
                                        "LineBreakSymbol",
                                        "VoiceOverlay",
                                        "BackQuote",
                                        "Comment",
                                        "Symbol",
                                        "Tie"};
    return QLatin1String(names[kind]);
}

/// "Note@0:0 Bar@0:3"_s: the kinds with line and column, up to the end.
QString positions(const QString &text)
{
    ABCTokenizer tokens(text);
    QStringList list;
    while (tokens.next() != T::EndOfInput)
        list << QStringLiteral("%1@%2:%3")
                    .arg(nameOf(tokens.kind()))
                    .arg(tokens.tokenLine())
                    .arg(tokens.tokenColumn());
    return list.join(QLatin1Char(' '));
}

QString kinds(const QString &text)
{
    ABCTokenizer tokens(text);
    QStringList list;
    while (tokens.next() != T::EndOfInput)
        list << nameOf(tokens.kind());
    return list.join(QLatin1Char(' '));
}

ABCTokenizer first(const QString &text)
{
    ABCTokenizer tokens(text);
    tokens.next();
    return tokens;
}

QString repeated(const QString &text, int count)
{
    return text.repeated(count);
}

} // namespace

class TestABCTokenizer : public QObject {
    Q_OBJECT

private slots:
    void readsKinds_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const QString &name, const QString &text, const QString &expected) {
            QTest::newRow(qPrintable(name)) << text << expected;
        };
        row("header field"_s, "X:1"_s, "HeaderField"_s);
        row("a letter and colon behind the line's start is no field"_s, " X:1"_s,
            "Whitespace Rest Bar"_s);
        row("lower-case field"_s, "w:la la"_s, "HeaderField"_s);
        row("a plus sign starts no header field"_s, "+:x"_s, "Unknown Bar Rest"_s);
        row("inline field"_s, "[K:G]"_s, "InlineField"_s);
        row("inline field of 20 characters"_s, "[K:"_s + repeated("x"_s, 16) + "]"_s,
            "InlineField"_s);
        row("inline field of 21 characters"_s, "[K:"_s + repeated("x"_s, 17) + "]"_s,
            "ChordStart Symbol Bar "_s + repeated("Rest "_s, 17) + "ChordEnd"_s);
        row("variant ending"_s, "[1"_s, "VariantEnding"_s);
        row("variant ending with a list"_s, "[1,3-5"_s, "VariantEnding"_s);
        row("bar with bracket"_s, "[|"_s, "Bar"_s);
        row("chord"_s, "[CEG]"_s, "ChordStart Note Note Note ChordEnd"_s);
        row("bars"_s, "|"_s, "Bar"_s);
        row("double bar is two tokens"_s, "||"_s, "Bar Bar"_s);
        row("end bar"_s, "|]"_s, "Bar"_s);
        row("repeats"_s, "|: :| :: |1 :|2"_s,
            "Bar Whitespace Bar Whitespace Bar Whitespace Bar Whitespace Bar"_s);
        row("invisible bar"_s, "[]"_s, "Bar"_s);
        row("invisible bar with a line"_s, "[|]"_s, "Bar"_s);
        row("dotted bar"_s, ".|"_s, "Bar"_s);
        row("instruction"_s, "%%MIDI program 1"_s, "Instruction"_s);
        row("an instruction behind the start is a comment"_s, " %%MIDI"_s, "Whitespace Comment"_s);
        row("an instruction that is none"_s, "%%1"_s, "Comment"_s);
        row("comment"_s, "% words"_s, "Comment"_s);
        row("empty comment"_s, "%"_s, "Comment"_s);
        row("note and comment"_s, "A%b"_s, "Note Comment"_s);
        row("rests"_s, "zxZX"_s, "Rest Rest Rest Rest"_s);
        row("symbols"_s, "HZhyu~"_s, "Symbol Rest Symbol Symbol Symbol Symbol"_s);
        row("letters"_s, "AGag"_s, "Note Note Note Note"_s);
        row("letters beyond ASCII"_s, QString::fromUtf8("é"), "Unknown"_s);
        row("a field letter beyond ASCII"_s, QString::fromUtf8("é:1"), "Unknown Bar"_s);
        row("annotation"_s, "\"^up\""_s, "Annotation"_s);
        row("chord symbol"_s, "\"Am\""_s, "ChordSymbol"_s);
        row("quoted text of 50 characters"_s, "\""_s + repeated("C"_s, 48) + "\""_s,
            "ChordSymbol"_s);
        row("quoted text of 51 characters"_s, "\""_s + repeated("C"_s, 49) + "\""_s,
            "Unknown "_s + repeated("Note "_s, 49) + "Unknown"_s);
        row("annotation of 50 characters"_s, "\"^"_s + repeated("C"_s, 47) + "\""_s,
            "Annotation"_s);
        row("unclosed quotation"_s, "\"A"_s, "Unknown Note"_s);
        row("tuplet and slur"_s, "(3abc(a)"_s, "Tuplet Note Note Note SlurStart Note SlurEnd"_s);
        row("full tuplet"_s, "(3:2:4"_s, "Tuplet"_s);
        row("tuplet with gaps"_s, "(3::2"_s, "Tuplet"_s);
        row("dotted slurs"_s, ".(A.)"_s, "SlurStart Note SlurEnd"_s);
        row("a slur before another digit"_s, QString::fromUtf8("(٣"), "SlurStart Unknown"_s);
        row("tie of its own"_s, "-"_s, "Tie"_s);
        row("dotted tie of its own"_s, ".-"_s, "Tie"_s);
        row("staccato"_s, ".A"_s, "Note"_s);
        row("lone dot"_s, ". "_s, "Unknown Whitespace"_s);
        row("grace notes"_s, "{/ab}"_s, "GraceStart Note Note GraceEnd"_s);
        row("broken rhythm"_s, "A>>B<C"_s, "Note BrokenRhythm Note BrokenRhythm Note"_s);
        row("mixed broken rhythm"_s, "<>"_s, "BrokenRhythm BrokenRhythm"_s);
        row("bang decoration"_s, "!trill!"_s, "BangDecoration"_s);
        row("empty bang decoration"_s, "!!"_s, "BangDecoration"_s);
        row("bang decoration of 50 characters"_s, "!"_s + repeated("x"_s, 48) + "!"_s,
            "BangDecoration"_s);
        row("lone bang"_s, "!A"_s, "Unknown Note"_s);
        row("plus decoration"_s, "+trill+"_s, "PlusDecoration"_s);
        row("lone plus"_s, "+"_s, "Unknown"_s);
        row("continuation"_s, "A\\"_s, "Note LineContinuation"_s);
        row("overlay"_s, "&"_s, "VoiceOverlay"_s);
        row("back quote"_s, "A`B"_s, "Note BackQuote Note"_s);
        row("accidental without a note"_s, "^1"_s, "Unknown Unknown"_s);
        row("punctuation without a meaning"_s, "*/,;?@#'"_s,
            "Unknown Unknown Unknown Unknown Unknown Unknown Unknown Unknown"_s);
        row("chord end before a bar"_s, "]|"_s, "ChordEnd Bar"_s);
        row("chord end with tie"_s, "]2-"_s, "ChordEnd"_s);
        row("NUL"_s, QString(QChar(0)), "Unknown"_s);
        row("a note of 20 characters"_s, "^^c"_s + repeated("'"_s, 17), "Note"_s);
        row("a note of 21 characters"_s, "^^c"_s + repeated("'"_s, 18), "Note Unknown"_s);
        row("a rest of 10 characters"_s, "z123456789"_s, "Rest"_s);
        row("a rest of 11 characters"_s, "z1234567890"_s, "Rest Unknown"_s);
    }
    void readsKinds()
    {
        QFETCH(QString, text);
        QTEST(kinds(text), "expected");
    }

    void splitsLinesAtEveryLineEnd()
    {
        QCOMPARE(positions("A\nB\rC\r\nD"_s), "Note@0:0 Note@1:0 Note@2:0 Note@3:0"_s);
    }
    void readsAnEmptyLineAsWhiteSpace()
    {
        QCOMPARE(positions(""_s), "Whitespace@0:0"_s);
        QCOMPARE(positions("A\n\nB"_s), "Note@0:0 Whitespace@1:0 Note@2:0"_s);
        QCOMPARE(positions("\r\r"_s), "Whitespace@0:0 Whitespace@1:0 Whitespace@2:0"_s);
        QCOMPARE(positions("\n\r"_s), "Whitespace@0:0 Whitespace@1:0 Whitespace@2:0"_s);
        QCOMPARE(positions("A\n"_s), "Note@0:0 Whitespace@1:0"_s);
    }
    void answersEndOfInputForEver()
    {
        ABCTokenizer tokens("A"_s);
        QCOMPARE(tokens.next(), T::Note);
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(tokens.next(), T::EndOfInput);
            QCOMPARE(tokens.tokenLine(), 1);
            QCOMPARE(tokens.tokenColumn(), 0);
            QVERIFY(!tokens.tie());
            QCOMPARE(tokens.length().den, 0U);
        }
    }
    void countsColumnsInCharacters()
    {
        QCOMPARE(positions("C2 (3DEF|"_s),
                 "Note@0:0 Whitespace@0:2 Tuplet@0:3 Note@0:5 Note@0:6 Note@0:7 Bar@0:8"_s);
    }

    void readsFields()
    {
        const ABCTokenizer header = first("X:1"_s);
        QCOMPARE(header.field(), "X"_s);
        QCOMPARE(header.value(), "1"_s);
        const ABCTokenizer inlineField = first("[K: G ]"_s);
        QCOMPARE(inlineField.field(), "K"_s);
        QCOMPARE(inlineField.value(), "G "_s);
        QCOMPARE(first("T:  a: b "_s).value(), "a: b "_s);
    }
    void readsTheFirstLetterOfAnInstructionAsItsName()
    {
        const ABCTokenizer tokens = first("%%MIDI program 1"_s);
        QCOMPARE(tokens.instruction(), "M"_s);
        QCOMPARE(tokens.parameters(), "IDI program 1"_s);
    }
    void readsComments() { QCOMPARE(first("% a b "_s).comment(), " a b "_s); }

    void readsNotes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("octave");
        QTest::addColumn<int>("accidental");
        QTest::newRow("C") << "C"_s << 0 << 0 << 0;
        QTest::newRow("D") << "D"_s << 1 << 0 << 0;
        QTest::newRow("E") << "E"_s << 2 << 0 << 0;
        QTest::newRow("F") << "F"_s << 3 << 0 << 0;
        QTest::newRow("G") << "G"_s << 4 << 0 << 0;
        QTest::newRow("A") << "A"_s << 5 << 0 << 0;
        QTest::newRow("B") << "B"_s << 6 << 0 << 0;
        QTest::newRow("c") << "c"_s << 0 << 1 << 0;
        QTest::newRow("b") << "b"_s << 6 << 1 << 0;
        QTest::newRow("low") << "A,,"_s << 5 << -2 << 0;
        QTest::newRow("high upper case") << "A'"_s << 5 << 1 << 0;
        QTest::newRow("low lower case") << "a,"_s << 5 << 0 << 0;
        QTest::newRow("flats") << "__E"_s << 2 << 0 << -2;
        QTest::newRow("many sharps") << "^^^^F"_s << 3 << 0 << 4;
        QTest::newRow("natural") << "=F"_s << 3 << 0 << 0;
        QTest::newRow("all of it") << "^^c'2/"_s << 0 << 2 << 2;
    }
    void readsNotes()
    {
        QFETCH(QString, text);
        const ABCTokenizer tokens = first(text);
        QCOMPARE(tokens.kind(), T::Note);
        QTEST(tokens.noteIndex(), "index");
        QTEST(tokens.octave(), "octave");
        QTEST(tokens.accidental(), "accidental");
    }
    void tellsNaturalsFromPlainNotes()
    {
        QVERIFY(first("=F"_s).isNatural());
        QVERIFY(!first("F"_s).isNatural());
        QVERIFY(!first("^F"_s).isNatural());
    }
    void tellsStaccatoTieAndDots()
    {
        QVERIFY(first(".F"_s).staccato());
        QVERIFY(!first("F"_s).staccato());
        QVERIFY(first("F-"_s).tie());
        QVERIFY(first("F2-'"_s).tie());
        QVERIFY(first("F.-"_s).tie());
        QVERIFY(first("F.-"_s).dotted());
        QVERIFY(!first(".F-"_s).dotted());
        QVERIFY(!first("F"_s).tie());
        QVERIFY(first("]-"_s).tie());
        QVERIFY(!first("]"_s).tie());
        QVERIFY(first(".|"_s).dotted());
        QVERIFY(first(".("_s).dotted());
        QVERIFY(first(".)"_s).dotted());
        QVERIFY(first(".-"_s).dotted());
        QVERIFY(!first("-"_s).dotted());
    }

    void readsLengths_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<quint32>("num");
        QTest::addColumn<quint32>("den");
        QTest::newRow("none") << "A"_s << 1U << 1U;
        QTest::newRow("number") << "A3"_s << 3U << 1U;
        QTest::newRow("slash") << "A/"_s << 1U << 2U;
        QTest::newRow("two slashes are as one") << "A//"_s << 1U << 2U;
        QTest::newRow("three slashes are as one") << "A///"_s << 1U << 2U;
        QTest::newRow("two slashes drop the number behind") << "A//8"_s << 1U << 2U;
        QTest::newRow("slash and number") << "A/4"_s << 1U << 4U;
        QTest::newRow("fraction") << "A3/2"_s << 3U << 2U;
        QTest::newRow("number and slash") << "^^c'2/"_s << 2U << 2U;
        QTest::newRow("zero") << "A0"_s << 0U << 1U;
        QTest::newRow("zero denominator") << "A/0"_s << 1U << 0U;
        QTest::newRow("largest number") << "A4294967295"_s << 4294967295U << 1U;
        QTest::newRow("past 32 bits") << "A4294967296"_s << 0U << 1U;
        QTest::newRow("far past 32 bits") << "A/999999999999999"_s << 1U << 0U;
        QTest::newRow("rest") << "z4"_s << 4U << 1U;
        QTest::newRow("chord end") << "]3/4"_s << 3U << 4U;
        QTest::newRow("no length") << "|"_s << 0U << 0U;
    }
    void readsLengths()
    {
        QFETCH(QString, text);
        const ABCTokenizer tokens = first(text);
        QTEST(tokens.length().num, "num");
        QTEST(tokens.length().den, "den");
    }
    void readsLengthsAsNumbers()
    {
        QCOMPARE(first("A3/2"_s).lengthValue(), 1.5);
        QCOMPARE(first("A/0"_s).lengthValue(), 0.0);
        QCOMPARE(first("|"_s).lengthValue(), 0.0);
    }
    void tellsMeasureRests()
    {
        QVERIFY(first("Z"_s).isMeasureRest());
        QVERIFY(first("X2"_s).isMeasureRest());
        QVERIFY(!first("z"_s).isMeasureRest());
        QVERIFY(!first("A"_s).isMeasureRest());
    }
    void readsTuplets()
    {
        const ABCTokenizer plain = first("(3abc"_s);
        QCOMPARE(plain.tupletP(), 3U);
        QCOMPARE(plain.tupletQ(), 0U);
        QCOMPARE(plain.tupletR(), 0U);
        const ABCTokenizer full = first("(5:4:6"_s);
        QCOMPARE(full.tupletP(), 5U);
        QCOMPARE(full.tupletQ(), 4U);
        QCOMPARE(full.tupletR(), 6U);
        QCOMPARE(first("(3::2"_s).tupletQ(), 0U);
        QCOMPARE(first("(3::2"_s).tupletR(), 2U);
    }
    void answersNothingOnOtherKinds()
    {
        const ABCTokenizer bar = first("|1"_s);
        QCOMPARE(bar.field() + bar.value() + bar.instruction() + bar.parameters() + bar.comment(),
                 QString());
        QCOMPARE(bar.noteIndex(), 0);
        QCOMPARE(bar.octave(), 0);
        QCOMPARE(bar.accidental(), 0);
        QCOMPARE(bar.tupletP(), 0U);
        QVERIFY(!bar.isNatural() && !bar.staccato() && !bar.tie() && !bar.dotted());
    }

    void obeysTheLineBreakSwitch()
    {
        QCOMPARE(kinds("$"_s), "Unknown"_s);
        QCOMPARE(kinds("I:linebreak $\n$!x!"_s), "HeaderField LineBreakSymbol BangDecoration"_s);
        QCOMPARE(kinds("[I:LineBreak !]!$"_s), "InlineField LineBreakSymbol Unknown"_s);
        QCOMPARE(kinds("I:linebreak $!\nI:linebreak <EOL>\n$"_s),
                 "HeaderField HeaderField Unknown"_s);
    }
    void obeysTheDecorationSwitch()
    {
        QCOMPARE(kinds("!t!"_s), "BangDecoration"_s);
        QCOMPARE(kinds("I:decoration +\n!c!"_s), "HeaderField Unknown Note Unknown"_s);
        QCOMPARE(kinds("I:decoration +\nI:decoration !\n!c!"_s),
                 "HeaderField HeaderField BangDecoration"_s);
        QCOMPARE(kinds("I:other !$\n$"_s), "HeaderField Unknown"_s);
        QCOMPARE(kinds("i:decoration +\n!c!"_s), "HeaderField BangDecoration"_s);
    }

    void readsEveryWhiteSpaceCharacter()
    {
        for (int unit = 0; unit <= 0xFFFF; ++unit) {
            const QChar c(static_cast<ushort>(unit));
            if (!c.isSpace() || c == QLatin1Char('\n') || c == QLatin1Char('\r'))
                continue;
            QVERIFY2(kinds(QString(2, c)) == "Whitespace"_s, qPrintable(QString::number(unit, 16)));
        }
    }
    void readsEveryCharacterAsSomeToken()
    {
        for (int unit = 0; unit <= 0xFFFF; ++unit) {
            ABCTokenizer tokens(QString(QChar(static_cast<ushort>(unit))));
            QVERIFY(tokens.next() != T::EndOfInput);
        }
    }
    void readsHalvesOfSurrogatePairsAsUnknown()
    {
        const QString pair = QString::fromUtf8("\xF0\x9D\x84\x9E");
        QCOMPARE(positions(pair), "Unknown@0:0 Unknown@0:1"_s);
        QCOMPARE(positions(pair.left(1)), "Unknown@0:0"_s);
        QCOMPARE(positions(pair.right(1) + "A"_s), "Unknown@0:0 Note@0:1"_s);
    }
    void keepsHalvesOfSurrogatePairsInTexts()
    {
        const QString half(QChar(0xD834));
        QCOMPARE(kinds("%"_s + half + "x"_s), "Comment"_s);
        QCOMPARE(first("%"_s + half + "x"_s).comment(), half + "x"_s);
        QCOMPARE(first("T:"_s + half).value(), half);
        QCOMPARE(kinds("\""_s + half + "\""_s), "ChordSymbol"_s);
    }
    void endsNoWindowInsideASurrogatePair()
    {
        const QString pair = QString::fromUtf8("\xF0\x9D\x84\x9E");
        // The closing quotation mark is the 50th character, then the 51st.
        QCOMPARE(kinds("\""_s + pair.repeated(24) + "\""_s), "ChordSymbol"_s);
        QVERIFY(kinds("\""_s + pair.repeated(24) + "x\""_s).startsWith("Unknown Unknown"_s));
        QCOMPARE(kinds("!x"_s + pair.repeated(23) + "y!"_s), "BangDecoration"_s);
    }
};

QTEST_APPLESS_MAIN(TestABCTokenizer)
#include "tst_ABCTokenizer.moc"
