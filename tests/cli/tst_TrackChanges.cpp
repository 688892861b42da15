#include "ProgramRun.h"

#include <QtTest>

class tst_TrackChanges : public QObject {
    Q_OBJECT

private slots:
    void eachChangeIsApplied_data();
    void eachChangeIsApplied();
    void orderIsThatOfTheCommandLine_data();
    void orderIsThatOfTheCommandLine();
    void changesMayBeRepeated();
    void tempoStaysThatOfTheTune();
    void optionsMayFollowTheFile();
    void keyIsWrittenInItsUsualForm_data();
    void keyIsWrittenInItsUsualForm();
    void keyThatTheGameLacksIsNoted();
    void everyUnitLengthKeepsTheMusic_data();
    void everyUnitLengthKeepsTheMusic();
    void limitsThemselvesAreTaken_data();
    void limitsThemselvesAreTaken();
    void wrongValuesAreRefused_data();
    void wrongValuesAreRefused();
};

namespace {

/// A tune of quarter notes.
QByteArray tune(const QByteArray &notes)
{
    return "X:1\nT:A\nM:4/4\nL:1/4\nQ:1/4=90\nK:C\n" + notes + "\n";
}

ProgramRun::Outcome convert(const QStringList &options, const QByteArray &notes)
{
    return ProgramRun(args({"abc"}) + options + args({"-"})).input(tune(notes)).outcome();
}

/// The lines that the changes are seen by: unit length, key and notes.
QByteArray changed(const QStringList &options, const QByteArray &notes)
{
    QByteArrayList lines;
    for (const QByteArray &line : convert(options, notes).output.split('\n')) {
        if (!line.isEmpty() && !QByteArray("XTZMQ").contains(line.at(0)))
            lines.append(line.trimmed());
    }
    return lines.join('|');
}

/// The events that the text has.
QByteArray eventsOf(const QByteArray &text)
{
    const QByteArray line = ProgramRun(args({"events", "-"})).input(text).outcome().output;
    return line.mid(line.indexOf("\"length\""));
}

} // namespace

void tst_TrackChanges::eachChangeIsApplied_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("notes");
    QTest::addColumn<QByteArray>("expected");

    const auto row = [](const char *name, const QStringList &options, const char *notes,
                        const char *expected) {
        QTest::newRow(name) << options << QByteArray(notes) << QByteArray(expected);
    };
    row("transpose up", args({"--transpose", "2"}), "CD", "L: 1/4|K: C|D E");
    row("transpose down", args({"--transpose", "-12"}), "CD", "L: 1/4|K: C|C, D,");
    row("transpose by nothing", args({"--transpose=0"}), "CD", "L: 1/4|K: C|C D");
    row("transpose off the piano", args({"--transpose", "48"}), "Cc'", "L: 1/4|K: C|c'''");
    row("unit length", args({"--unit-length", "1/16"}), "CD/", "L: 1/16|K: C|C4 D2");
    row("key", args({"--key", "Eb"}), "CE_E", "L: 1/4|K: Eb|C =E _E");
    row("key in a minor mode", args({"--key", "c minor"}), "C_E", "L: 1/4|K: Cm|C E");
    row("realign to whole notes", args({"--realign", "0,0,0,0,0"}), "z3C", "L: 1/4|K: C|z4|C4");
    row("realign to halves", args({"--realign", "1,0,0,0,0"}), "z3/2C2", "L: 1/4|K: C|z2 C2");
    row("realign to triplets", args({"--realign", "0,2,0,0,0"}), "z/D", "L: 1/4|K: C|z2/3 D2/3");
    row("realign to quintuplets", args({"--realign", "0,0,1,0,0"}), "C", "L: 1/4|K: C|C4/5");
    row("realign to septuplets", args({"--realign", "0,0,0,1,0"}), "C", "L: 1/4|K: C|C8/7");
    row("realign to nonuplets", args({"--realign", "0,0,0,0,1"}), "C", "L: 1/4|K: C|C8/9");
    row("quick realign", args({"--quick-realign"}), "C7/240D", "L: 1/4|K: C|C/32 D");
    row("octave up", args({"--octave-up"}), "Cc", "L: 1/4|K: C|c c'");
    row("octave up at the end of the piano", args({"--octave-up"}), "c''^c''",
        "L: 1/4|K: C|c''' ^c''");
    row("octave down", args({"--octave-down"}), "Cc", "L: 1/4|K: C|C, C");
    row("octave down at the end of the piano", args({"--octave-down"}), "C,,,A,,,,",
        "L: 1/4|K: C|C,,, A,,,,");
}

void tst_TrackChanges::eachChangeIsApplied()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, notes);
    QFETCH(QByteArray, expected);
    QCOMPARE(changed(options, notes), expected);
}

void tst_TrackChanges::orderIsThatOfTheCommandLine_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("expected");

    const auto row = [](const char *name, const QStringList &options, const char *expected) {
        QTest::newRow(name) << options << QByteArray(expected);
    };
    // The notes are the lowest of the piano, a middle one and the highest.
    row("up, then down", args({"--transpose", "12", "--transpose", "-12"}), "L: 1/4|K: C|A,,,, C");
    row("down, then up", args({"--transpose", "-12", "--transpose", "12"}), "L: 1/4|K: C|z C c'''");
    row("octave up, then a step down", args({"--octave-up", "--transpose", "-1"}),
        "L: 1/4|K: C|^G,,, B b''");
    row("a step down, then octave up", args({"--transpose", "-1", "--octave-up"}),
        "L: 1/4|K: C|z B b''");
    row("halves, then thirds", args({"--realign", "1,0,0,0,0", "--realign", "0,1,0,0,0"}),
        "L: 1/4|K: C|[A,,,,4/3C4/3] c'''8/3");
    row("thirds, then halves", args({"--realign", "0,1,0,0,0", "--realign", "1,0,0,0,0"}),
        "L: 1/4|K: C|A,,,,2 [C2c'''2]");
    row("key, then unit length", args({"--key", "G", "--unit-length", "1/8"}),
        "L: 1/8|K: G|A,,,,2 C2 c'''2");
    row("unit length, then key", args({"--unit-length", "1/8", "--key", "G"}),
        "L: 1/8|K: G|A,,,,2 C2 c'''2");
    row("the last key counts", args({"--key", "G", "--key", "F"}), "L: 1/4|K: F|A,,,, C c'''");
}

void tst_TrackChanges::orderIsThatOfTheCommandLine()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, expected);
    QCOMPARE(changed(options, "A,,,,Cc'''"), expected);
}

void tst_TrackChanges::changesMayBeRepeated()
{
    QCOMPARE(
        changed(args({"--transpose", "1", "--transpose", "1", "--octave-up", "--octave-up"}), "C"),
        QByteArray("L: 1/4|K: C|d'"));
}

void tst_TrackChanges::tempoStaysThatOfTheTune()
{
    for (const char *const option : {"--octave-up", "--quick-realign", "--transpose=1"}) {
        const ProgramRun::Outcome outcome = convert(args({option}), "C[Q:1/4=120]D[Q:1/4=90]E");
        QVERIFY2(outcome.output.contains("\nQ: 1/4=90\n"), outcome.output);
        QVERIFY2(eventsOf(outcome.output).contains("\"bpm\":120,"), outcome.output);
        QVERIFY2(eventsOf(outcome.output).contains("\"bpm\":90,"), outcome.output);
    }
}

void tst_TrackChanges::optionsMayFollowTheFile()
{
    ProgramRun program(args({"abc", "-", "--transpose", "2"}));
    QVERIFY(program.input(tune("C")).outcome().output.endsWith("\nK: C\nD \n"));
}

void tst_TrackChanges::keyIsWrittenInItsUsualForm_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("line");

    const auto row = [](const char *value, const char *line) {
        QTest::newRow(value) << QString::fromUtf8(value) << QByteArray(line);
    };
    row("C", "K: C");
    row("f#", "K: F#");
    row("bb", "K: Bb");
    row("Bb maj", "K: Bb");
    row("c major", "K: C");
    row("C ion", "K: C");
    row("F# MINOR", "K: F#m");
    row("A aeo", "K: Am");
    row("Am", "K: Am");
    row(" Cb ", "K: Cb");
}

void tst_TrackChanges::keyIsWrittenInItsUsualForm()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, line);
    const ProgramRun::Outcome outcome = convert({QStringLiteral("--key"), value}, "C");
    QVERIFY2(outcome.output.contains('\n' + line + '\n'), outcome.output);
    QCOMPARE(outcome.errors, QByteArray());
}

void tst_TrackChanges::keyThatTheGameLacksIsNoted()
{
    const ProgramRun::Outcome outcome = convert(args({"--key", "d dorian"}), "D");
    QCOMPARE(outcome.errors,
             QByteArray("quillmoor-cli: --key: Ddor is a key that is not supported by "
                        "Quillmoor.\n"));
    QVERIFY2(outcome.output.endsWith("\nK: Ddor\nD \n"), outcome.output);
    QCOMPARE(outcome.status, 0);
}

void tst_TrackChanges::everyUnitLengthKeepsTheMusic_data()
{
    QTest::addColumn<QString>("unit");

    for (int division = 1; division <= 128; division *= 2)
        QTest::addRow("1/%d", division) << QStringLiteral("1/%1").arg(division);
}

void tst_TrackChanges::everyUnitLengthKeepsTheMusic()
{
    QFETCH(QString, unit);
    const QByteArray notes = "C/32 D4 E3/8 (3FGA [CE]5/16";
    const QByteArray text = convert({QStringLiteral("--unit-length"), unit}, notes).output;
    QVERIFY2(text.contains("\nL: " + unit.toLatin1() + '\n'), text);
    QCOMPARE(eventsOf(text), eventsOf(tune(notes)));
}

void tst_TrackChanges::limitsThemselvesAreTaken_data()
{
    QTest::addColumn<QStringList>("options");

    QTest::newRow("transpose -48") << args({"--transpose", "-48"});
    QTest::newRow("transpose 48") << args({"--transpose", "48"});
    QTest::newRow("realign, all lowest") << args({"--realign", "0,0,0,0,0"});
    QTest::newRow("realign, all highest") << args({"--realign", "7,6,5,5,4"});
}

void tst_TrackChanges::limitsThemselvesAreTaken()
{
    QFETCH(QStringList, options);
    const ProgramRun::Outcome outcome = convert(options, "C");
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 0);
}

void tst_TrackChanges::wrongValuesAreRefused_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("problem");

    const auto row = [](const char *option, const char *value, const QByteArray &problem) {
        QTest::addRow("%s=%s", option, value)
            << QString::fromUtf8(option) << QString::fromUtf8(value) << problem;
    };
    row("--transpose", "49", "'49' is not a whole number from -48 to 48.");
    row("--transpose", "-49", "'-49' is not a whole number from -48 to 48.");
    row("--transpose", "1.5", "'1.5' is not a whole number from -48 to 48.");
    row("--transpose", "", "'' is not a whole number from -48 to 48.");
    row("--transpose", "99999999999", "'99999999999' is not a whole number from -48 to 48.");
    for (const char *const unit : {"1/7", "1/256", "1/0", "2/4", "1", "1/8 ", "", "x"})
        row("--unit-length", unit,
            "'" + QByteArray(unit)
                + "' is not one of 1/1, 1/2, 1/4, 1/8, 1/16, 1/32, 1/64, 1/128.");
    for (const char *const key : {"", "H", "none", "E flat", "clef=bass", "Fbm", "Em7", "3#"})
        row("--key", key, "'" + QByteArray(key) + "' is not a key such as C, F#m or Bb.");
    row("--realign", "8,0,0,0,0", "R: '8' is not a whole number from 0 to 7.");
    row("--realign", "0,7,0,0,0", "T: '7' is not a whole number from 0 to 6.");
    row("--realign", "0,0,6,0,0", "Q: '6' is not a whole number from 0 to 5.");
    row("--realign", "0,0,0,6,0", "S: '6' is not a whole number from 0 to 5.");
    row("--realign", "0,0,0,0,5", "N: '5' is not a whole number from 0 to 4.");
    row("--realign", "-1,0,0,0,0", "R: '-1' is not a whole number from 0 to 7.");
    row("--realign", "1,x,0,0,0", "T: 'x' is not a whole number from 0 to 6.");
    row("--realign", "1,,0,0,0", "T: '' is not a whole number from 0 to 6.");
    row("--realign", "7,6,5,5", "'7,6,5,5' is not five positions R,T,Q,S,N.");
    row("--realign", "7,6,5,5,4,0", "'7,6,5,5,4,0' is not five positions R,T,Q,S,N.");
    row("--realign", "", "'' is not five positions R,T,Q,S,N.");
}

void tst_TrackChanges::wrongValuesAreRefused()
{
    QFETCH(QString, option);
    QFETCH(QString, value);
    QFETCH(QByteArray, problem);
    COMPARE_OUTCOME(convert({option, value}, "C"), 2, "",
                    "quillmoor-cli: " + option.toLatin1() + ": " + problem
                        + "\nquillmoor-cli: Try 'quillmoor-cli abc --help'.\n");
}

PROGRAM_TEST_MAIN(tst_TrackChanges)
#include "tst_TrackChanges.moc"
