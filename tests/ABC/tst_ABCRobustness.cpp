#include "ABC/ABCGenerator.h"
#include "ABC/ABCParser.h"

#include "AbcTestSupport.h"

#include "support/Sanitizer.h"

#include <QtTest>

#include <sys/resource.h>

#include <ctime>

using namespace AbcTest;

namespace {

// A sanitizer takes several times as long, and keeps freed memory.
constexpr int Megabyte = (1 << 20) / SanitizerFactor;
constexpr double MaxSeconds = 2;
constexpr long MaxMegabytes = 256L * SanitizerFactor;

/// Processor time, which does not depend on what else the machine does.
double usedSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// The most memory that the process has held, in kilobytes.
long peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// Reads the text, writes what it became and reads that; a message may end it on the way.
void readAndRewrite(const QString &text)
{
    try {
        Track track = parse(text);
        track.setAbc(QString());
        parse(track.abc());
    } catch (const QString &message) {
        QVERIFY(!message.isEmpty());
    }
}

QString tiesOfEveryPitch()
{
    QString text;
    for (const char *octave : {",,,,", ",,,", ",,", ",", "", "'", "''", "'''"}) {
        for (const char letter : {'C', 'D', 'E', 'F', 'G', 'A', 'B'})
            text +=
                QStringLiteral("=%1%2-^%1%2-").arg(QLatin1Char(letter)).arg(QLatin1String(octave));
    }
    return text;
}

/// `piece` over and over up to a megabyte, behind a header.
QString flood(const QString &piece, const QString &start = ""_s, const QString &end = ""_s)
{
    return "X:1\nL:1/8\nM:4/4\nK:C\n"_s + start + piece.repeated(Megabyte / piece.size()) + end;
}

} // namespace

class TestABCRobustness : public QObject {
    Q_OBJECT

private slots:
    void endsSoonOnHostileTexts_data()
    {
        QTest::addColumn<QString>("text");
        const auto row = [](const QString &name, const QString &text) {
            QTest::newRow(qPrintable(name)) << text;
        };
        row("zero denominators"_s,
            "X:1\nL:1/0\nQ:1/0=120\nM:4/0\nK:C\nA/0 z/0 [A/0C]/0 Z/0 (3:0:0A|B[L:1/0][M:4/0][Q:1/0=0]C|"_s);
        row("numbers past 32 bits"_s,
            "X:1\nL:99999999999/3\nQ:99999999999/99999999999=99999999999\nM:99999999999/4\nK:C\n"_s
            "A99999999999/99999 z99999999 A/9999999999 [A4294967296]4294967 (4294967AAA|B"_s);
        row("numbers of 32 bits"_s,
            "X:1\nL:4294967295\nQ:4294967295/1=4294967295\nM:4294967295/1\nK:C\n"_s
            "A4294967295 z429496729 Z429496729 [A4294967295B]42949672 |A4294967295|(3A4294967295|||"_s);
        row("a measure of 0 ticks"_s,
            "X:1\nM:1/4294967295\nL:1/4294967295\nK:C\nA|B|[M:1/120961]C|"_s);
        row("tuplets of 0"_s, "X:1\nK:C\n(0abc(0:0:0abc(1:0abc(0:5abc"_s);
        row("NUL bytes"_s,
            "X:1\nT:a"_s + QString(QChar(0)) + "\nK:C\nC"_s + QString(1000, QChar(0)));
        row("only NUL bytes"_s, QString(Megabyte, QChar(0)));
        row("lone surrogates"_s,
            "X:1\nT:"_s + QString(QChar(0xD800)) + "\nK:C"_s + QString(QChar(0xDC00)) + "\n%"_s
                + QString(1000, QChar(0xD800)) + "\n\""_s + QString(20, QChar(0xDC00)) + "\"C"_s);
        row("huge times"_s, flood("z999999999"_s, "[L:35000/1]"_s));
        row("huge times in ticks"_s, flood("Z999999999C "_s, "[L:1/120960]"_s));
        row("huge transposition"_s, "%Transpose: 2147483647\n"_s + flood("C"_s));

        row("a megabyte of notes on one line"_s, flood("C"_s));
        row("a megabyte of different notes"_s, flood("^c'3/7- _D2>E,,//. "_s));
        row("a megabyte of bars"_s, flood("|"_s));
        row("a megabyte of colons"_s, flood(":"_s));
        row("a megabyte of spaces"_s, flood(" "_s));
        row("a megabyte of spaces and a mark"_s, flood(" "_s, ""_s, "*"_s));
        row("a megabyte of digits behind a note"_s, flood("9"_s, "C"_s));
        row("a megabyte of comment"_s, flood("x"_s, "%"_s));
        row("a megabyte of header value"_s,
            "T:"_s + QString(Megabyte, QLatin1Char('x')) + "\nK:C\nC"_s);
        row("a megabyte of spaces in a header field"_s,
            "T:"_s + QString(Megabyte, QLatin1Char(' ')) + "\nK:C\nC"_s);
        row("a megabyte of key"_s, "K:"_s + QString(Megabyte, QLatin1Char('#')) + "\nC"_s);
        row("a megabyte of letters as key"_s,
            "K:"_s + QString(Megabyte, QLatin1Char('h')) + "\nC"_s);
        row("a megabyte of spaces in a key"_s,
            "K:C"_s + QString(Megabyte, QLatin1Char(' ')) + "q\nC"_s);
        row("a megabyte of digits as tempo"_s,
            "Q:"_s + QString(Megabyte, QLatin1Char('1')) + "\nK:C\nC"_s);
        row("digits and slashes as tempo"_s,
            "Q:"_s + QStringLiteral("1/1 ").repeated(Megabyte / 4) + "\nK:C\nC"_s);
        row("a megabyte of quotation marks"_s, flood("\""_s));
        row("a megabyte of exclamation marks"_s, flood("!"_s));
        row("a megabyte of opening brackets"_s, flood("["_s));
        row("a megabyte of closing brackets"_s, flood("]"_s));
        row("a megabyte of braces"_s, flood("{"_s));
        row("a megabyte of parentheses"_s, flood("("_s));
        row("a megabyte of carets"_s, flood("^"_s));
        row("a megabyte of carets and notes"_s, flood("^^^^^^^^^^^^^^^^^^^C"_s));
        row("a megabyte of empty lines"_s, flood("\n"_s));
        row("a megabyte of line ends of all kinds"_s, flood("\r\n\r"_s));
        row("a megabyte of inline fields"_s, flood("[K:D]"_s));
        row("a megabyte of inline tempos"_s, flood("[Q:1/4=120][Q:90]"_s));
        row("a megabyte of header fields"_s,
            "T:x\n"_s + QStringLiteral("T:x\n").repeated(Megabyte / 4) + "K:C\nC"_s);
        row("a megabyte of chords"_s, flood("[CE]2"_s));
        row("a megabyte of empty chord ends"_s, flood("[C]9/8-"_s));
        row("one chord of a megabyte"_s, flood("C3/2"_s, "["_s, "]7/3"_s));
        row("one chord of tied notes"_s, flood("C3/2-"_s, "["_s, "]7/3"_s));
        row("one chord of tied notes, then as many notes"_s,
            "X:1\nK:C\n["_s + QStringLiteral("C-").repeated(300000) + "]"_s
                + QStringLiteral("C").repeated(300000));
        row("an open chord of a megabyte"_s, flood("C"_s, "["_s));
        row("chords at one time"_s, flood("[z0C-E]3/2"_s));
        row("chords at one time behind ties of every pitch"_s,
            flood("[z0]3/2"_s, "[z0"_s + tiesOfEveryPitch().repeated(20) + "]3/2"_s));
        row("chords after pending ties"_s, flood("[zC-E]3/2"_s));
        row("a megabyte of ties"_s, flood("C-"_s));
        row("a megabyte of broken ties"_s, flood("C-D-"_s));
        row("a megabyte of tuplets"_s, flood("(3"_s));
        row("a megabyte of unit lengths"_s, flood("[L:1/8]C[L:1/7]C"_s));
        row("a megabyte of meters"_s, flood("[M:7/8]|C"_s));
        row("overlapping notes"_s, flood("[z/1000C4]"_s));
    }
    void endsSoonOnHostileTexts()
    {
        QFETCH(QString, text);
        LogRecorder recorder;
        const long memory = peakMemory();
        const double start = usedSeconds();
        readAndRewrite(text);
        const double seconds = usedSeconds() - start;
        const long megabytes = (peakMemory() - memory) / 1024;
        QVERIFY2(seconds < MaxSeconds, qPrintable(QString::number(seconds)));
        QVERIFY2(megabytes < MaxMegabytes, qPrintable(QString::number(megabytes)));
    }

    void takesNoMoreEventsThanTheLimit_data()
    {
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("piece");
        QTest::addColumn<int>("most");
        const int events = ABCParser::LargestCount - 2 * ABCParser::EventsPerHeader;
        const int headers = ABCParser::LargestCount / ABCParser::EventsPerHeader;
        QTest::newRow("notes") << "X:1\nK:C\n"_s
                               << "C"_s << events;
        QTest::newRow("notes of one chord") << "X:1\nK:C\n["_s
                                            << "C"_s << events;
        QTest::newRow("keys") << "X:1\nK:C\n"_s
                              << "[K:C]"_s << events;
        QTest::newRow("header fields") << ""_s
                                       << "T:\n"_s << headers;
    }
    void takesNoMoreEventsThanTheLimit()
    {
        QFETCH(QString, start);
        QFETCH(QString, piece);
        QFETCH(int, most);
        QString text = start + piece.repeated(most);
        QCOMPARE(thrownBy([&] { parse(text); }), "(nothing thrown)"_s);
        text += piece;
        QCOMPARE(thrownBy([&] { parse(text); }), "The ABC tune has too many events."_s);
    }

    void survivesAnyMutation()
    {
        LogRecorder recorder;
        const QStringList seeds{
            "X:1\nT:x\nL:1/8\nM:6/8\nQ:1/4=90\nK:Dmix\n|:\"Am\"[CE-]2 {/ab}(3^c'_d/=e,,//|1 .F-F!trill!z4:|\n"_s,
            "I:linebreak $!\nI:decoration +\n%%MIDI 1\n%Transpose: -3\nK:Bb\nC>D<E$`&\\\n[K:F#loc][L:1/16][M:C|][Q:3/8=60]Z2X|]+x+(CD)~uH"_s,
            "X:1\nK:C\n[C2E-G]3/2-[z0C-]C-D (5:4:6abc [|[1 ::|2,3-4 .| .( .) .-- ^^^_B"_s,
        };
        const QString alphabet = "CDEabzxZX^_=',/0123456789-.|:[](){}<>!\"+$%&`\\~ \n\r\tKLMQI#"_s
            + QString(QChar(0xD834)) + QString(QChar(0xDD1E)) + QString(QChar(0)) + "é"_s;
        Random random(20240229);
        for (int round = 0; round < 30000 / SanitizerFactor; ++round) {
            QString text = seeds.at(round % seeds.size());
            const quint32 changes = 1 + random.below(12);
            for (quint32 i = 0; i < changes && !text.isEmpty(); ++i) {
                const int at = static_cast<int>(random.below(static_cast<quint32>(text.size())));
                const QChar c = alphabet.at(
                    static_cast<int>(random.below(static_cast<quint32>(alphabet.size()))));
                switch (random.below(4)) {
                case 0:
                    text[at] = c;
                    break;
                case 1:
                    text.insert(at, c);
                    break;
                case 2:
                    text.remove(at, 1 + static_cast<int>(random.below(4)));
                    break;
                default:
                    text.insert(
                        at,
                        text.mid(static_cast<int>(random.below(static_cast<quint32>(text.size()))),
                                 8));
                }
            }
            readAndRewrite(text);
        }
    }
};

QTEST_APPLESS_MAIN(TestABCRobustness)
#include "tst_ABCRobustness.moc"
