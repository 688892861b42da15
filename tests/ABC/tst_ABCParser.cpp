#include "ABC/ABCParser.h"

#include "AbcTestSupport.h"

#include <QtTest>

using namespace AbcTest;

class TestABCParser : public QObject {
    Q_OBJECT

private slots:
    void readsNotes_data()
    {
        QTest::addColumn<QString>("fields");
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("expected");
        const auto row = [](const QString &name, const QString &fields, const QString &body,
                            const QString &expected) {
            QTest::newRow(qPrintable(name.simplified())) << fields << body << expected;
        };
        const QString eighths = "L:1/8\n"_s;

        row("plain notes"_s, ""_s, "CDEF|"_s,
            "60@0+30240 62@30240+30240 64@60480+30240 65@90720+30240"_s);
        row("octaves"_s, ""_s, "C,c c'"_s, "48@0+30240 72@30240+30240 84@60480+30240"_s);
        row("lengths"_s, ""_s, "C3/2D/E//F/4"_s,
            "60@0+45360 62@45360+15120 64@60480+15120 65@75600+7560"_s);
        row("lengths round down"_s, ""_s, "C/7D"_s, "60@0+4320 62@4320+30240"_s);
        row("a denominator of 0 lasts nothing"_s, ""_s, "C/0D"_s, "60@0+0 62@0+30240"_s);
        row("a number past 32 bits is 0"_s, ""_s, "C4294967296D"_s, "60@0+0 62@0+30240"_s);
        row("the largest number"_s, "L:1/120960\n"_s, "C4294967295D"_s,
            "60@0+4294967295 62@4294967295+1"_s);
        row("numbers multiply in 64 bits"_s, ""_s, "C4294967295D"_s,
            "60@0+129879811000800 62@129879811000800+30240"_s);
        row("staccato halves the sound"_s, ""_s, ".C3D"_s, "60@0+45360 62@90720+30240"_s);
        row("notes outside of the piano are silent"_s, ""_s, "C,,,,,D"_s, "62@0+30240"_s);
        row("the lowest and the highest note"_s, ""_s, "A,,,,c'''D"_s,
            "21@0+30240 108@30240+30240 62@60480+30240"_s);
        row("a note beyond the range takes time"_s, ""_s, "^c'''D G,,,,E"_s,
            "62@30240+30240 64@90720+30240"_s);
        row("octaves beyond 4 take no time"_s, ""_s, "C''''' D c'''' E,,,,, E"_s,
            "62@0+30240 64@30240+30240"_s);

        row("rests"_s, ""_s, "z2Cx/D"_s, "60@60480+30240 62@105840+30240"_s);
        row("measure rests are whole notes"_s, "M:3/4\n"_s, "ZC X2 D"_s,
            "60@120960+30240 62@393120+30240"_s);
        row("a measure rest with a fraction"_s, ""_s, "Z/4C"_s, "60@30240+30240"_s);
        row("a rest of denominator 0"_s, ""_s, "z/0C"_s, "60@0+30240"_s);

        row("bars snap forward"_s, eighths + "M:3/4\n"_s, "C|D"_s, "60@0+15120 62@90720+15120"_s);
        row("a full bar needs no snap"_s, eighths + "M:4/4\n"_s, "C4|D"_s,
            "60@0+60480 62@120960+15120"_s);
        row("bars snap back"_s, "M:1/4\n"_s, "C3|D"_s, "60@0+90720 62@30240+30240"_s);
        row("a double bar line counts twice"_s, "M:1/4\n"_s, "C||D"_s,
            "60@0+30240 62@60480+30240"_s);
        row("every bar token counts"_s, "M:1/4\n"_s, "|:C:|D|]"_s,
            "60@30240+30240 62@60480+30240"_s);
        row("without a meter bars do not snap"_s, ""_s, "C|D"_s, "60@0+30240 62@30240+30240"_s);
        row("M:none is without a meter"_s, "M:none\n"_s, "C|D"_s, "60@0+30240 62@30240+30240"_s);
        row("M:4/0 is without a meter"_s, "M:4/0\n"_s, "C|D"_s, "60@0+30240 62@30240+30240"_s);
        row("a measure of 0 ticks is no meter"_s, "M:1/999999\n"_s, "C|D"_s,
            "60@0+30240 62@30240+30240"_s);
        row("common time"_s, "M:C\n"_s, "C|D"_s, "60@0+30240 62@120960+30240"_s);
        row("cut time is 2/4 here"_s, "M:c|\n"_s, "C|D"_s, "60@0+30240 62@60480+30240"_s);

        row("accidentals hold for the bar"_s, ""_s, "^F F|F"_s,
            "66@0+30240 66@30240+30240 65@60480+30240"_s);
        row("accidentals hold for the octave"_s, ""_s, "^Ff"_s, "66@0+30240 77@30240+30240"_s);
        row("naturals hold, too"_s, ""_s, "^F=FF"_s, "66@0+30240 65@30240+30240 65@60480+30240"_s);
        row("double accidentals"_s, ""_s, "^^C__E"_s, "62@0+30240 62@30240+30240"_s);
        row("header fields in the body"_s, ""_s, "C\nw:la\nV:1\nD"_s,
            "60@0+30240 62@30240+30240"_s);

        row("tie"_s, ""_s, "C-C"_s, "60@0+60480"_s);
        row("tie over three notes"_s, ""_s, "C-C-C/"_s, "60@0+75600"_s);
        row("tie over a bar line"_s, ""_s, "C-|C"_s, "60@0+60480"_s);
        row("tie to another pitch drops that note"_s, ""_s, "C-D E"_s,
            "60@0+30240 64@60480+30240"_s);
        row("the dropped note's own tie is dropped"_s, ""_s, "C-D-D"_s,
            "60@0+30240 62@60480+30240"_s);
        row("a continued tie to another pitch"_s, ""_s, "C-C-D"_s, "60@0+60480"_s);
        row("a tie is broken off by a silent note"_s, ""_s, "C-C,,,,C"_s,
            "60@0+30240 60@60480+30240"_s);
        row("a rest breaks no tie"_s, ""_s, "C-zDC"_s, "60@0+30240 62@60480+30240"_s);
        row("a tie whose end lies elsewhere takes the next note along"_s, ""_s, "C-zC D"_s,
            "60@0+30240 62@90720+30240"_s);
        row("a note breaks off the single tie behind an equal one"_s, ""_s, "[C2-z0]C-D E"_s,
            "60@0+30240 60@0+60480 64@60480+30240"_s);
        row("a staccato tie ends before the next note"_s, ""_s, ".C-DC"_s,
            "60@0+15120 62@30240+30240"_s);
        row("pending ties at the end"_s, ""_s, "CD-"_s, "60@0+30240 62@30240+30240"_s);
        row("a tie to an accidental's pitch"_s, ""_s, "^C-_D"_s, "61@0+60480"_s);
        row("a tie mark of its own is skipped"_s, ""_s, "C -C"_s, "60@0+30240 60@30240+30240"_s);
        row("chord ties go by pitch"_s, ""_s, "[C-E-][CG]E"_s,
            "64@0+30240 60@0+60480 67@30240+30240"_s);
        row("a single tie before a chord goes by pitch"_s, ""_s, "C-[CE]"_s,
            "60@0+60480 64@30240+30240"_s);
        row("a single tie before another chord waits"_s, ""_s, "C-[DE]"_s,
            "60@0+30240 62@30240+30240 64@30240+30240"_s);
        row("a note after a chord is not dropped"_s, ""_s, "[C-E]D"_s,
            "64@0+30240 60@0+30240 62@30240+30240"_s);
        row("equal notes of a chord wait together"_s, ""_s, "[C-C-]C C"_s,
            "60@0+30240 60@0+60480"_s);

        row("a chord without time parts a tie from the next note"_s, ""_s, "C-[z0E]D"_s,
            "60@0+30240 64@30240+30240 62@30240+30240"_s);
        row("no more than 8 equal notes wait"_s, "L:1/120960\n"_s,
            "["_s + "C-"_s.repeated(9) + "]2C"_s, "60@0+2 "_s.repeated(8) + "60@0+3"_s);
        row("chord"_s, ""_s, "[CEG]2D"_s, "60@0+60480 64@0+60480 67@0+60480 62@60480+30240"_s);
        row("a chord lasts as its shortest note"_s, ""_s, "[C2E]D"_s,
            "64@0+30240 60@0+60480 62@30240+30240"_s);
        row("a rest in a chord"_s, ""_s, "[zC4]D"_s, "60@0+120960 62@30240+30240"_s);
        row("rests in chords are not scaled but the chord is"_s, ""_s, "[zC4]/D"_s,
            "60@0+60480 62@15120+30240"_s);
        row("chord with denominator 0"_s, ""_s, "[CE]/0D"_s, "60@0+0 64@0+0 62@0+30240"_s);
        row("chord on two lines"_s, ""_s, "[C\nE]"_s, "60@0+30240 64@0+30240"_s);
        row("chord that the text ends"_s, ""_s, "[C2E"_s, "64@0+30240 60@0+60480"_s);
        row("pending ties are scaled with their chord"_s, ""_s, "[C-E]2C"_s,
            "64@0+60480 60@0+90720"_s);
        row("earlier ties are not scaled"_s, ""_s, "C-[DE]2"_s,
            "60@0+30240 62@30240+60480 64@30240+60480"_s);
        row("a tie ending in a scaled chord is scaled whole"_s, ""_s, "C-[CE]2"_s,
            "60@0+120960 64@30240+60480"_s);
        row("a note without time ends its chord at once"_s, ""_s, "[C''''''E]D"_s,
            "64@0+30240 62@0+30240"_s);

        row("triplet"_s, eighths, "(3CDEF"_s,
            "60@0+10080 62@10080+10080 64@20160+10080 65@30240+15120"_s);
        row("tuplet with q"_s, eighths, "(3:4CDEF"_s,
            "60@0+20160 62@20160+20160 64@40320+20160 65@60480+15120"_s);
        row("r is not used"_s, eighths, "(3:2:1CDEF"_s,
            "60@0+10080 62@10080+10080 64@20160+10080 65@30240+15120"_s);
        row("q of 0 is none"_s, eighths, "(3:0CDEF"_s,
            "60@0+10080 62@10080+10080 64@20160+10080 65@30240+15120"_s);
        row("duplet"_s, eighths, "(2CDE"_s, "60@0+22680 62@22680+22680 64@45360+15120"_s);
        row("quadruplet"_s, eighths, "(4C"_s, "60@0+11340"_s);
        row("quintuplet in simple time"_s, eighths, "(5C"_s, "60@0+6048"_s);
        row("quintuplet in compound time"_s, eighths + "M:6/8\n"_s, "(5C"_s, "60@0+9072"_s);
        row("sextuplet"_s, eighths, "(6C"_s, "60@0+5040"_s);
        row("septuplet"_s, eighths + "M:9/8\n"_s, "(7C"_s, "60@0+6480"_s);
        row("octuplet"_s, eighths, "(8C"_s, "60@0+5670"_s);
        row("nonuplet in 12/8"_s, eighths + "M:12/8\n"_s, "(9C"_s, "60@0+5040"_s);
        row("3/8 is no compound time"_s, eighths + "M:3/8\n"_s, "(5C"_s, "60@0+6048"_s);
        row("a meter in the body does not change the kind of time"_s, eighths, "[M:6/8](5C"_s,
            "60@0+6048"_s);
        row("a tuplet of 0"_s, eighths, "(0C"_s, "60@0+15120"_s);
        row("a tuplet of 1"_s, eighths, "(1CD"_s, "60@0+15120 62@15120+15120"_s);
        row("a tuplet above 9"_s, eighths, "(10CD"_s, "60@0+15120 62@15120+15120"_s);
        row("rests count in a tuplet but are not scaled"_s, eighths, "(3zCDE"_s,
            "60@15120+10080 62@25200+10080 64@35280+15120"_s);
        row("a chord counts once"_s, eighths, "(3[CE]DEF"_s,
            "60@0+10080 64@0+10080 62@10080+10080 64@20160+10080 65@30240+15120"_s);
        row("a skipped note counts, too"_s, eighths, "(3C,,,,,DEF"_s,
            "62@0+10080 64@10080+10080 65@20160+15120"_s);

        row("grace notes"_s, ""_s, "{ab}C{/g}D"_s, "60@0+30240 62@30240+30240"_s);
        row("grace notes touch no accidentals"_s, ""_s, "{^F}F"_s, "65@0+30240"_s);
        row("grace notes touch no tuplets"_s, eighths, "(3{ab}C{a}DEF"_s,
            "60@0+10080 62@10080+10080 64@20160+10080 65@30240+15120"_s);
        row("grace chords, rests and tuplets"_s, ""_s, "{[CE]z(3a}C"_s, "60@0+30240"_s);
        row("grace notes end with their line"_s, ""_s, "{ab\nC"_s, "60@0+30240"_s);
        row("grace notes end at a bar line"_s, ""_s, "{ab|C"_s, "60@0+30240"_s);
        row("grace notes leave a tie alone"_s, ""_s, "C-{d}C"_s, "60@0+60480"_s);

        row("keys in the body"_s, ""_s, "F[K:G]F\nK:Dm\nB"_s,
            "65@0+30240 66@30240+30240 70@60480+30240"_s);
        row("unit lengths in the body"_s, ""_s, "C[L:1/8]C\nL:1/0\nC"_s,
            "60@0+30240 60@30240+15120 60@45360+30240"_s);
        row("a meter in the body starts a grid of its own"_s, "M:4/4\n"_s, "C[M:1/4]D||E"_s,
            "60@0+30240 62@30240+30240 64@90720+30240"_s);
        row("bars before a meter in the body do not count in its grid"_s, "M:1/4\n"_s,
            "C|D|[M:1/2]E|F"_s, "60@0+30240 62@30240+30240 64@60480+30240 65@120960+30240"_s);
        row("M:none in the body ends the grid"_s, "M:4/4\n"_s, "C[M:none]|D"_s,
            "60@0+30240 62@30240+30240"_s);
        row("fields in the body may be trimmed"_s, ""_s, "[K:  F  ]B"_s, "70@0+30240"_s);
    }
    void readsNotes()
    {
        QFETCH(QString, fields);
        QFETCH(QString, body);
        QFETCH(QString, expected);
        QCOMPARE(notes(parseBody(body, fields)), expected);
    }

    void readsKeys_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("pitches");
        const auto row = [](const QString &key, const QString &pitches) {
            QTest::newRow(qPrintable(key.simplified())) << key << pitches;
        };
        row("C"_s, "60 62 64 65 67 69 71"_s);
        row("F"_s, "60 62 64 65 67 69 70"_s);
        row("Bb"_s, "60 62 63 65 67 68 71"_s);
        row("bb"_s, "60 62 63 65 67 68 71"_s);
        row("F#"_s, "61 63 65 66 68 70 71"_s);
        row("Gb"_s, "59 61 63 65 66 68 70"_s);
        row("Cb"_s, "59 61 63 64 66 68 70"_s);
        row("C#"_s, "61 63 65 66 68 70 72"_s);
        row("Am"_s, "60 62 64 65 67 69 71"_s);
        row("A minor"_s, "60 62 64 65 67 69 71"_s);
        row("Amaj"_s, "61 62 64 66 68 69 71"_s);
        row("AMIX"_s, "61 62 64 66 67 69 71"_s);
        row("Ddor"_s, "60 62 64 65 67 69 71"_s);
        row("E phrygian"_s, "60 62 64 65 67 69 71"_s);
        row("Flyd"_s, "60 62 64 65 67 69 71"_s);
        row("BLoc"_s, "60 62 64 65 67 69 71"_s);
        row("Cion"_s, "60 62 64 65 67 69 71"_s);
        row("Aaeo"_s, "61 62 64 66 68 69 71"_s);
        row("G clef=bass"_s, "60 62 64 66 67 69 71"_s);
        row("=G"_s, "60 62 64 66 67 69 71"_s);
    }
    void readsKeys()
    {
        QFETCH(QString, key);
        QStringList pitches;
        const Track track = parse("X:1\nK:"_s + key + "\nCDEFGAB"_s);
        for (const TrackEvent &event : track.events())
            pitches << QString::number(event.note());
        QTEST(pitches.join(QLatin1Char(' ')), "pitches");
    }

    void keepsHeaders()
    {
        const Track track = parse("X:1\nT: newer \nT:newest\nZ:\nK:G \nT:body\n"_s);
        QCOMPARE(track.headers("T"_s), QStringList({"newest"_s, "newer"_s}));
        QCOMPARE(track.header("X"_s), "1"_s);
        QCOMPARE(track.header("K"_s), "G"_s);
        QVERIFY(track.hasHeader("Z"_s));
        QCOMPARE(track.header("Z"_s), QString());
        QVERIFY(!track.hasHeader("L"_s));
    }
    void keepsTheText() { QCOMPARE(parse("X:1\nK:C\nC|"_s).abc(), "X:1\nK:C\nC|"_s); }
    void setsTheLength()
    {
        const Track track = parse("X:1\nK:C\nC3D"_s);
        QCOMPARE(track.length(), quint64{120960});
        QCOMPARE(track.noteCount(), 2);
    }
    void skipsWhatIsNotPlayed()
    {
        QCOMPARE(notes(parseBody("\"^x\"C\"Am\"(D)!f!+t+~uA>B<C-`&\\\n%x\n%%y\n$"_s.chopped(1))),
                 "60@0+30240 62@30240+30240 69@60480+30240 71@90720+30240 60@120960+30240"_s);
    }

    void readsTheTransposeComment_data()
    {
        QTest::addColumn<QString>("comment");
        QTest::addColumn<QString>("expected");
        const auto row = [](const QString &comment, const QString &expected) {
            QTest::newRow(qPrintable(comment.simplified())) << comment << expected;
        };
        row("%Transpose: 12"_s, "72@0+30240"_s);
        row("%Transpose: -2"_s, "58@0+30240"_s);
        row("% Transpose:+3 "_s, "63@0+30240"_s);
        row("%Transposed by hand: 1: 2"_s, "61@0+30240"_s);
        row("%transpose: 12"_s, "60@0+30240"_s);
        row("%To Transpose: 12"_s, "60@0+30240"_s);
        row("%Transpose 12"_s, "60@0+30240"_s);
        row("%Transpose: x"_s, "60@0+30240"_s);
        row("%Transpose: 100"_s, ""_s);
        row("%Transpose: 2147483647"_s, ""_s);
        row("%Transpose: -2147483648"_s, ""_s);
        row("%Transpose: 99999999999"_s, "60@0+30240"_s);
        row("%Transpose:"_s, "60@0+30240"_s);
    }
    void readsTheTransposeComment()
    {
        QFETCH(QString, comment);
        QTEST(notes(parse("X:1\n"_s + comment + "\nK:C\nC"_s)), "expected");
    }
    void readsTheTransposeCommentInTheHeaderOnly()
    {
        QCOMPARE(notes(parse("X:1\nK:C\n%Transpose: 12\nC"_s)), "60@0+30240"_s);
    }

    void readsTempo_data()
    {
        QTest::addColumn<QString>("fields");
        QTest::addColumn<quint64>("expected");
        const auto row = [](const QString &fields, quint64 expected) {
            QTest::newRow(qPrintable(fields.simplified())) << fields << expected;
        };
        row(""_s, 3628800);
        row("L:1/8\n"_s, 1814400);
        row("Q:1/4=120\n"_s, 3628800);
        row("Q:3/8=60\n"_s, 2721600);
        row("Q:1/7=3\n"_s, 51840);
        row("Q:90\n"_s, 2721600);
        row("L:1/8\nQ:90\n"_s, 1360800);
        row("Q:1/4 = 120\n"_s, 30240);
        row("Q:\"Allegro\" 1/4=100\n"_s, 3024000);
        row("Q:0\n"_s, 3628800);
        row("Q:1/4=0\n"_s, 3628800);
        row("Q:1/0=90\n"_s, 2721600);
        row("Q:0/4=90\n"_s, 2721600);
        row("Q:Allegro\n"_s, 3628800);
        row("Q:99999999999\n"_s, 3628800);
        row("Q:1/1=4294967295\n"_s, quint64{4294967295} * 120960);
        row("Q:1/4=60\nQ:1/4=90\n"_s, 2721600);
    }
    void readsTempo()
    {
        QFETCH(QString, fields);
        QTEST(parseBody("C"_s, fields).ticksPerMinute(), "expected");
    }

    void readsMeasures_data()
    {
        QTest::addColumn<QString>("meter");
        QTest::addColumn<quint32>("length");
        QTest::addColumn<quint32>("beats");
        const auto row = [](const QString &meter, quint32 length, quint32 beats) {
            QTest::newRow(qPrintable(meter.simplified())) << meter << length << beats;
        };
        row("3/4"_s, 90720, 3);
        row("6/8"_s, 90720, 6);
        row("C"_s, 120960, 4);
        row("C|"_s, 60480, 2);
        row("none"_s, 120960, 4);
        row("4/0"_s, 120960, 4);
        row("0/4"_s, 120960, 4);
        row("4"_s, 120960, 4);
        row("2+3/8"_s, 120960, 4);
        row("1/120961"_s, 120960, 4);
        row("33554432/1"_s, 120960, 4);
        row("99999999999/4"_s, 120960, 4);
    }
    void readsMeasures()
    {
        QFETCH(QString, meter);
        const Track track = parseBody("C|D"_s, "M:"_s + meter + "\n"_s);
        QTEST(track.measureLength(), "length");
        QTEST(track.beatsPerMeasure(), "beats");
    }

    void readsUnitLengths_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<quint64>("duration");
        const auto row = [](const QString &value, quint64 duration) {
            QTest::newRow(qPrintable(value.simplified())) << value << duration;
        };
        row("1/8"_s, 15120);
        row("3/8"_s, 45360);
        row("1"_s, 120960);
        row("/8"_s, 967680);
        row("about 1/16"_s, 7560);
        row(""_s, 30240);
        row("none"_s, 30240);
        row("1/0"_s, 30240);
        row("0/8"_s, 30240);
        row("1/120961"_s, 30240);
        row("1/99999999999"_s, 30240);
        row("1/120960"_s, 1);
        row("40000"_s, 543432704);
    }
    void readsUnitLengths()
    {
        QFETCH(QString, value);
        QTEST(parseBody("C"_s, "L:"_s + value + "\n"_s).event(0).duration(), "duration");
    }

    void readsControlEvents_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("expected");
        const auto row = [](const QString &body, const QString &expected) {
            QTest::newRow(qPrintable(body.simplified())) << body << expected;
        };
        row("C[K:Dm]"_s, "Key@30240 8 1"_s);
        row("C\nK:Bb"_s, "Key@30240 9 0"_s);
        row("C[L:1/8]C[L:1/0]"_s, "L@30240 1/8; L@45360 1/4"_s);
        row("[L:3]"_s, "L@0 3/1"_s);
        row("[M:6/8]C[M:C]C[M:c|]C[M:none]"_s, "M@0 6/8; M@30240 4/4; M@60480 2/4; M@90720 0/0"_s);
        row("[M:4/0]C[M:1/999999]"_s, "M@0 0/0; M@30240 0/0"_s);
        row("C[Q:1/8=90]"_s, "Tempo@30240 1/8=90"_s);
        row("C[Q:90]"_s, "Tempo@30240 1/4=90"_s);
        row("C[L:1/8][Q:90]"_s, "L@30240 1/8; Tempo@30240 1/8=90"_s);
        row("C[Q:1/0=90]"_s, "Tempo@30240 1/4=90"_s);
        row("C[Q:0]D[Q:1/4=0]E[Q:x]"_s, ""_s);
        row("C[Q:1/4=120]"_s, ""_s);
        row("C[T:x]\nw:la"_s, ""_s);
        row("C[Q:4294967295/1=2]"_s, "Tempo@30240 4294967295/1=2"_s);
        row("C[Q:1/4=4294967295]"_s, "Tempo@30240 1/4=4294967295"_s);
    }
    void readsControlEvents()
    {
        QFETCH(QString, body);
        QTEST(controls(parseBody(body)), "expected");
    }
    void computesTheTempoOfEventsIn32Bits()
    {
        const Track track = parseBody("C[Q:40000/1=2]"_s);
        QCOMPARE(track.event(1).ticksPerMinute(), quint64{1086865408});
    }

    void failsWithTheTokensPosition_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const QString &text, const QString &expected) {
            QTest::newRow(qPrintable(text.simplified())) << text << expected;
        };
        const QString header = "Unexpected token found in ABC header: line %1, column %2."_s;
        const QString body = "Unknown token found in ABC body at line %1, column %2."_s;
        const QString chord = "Unexpected token found in chord at line %1, column %2."_s;
        row("X:1\nhello"_s, header.arg(2).arg(1));
        row("X:1\n  CDE"_s, header.arg(2).arg(3));
        row("[K:C]"_s, header.arg(1).arg(1));
        row("X:1\n+:more"_s, header.arg(2).arg(1));
        row("X:1\nK:C\nCD*"_s, body.arg(3).arg(3));
        row("X:1\nK:C\r\rC\r\n"_s + "é"_s, body.arg(5).arg(1));
        row("X:1\nK:C\n\""_s + "C"_s.repeated(60) + "\""_s, body.arg(3).arg(1));
        row("I:decoration +\nK:C\nC!f!"_s, body.arg(3).arg(2));
        row("X:1\nK:C\n!C"_s, body.arg(3).arg(1));
        row("X:1\nK:C\n$"_s, body.arg(3).arg(1));
        row("X:1\nK:C\n{*}"_s, body.arg(3).arg(2));
        row("X:1\nK:C\n[C|"_s, chord.arg(3).arg(3));
        row("X:1\nK:C\n[C{d}E]"_s, chord.arg(3).arg(3));
        row("X:1\nK:C\n[C*"_s, chord.arg(3).arg(3));
        row("X:1\nK:C\n[C\nK:D\n]"_s, chord.arg(4).arg(1));
        row("X:1\nK:C\n[C[E]]"_s, chord.arg(3).arg(3));
        row("X:1\nK:C\n(99999999999999C"_s, body.arg(3).arg(11));
    }
    void failsWithTheTokensPosition()
    {
        QFETCH(QString, text);
        QTEST(thrownByParsing(text), "expected");
    }
    void isAsNewAfterAFailure()
    {
        ABCParser parser;
        QVERIFY(!thrownBy([&] { parser.parse("X:1\nM:3/4\nK:D\n(3^F[F-A]^C-*"_s); }).isEmpty());
        QCOMPARE(parser.parse("X:2\nK:C\nFC|C"_s), parse("X:2\nK:C\nFC|C"_s));
    }

    void warnsInTheMessageLog_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const QString &text, const QString &function, const QString &message) {
            QTest::newRow(qPrintable((message + text).simplified()))
                << text
                << QStringLiteral("ABC/ABCParser | %1 | default | \"%2\"").arg(function, message);
        };
        const QString header = "uint ABCParser::parseKey()"_s;
        const QString event = "TrackEvent ABCParser::parseKey(const QString&)"_s;
        const QString tempo = "TrackEvent ABCParser::parseTempo(const QString&)"_s;
        const QString chord = "quint64 ABCParser::parseChord()"_s;
        row("K:Hm\n"_s, header, "Invalid tonic: H"_s);
        row("K:HP\n"_s, header, "Invalid tonic: H"_s);
        row("K:\n"_s, header, "Could not parse key: "_s);
        row("K:123\n"_s, header, "Could not parse key: 123"_s);
        row("X:1\n"_s, header, "Could not parse key: "_s);
        row("K:C\n[K:Hm]"_s, event, "Invalid tonic: 'H'"_s);
        row("K:C\n[K:4]"_s, event, "Could not parse key: '4'"_s);
        row("K:C\nC\nK: %1\n"_s, event, "Could not parse key: '%1'"_s);
        row("L:3/8\nK:C\n[Q:90]"_s, tempo, "Bad unit length: 3/8"_s);
        row("L:2\nK:C\n[Q:90]"_s, tempo, "Bad unit length: 2/1"_s);
        row("K:C\n[ ]"_s, chord, "Empty chord"_s);
        row("K:C\n[ "_s, chord, "Empty chord"_s);
    }
    void warnsInTheMessageLog()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        LogRecorder recorder;
        parse(text);
        QCOMPARE(LogRecorder::messages().join(QLatin1Char('\n')), expected);
    }
    void usesCMajorForKeysThatItCannotRead()
    {
        LogRecorder recorder;
        const Track track = parse("X:1\nK:Hm\nFB[K:Q]"_s);
        QCOMPARE(notes(track), "65@0+30240 71@30240+30240"_s);
        QCOMPARE(controls(track), "Key@60480 7 0"_s);
    }
    void acceptsAnEmptyText()
    {
        LogRecorder recorder;
        const Track track = parse(QString());
        QCOMPARE(track.eventCount(), 0);
        QCOMPARE(track.length(), quint64{0});
    }
};

QTEST_APPLESS_MAIN(TestABCParser)
#include "tst_ABCParser.moc"
