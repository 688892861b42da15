#include "ProgramRun.h"

#include <QtTest>

#include <array>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

class tst_Program : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void versionIsPrinted();
    void helpListsTheCommands();
    void helpExplainsACommand();
    void helpOfAGroupListsItsCommands();
    void helpWinsOverMissingArguments();
    void badUsageIsStatusTwo_data();
    void badUsageIsStatusTwo();
    void closedPipeEndsQuietly();
    void fullDiskIsReported();
    void closedOutputIsReported();
    void messagesKeepTheBytesOfFileNames();
    void startUpNeedsNoHome();

private:
    QTemporaryDir m_dir;
    QString m_tune;
};

void tst_Program::initTestCase()
{
    m_tune = m_dir.filePath(QStringLiteral("tune.abc"));
    makeFile(m_tune, "X:1\nT:A tune\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nCDEF|\n");
}

void tst_Program::versionIsPrinted()
{
    COMPARE_OUTCOME(runProgram(args({"--version"})), 0, "quillmoor-cli 0.8.5\n", "");
}

void tst_Program::helpListsTheCommands()
{
    COMPARE_OUTCOME(runProgram(args({"--help"})), 0, fileContents(QFINDTESTDATA("data/help.txt")),
                    "");
    COMPARE_OUTCOME(runProgram(args({"-h"})), 0, fileContents(QFINDTESTDATA("data/help.txt")), "");
}

void tst_Program::helpExplainsACommand()
{
    COMPARE_OUTCOME(runProgram(args({"render", "--help"})), 0,
                    fileContents(QFINDTESTDATA("data/help-render.txt")), "");
    COMPARE_OUTCOME(runProgram(args({"abc", "--help"})), 0,
                    fileContents(QFINDTESTDATA("data/help-abc.txt")), "");
}

void tst_Program::helpOfAGroupListsItsCommands()
{
    const ProgramRun::Outcome outcome = runProgram(args({"pak", "--help"}));
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.output.contains("  pak pack  Make an asset package of a directory.\n"));
    QVERIFY(!outcome.output.contains("render"));
}

void tst_Program::helpWinsOverMissingArguments()
{
    const ProgramRun::Outcome outcome = runProgram(args({"pak", "get", "--help"}));
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.output.startsWith("Usage: quillmoor-cli pak get [OPTION]... FILE PATH\n"));
}

void tst_Program::badUsageIsStatusTwo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("problem");
    QTest::addColumn<QByteArray>("command");

    const auto row = [](const char *name, const QStringList &arguments, const char *problem,
                        const char *command) {
        QTest::newRow(name) << arguments << QByteArray(problem) << QByteArray(command);
    };
    row("nothing", {}, "No command given.", "");
    row("empty", {QString()}, "No command given.", "");
    row("unknown command", args({"play-it"}), "Unknown command 'play-it'.", "");
    row("unknown command of a group", args({"pak", "x"}), "Unknown command 'pak x'.", "");
    row("group alone", args({"pak"}), "No command given.", "");
    row("unknown option", args({"--verbose"}), "Unknown option '--verbose'.", "");
    row("unknown option of a command", args({"events", "--x", "a"}), "Unknown option '--x'.",
        " events");
    row("no file", args({"events"}),
        "Too few arguments. Usage: quillmoor-cli events [OPTION]... FILE...", " events");
    row("too many", args({"pak", "list", "a", "b"}),
        "Too many arguments. Usage: quillmoor-cli pak list FILE", " pak list");
    row("no value", args({"abc", "a", "-o"}), "-o needs a value (FILE).", " abc");
}

void tst_Program::badUsageIsStatusTwo()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, problem);
    QFETCH(QByteArray, command);
    COMPARE_OUTCOME(runProgram(arguments), 2, "",
                    "quillmoor-cli: " + problem + "\nquillmoor-cli: Try 'quillmoor-cli" + command
                        + " --help'.\n");
}

void tst_Program::closedPipeEndsQuietly()
{
    std::array<int, 2> ends = {};
    QCOMPARE(pipe2(ends.data(), O_CLOEXEC), 0);
    close(ends[0]);
    ProgramRun program(args({"--version"}));
    program.inChild([&] { dup2(ends[1], STDOUT_FILENO); });
    COMPARE_OUTCOME(program.outcome(), 1, "", "");
    close(ends[1]);
}

void tst_Program::fullDiskIsReported()
{
    ProgramRun program(args({"--version"}));
    program.inChild([] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); });
    COMPARE_OUTCOME(program.outcome(), 1, "",
                    "quillmoor-cli: Could not write to standard output: No space left on device\n");
}

void tst_Program::closedOutputIsReported()
{
    ProgramRun program(args({"--version"}));
    program.inChild([] { close(STDOUT_FILENO); });
    COMPARE_OUTCOME(program.outcome(), 1, "",
                    "quillmoor-cli: Could not write to standard output: Bad file descriptor\n");
}

void tst_Program::messagesKeepTheBytesOfFileNames()
{
    COMPARE_OUTCOME(runProgram({QStringLiteral("a\u00e9") + QChar(0xDCFF)}), 2, "",
                    "quillmoor-cli: Unknown command 'a\xc3\xa9\xff'.\n"
                    "quillmoor-cli: Try 'quillmoor-cli --help'.\n");
}

void tst_Program::startUpNeedsNoHome()
{
    ProgramRun program(args({"events", "tune.abc"}));
    program.workingDirectory(m_dir.path());
    QCOMPARE(program.outcome().status, 0);
}

PROGRAM_TEST_MAIN(tst_Program)
#include "tst_Program.moc"
