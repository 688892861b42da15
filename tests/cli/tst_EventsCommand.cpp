#include "ProgramRun.h"

#include <QtTest>

class tst_EventsCommand : public QObject {
    Q_OBJECT

private slots:
    void init();

    void tuneIsPrintedAsOneObject();
    void everyKindOfEventHasItsMembers();
    void headersAreInTheOrderOfTheModel();
    void sixtyFourBitNumbersAreExact();
    void fileIsNamedAsGiven();
    void failingFilesDoNotStopTheOthers();
    void directoryCannotBeOpened();
    void parserErrorsAreReported();
    void parserWarningsNameTheFile();
    void repeatedWarningsAreCounted();
    void textEndsAtTheFirstNul();
    void endlessInputOfNulsIsAnEmptyText();
    void standardInputIsADash();
    void anyFileNameWorks_data();
    void anyFileNameWorks();
    void fileNameMayLookLikeAnOption();
    void readerMayGoAway();

private:
    QString tune(const QString &name, const QByteArray &text);

    QScopedPointer<QTemporaryDir> m_dir;
};

namespace {

const QByteArray Simple = "X:1\nT:A\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nC\n";

QByteArray simpleObject(const QByteArray &file)
{
    return "{\"file\":\"" + file
        + "\",\"track\":1,\"headers\":{\"K\":[\"C\"],\"L\":[\"1/4\"],\"M\":[\"4/4\"],"
          "\"Q\":[\"1/4=120\"],\"T\":[\"A\"],\"X\":[\"1\"]},\"ticksPerMinute\":3628800,"
          "\"measureLength\":120960,\"beatsPerMeasure\":4,\"length\":30240,\"noteCount\":1,"
          "\"events\":[{\"type\":\"Note\",\"time\":0,\"note\":60,\"duration\":30240}]}\n";
}

} // namespace

void tst_EventsCommand::init()
{
    m_dir.reset(new QTemporaryDir);
}

QString tst_EventsCommand::tune(const QString &name, const QByteArray &text)
{
    QString path = m_dir->filePath(name);
    makeFile(path, text);
    return path;
}

void tst_EventsCommand::tuneIsPrintedAsOneObject()
{
    const QString path = tune(QStringLiteral("a.abc"), Simple);
    COMPARE_OUTCOME(runProgram({QStringLiteral("events"), path}), 0, simpleObject(path.toUtf8()),
                    "");
}

void tst_EventsCommand::everyKindOfEventHasItsMembers()
{
    const QString path =
        tune(QStringLiteral("a.abc"),
             "X:1\nT:A\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nC\nQ:1/4=60\nK:Gmin\nL:1/8\nM:3/4\nD\n");
    const ProgramRun::Outcome outcome = runProgram({QStringLiteral("events"), path});
    QCOMPARE(outcome.status, 0);
    const int events = outcome.output.indexOf("\"events\":");
    QCOMPARE(outcome.output.mid(events),
             QByteArray("\"events\":[{\"type\":\"Note\",\"time\":0,\"note\":60,\"duration\":30240},"
                        "{\"type\":\"Tempo\",\"time\":30240,\"num\":1,\"den\":4,\"bpm\":60,"
                        "\"ticksPerMinute\":1814400},"
                        "{\"type\":\"Key\",\"time\":30240,\"key\":9,\"mode\":1},"
                        "{\"type\":\"UnitLength\",\"time\":30240,\"num\":1,\"den\":8},"
                        "{\"type\":\"Meter\",\"time\":30240,\"num\":3,\"den\":4},"
                        "{\"type\":\"Note\",\"time\":30240,\"note\":62,\"duration\":15120}]}\n"));
}

void tst_EventsCommand::headersAreInTheOrderOfTheModel()
{
    const QString path = tune(QStringLiteral("a.abc"), "X:1\nT:older\nT:newest\nK:C\nC\n");
    const ProgramRun::Outcome outcome = runProgram({QStringLiteral("events"), path});
    QVERIFY(outcome.output.contains("\"T\":[\"newest\",\"older\"]"));
}

void tst_EventsCommand::sixtyFourBitNumbersAreExact()
{
    // Longer than the integers that a double holds exactly would need hours of notes; a tempo
    // wraps at 32 bits, so its ticks stay below. The digits of both are still all there.
    const QString path = tune(QStringLiteral("a.abc"), "X:1\nT:A\nL:1/1\nQ:1/1=35507\nK:C\nC\n");
    const ProgramRun::Outcome outcome = runProgram({QStringLiteral("events"), path});
    QVERIFY2(outcome.output.contains("\"ticksPerMinute\":4294926720,"), outcome.output);
}

void tst_EventsCommand::fileIsNamedAsGiven()
{
    tune(QStringLiteral("a.abc"), Simple);
    ProgramRun program(args({"events", "./a.abc"}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, simpleObject("./a.abc"),
                    "");
}

void tst_EventsCommand::failingFilesDoNotStopTheOthers()
{
    tune(QStringLiteral("a.abc"), Simple);
    ProgramRun program(args({"events", "missing.abc", "a.abc", ""}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 1,
                    "{\"file\":\"missing.abc\",\"error\":\"Could not open file.\"}\n"
                        + simpleObject("a.abc")
                        + "{\"file\":\"\",\"error\":\"Could not open file.\"}\n",
                    "");
}

void tst_EventsCommand::directoryCannotBeOpened()
{
    COMPARE_OUTCOME(runProgram(args({"events", "/"})), 1,
                    "{\"file\":\"/\",\"error\":\"Could not open file.\"}\n", "");
}

void tst_EventsCommand::parserErrorsAreReported()
{
    tune(QStringLiteral("a.abc"), "no tune at all");
    ProgramRun program(args({"events", "a.abc"}));
    const ProgramRun::Outcome outcome = program.workingDirectory(m_dir->path()).outcome();
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.output.startsWith("{\"file\":\"a.abc\",\"error\":\""), outcome.output);
    QCOMPARE(outcome.output.count('\n'), 1);
    QCOMPARE(outcome.errors, QByteArray());
}

void tst_EventsCommand::parserWarningsNameTheFile()
{
    tune(QStringLiteral("a.abc"), "X:1\nT:A\nK:?\nC\n");
    ProgramRun program(args({"events", "a.abc"}));
    const ProgramRun::Outcome outcome = program.workingDirectory(m_dir->path()).outcome();
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QByteArray("quillmoor-cli: a.abc: \"Could not parse key: ?\"\n"));
}

void tst_EventsCommand::repeatedWarningsAreCounted()
{
    tune(QStringLiteral("a.abc"), "X:1\nT:A\nK:C\nC\nK:?\nC\nK:?\nC\nK:?\nC\n");
    ProgramRun program(args({"events", "a.abc", "missing.abc"}));
    const ProgramRun::Outcome outcome = program.workingDirectory(m_dir->path()).outcome();
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.errors,
             QByteArray("quillmoor-cli: a.abc: \"Could not parse key: '?'\"\n"
                        "quillmoor-cli: (the last warning came 2 more times)\n"));
}

void tst_EventsCommand::textEndsAtTheFirstNul()
{
    tune(QStringLiteral("a.abc"), Simple + QByteArray(1, '\0') + "K:nonsense\nDDD");
    ProgramRun program(args({"events", "a.abc"}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, simpleObject("a.abc"),
                    "");
}

void tst_EventsCommand::endlessInputOfNulsIsAnEmptyText()
{
    tune(QStringLiteral("empty.abc"), {});
    ProgramRun ofNuls(args({"events", "/dev/zero"}));
    ProgramRun ofNothing(args({"events", "empty.abc"}));
    const ProgramRun::Outcome nuls = ofNuls.outcome();
    const ProgramRun::Outcome nothing = ofNothing.workingDirectory(m_dir->path()).outcome();
    QCOMPARE(nuls.status, nothing.status);
    QCOMPARE(QByteArray(nuls.output).replace("/dev/zero", "empty.abc"), nothing.output);
}

void tst_EventsCommand::standardInputIsADash()
{
    COMPARE_OUTCOME(ProgramRun(args({"events", "-"})).input(Simple).outcome(), 0, simpleObject("-"),
                    "");
}

void tst_EventsCommand::anyFileNameWorks_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("printed");

    QTest::newRow("UTF-8") << QByteArray("\xc3\xa9.abc") << QByteArray("\xc3\xa9.abc");
    QTest::newRow("Latin-1") << QByteArray("caf\xe9.abc") << QByteArray("caf\\udce9.abc");
    QTest::newRow("overlong") << QByteArray("\xc0\xaf.abc") << QByteArray("\\udcc0\\udcaf.abc");
    QTest::newRow("line feed") << QByteArray("a\nb.abc") << QByteArray("a\\nb.abc");
    QTest::newRow("four bytes") << QByteArray("\xf0\x9d\x84\x9e.abc")
                                << QByteArray("\xf0\x9d\x84\x9e.abc");
}

void tst_EventsCommand::anyFileNameWorks()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, printed);
    tune(FileNameCodec::decode(name), Simple);
    ProgramRun program({QStringLiteral("events"), FileNameCodec::decode(name)});
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, simpleObject(printed),
                    "");
}

void tst_EventsCommand::fileNameMayLookLikeAnOption()
{
    tune(QStringLiteral("--help"), Simple);
    ProgramRun program(args({"events", "--", "--help"}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, simpleObject("--help"),
                    "");
}

void tst_EventsCommand::readerMayGoAway()
{
    QStringList arguments = args({"events"});
    const QString path = tune(QStringLiteral("a.abc"), Simple);
    while (arguments.size() < 5000) // more than a pipe holds
        arguments.append(path);
    QProcess pipeline;
    pipeline.start(QStringLiteral("/bin/sh"),
                   QStringList{QStringLiteral("-c"),
                               QStringLiteral("{ \"$@\"; echo status $? >&2; } | head -n 1"),
                               QStringLiteral("sh"), QStringLiteral(QUILLMOOR_CLI)}
                       + arguments);
    QVERIFY(pipeline.waitForFinished());
    QCOMPARE(pipeline.readAllStandardOutput(), simpleObject(path.toUtf8()));
    QCOMPARE(pipeline.readAllStandardError(), QByteArray("status 1\n"));
}

PROGRAM_TEST_MAIN(tst_EventsCommand)
#include "tst_EventsCommand.moc"
