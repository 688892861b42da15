#include "ProgramRun.h"

#include <QDir>
#include <QtTest>

class tst_AbcCommand : public QObject {
    Q_OBJECT

private slots:
    void init();

    void textGoesToStandardOutput();
    void tunesAreSeparatedByAnEmptyLine();
    void textReadsBackAsTheSameMusic();
    void textGoesIntoAFile();
    void textGoesIntoADirectory();
    void directoryIsMade();
    void existingFileIsReplaced();
    void otherFilesSurviveAFailingOne();
    void inputIsNeverOverwritten();
    void twoFilesNeverShareAPlace();
    void unwritablePlacesAreReported();
    void devicesAreWrittenTo();
    void wrongCombinationsAreBadUsage();
    void anyFileNameWorks();

private:
    ProgramRun::Outcome run(const QStringList &arguments);
    QByteArray file(const char *name)
    {
        return fileContents(m_dir->filePath(QString::fromUtf8(name)));
    }

    QScopedPointer<QTemporaryDir> m_dir;
};

namespace {

const QByteArray TuneA = "X:1\nT:A\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nCD\n";
const QByteArray TuneB = "X:1\nT:B\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nEF\n";

} // namespace

void tst_AbcCommand::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("sub")));
    makeFile(m_dir->filePath(QStringLiteral("a.abc")), TuneA);
    makeFile(m_dir->filePath(QStringLiteral("b.abc")), TuneB);
    makeFile(m_dir->filePath(QStringLiteral("sub/a.abc")), TuneB);
    makeFile(m_dir->filePath(QStringLiteral("bad.abc")), "no tune at all");
}

ProgramRun::Outcome tst_AbcCommand::run(const QStringList &arguments)
{
    return ProgramRun(args({"abc"}) + arguments).workingDirectory(m_dir->path()).outcome();
}

void tst_AbcCommand::textGoesToStandardOutput()
{
    const ProgramRun::Outcome outcome = run(args({"a.abc"}));
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QByteArray());
    QVERIFY2(outcome.output.contains("T:A"), outcome.output);
    QVERIFY(outcome.output != TuneA); // made anew, not passed through
    QCOMPARE(run(args({"a.abc", "-o", "-"})).output, outcome.output);
}

void tst_AbcCommand::tunesAreSeparatedByAnEmptyLine()
{
    const QByteArray a = run(args({"a.abc"})).output;
    const QByteArray b = run(args({"b.abc"})).output;
    QVERIFY(a.endsWith('\n') && !a.endsWith("\n\n"));
    QCOMPARE(run(args({"a.abc", "b.abc"})).output, a + "\n" + b);
}

void tst_AbcCommand::textReadsBackAsTheSameMusic()
{
    COMPARE_OUTCOME(run(args({"a.abc", "-o", "again.abc"})), 0,
                    "{\"file\":\"a.abc\",\"output\":\"again.abc\"}\n", "");
    const auto eventsOf = [this](const char *name) {
        ProgramRun program(args({"events", name}));
        const QByteArray line = program.workingDirectory(m_dir->path()).outcome().output;
        return line.mid(line.indexOf("\"events\""));
    };
    QVERIFY(eventsOf("a.abc").contains("\"note\":62"));
    QCOMPARE(eventsOf("again.abc"), eventsOf("a.abc"));
}

void tst_AbcCommand::textGoesIntoAFile()
{
    COMPARE_OUTCOME(run(args({"-o", "out.abc", "a.abc"})), 0,
                    "{\"file\":\"a.abc\",\"output\":\"out.abc\"}\n", "");
    QCOMPARE(file("out.abc"), run(args({"a.abc"})).output);
}

void tst_AbcCommand::textGoesIntoADirectory()
{
    makeFile(m_dir->filePath(QStringLiteral("c.d.txt")), TuneA);
    COMPARE_OUTCOME(run(args({"--output-dir", "sub/x", "a.abc", "b.abc", "c.d.txt"})), 0,
                    "{\"file\":\"a.abc\",\"output\":\"sub/x/a.abc\"}\n"
                    "{\"file\":\"b.abc\",\"output\":\"sub/x/b.abc\"}\n"
                    "{\"file\":\"c.d.txt\",\"output\":\"sub/x/c.d.abc\"}\n",
                    "");
    QCOMPARE(listing(m_dir->filePath(QStringLiteral("sub/x"))),
             args({"a.abc", "b.abc", "c.d.abc"}));
    QCOMPARE(file("sub/x/b.abc"), run(args({"b.abc"})).output);
}

void tst_AbcCommand::directoryIsMade()
{
    QCOMPARE(run(args({"a.abc", "--output-dir=x/y"})).status, 0);
    QCOMPARE(listing(m_dir->filePath(QStringLiteral("x/y"))), args({"a.abc"}));
}

void tst_AbcCommand::existingFileIsReplaced()
{
    makeFile(m_dir->filePath(QStringLiteral("out.abc")), QByteArray(10000, 'x'));
    QCOMPARE(run(args({"-o", "out.abc", "a.abc"})).status, 0);
    QCOMPARE(file("out.abc"), run(args({"a.abc"})).output);
}

void tst_AbcCommand::otherFilesSurviveAFailingOne()
{
    const ProgramRun::Outcome outcome =
        run(args({"missing.abc", "bad.abc", "a.abc", "--output-dir", "x"}));
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.startsWith("quillmoor-cli: missing.abc: Could not open file.\n"
                                       "quillmoor-cli: bad.abc: "),
             outcome.errors);
    QCOMPARE(listing(m_dir->filePath(QStringLiteral("x"))), args({"a.abc"}));
}

void tst_AbcCommand::inputIsNeverOverwritten()
{
    COMPARE_OUTCOME(run(args({"a.abc", "-o", "./a.abc"})), 1, "",
                    "quillmoor-cli: ./a.abc is an input file.\n");
    COMPARE_OUTCOME(run(args({"a.abc", "b.abc", "--output-dir", "."})), 1, "",
                    "quillmoor-cli: ./a.abc is an input file.\n");
    // One file's output may be the other's input.
    COMPARE_OUTCOME(run(args({"b.abc", "sub/a.abc", "--output-dir", "sub/../sub"})), 1, "",
                    "quillmoor-cli: sub/../sub/a.abc is an input file.\n");
    QVERIFY(QFile::link(QStringLiteral("a.abc"), m_dir->filePath(QStringLiteral("link.abc"))));
    COMPARE_OUTCOME(run(args({"a.abc", "-o", "link.abc"})), 1, "",
                    "quillmoor-cli: link.abc is an input file.\n");
    QCOMPARE(file("a.abc"), TuneA);
    QCOMPARE(file("b.abc"), TuneB);
    QCOMPARE(file("sub/a.abc"), TuneB);
}

void tst_AbcCommand::twoFilesNeverShareAPlace()
{
    COMPARE_OUTCOME(run(args({"a.abc", "sub/a.abc", "--output-dir", "x"})), 1, "",
                    "quillmoor-cli: a.abc and sub/a.abc would both be written to x/a.abc.\n");
    QVERIFY(!QFile::exists(m_dir->filePath(QStringLiteral("x/a.abc"))));
}

void tst_AbcCommand::unwritablePlacesAreReported()
{
    const ProgramRun::Outcome directory = run(args({"a.abc", "-o", "sub"}));
    QCOMPARE(directory.status, 1);
    QVERIFY2(directory.errors.startsWith("quillmoor-cli: Could not write sub: "), directory.errors);
    const ProgramRun::Outcome missing = run(args({"a.abc", "-o", "none/a.abc"}));
    COMPARE_OUTCOME(missing, 1, "",
                    "quillmoor-cli: Could not write none/a.abc: No such file or directory\n");
    COMPARE_OUTCOME(run(args({"a.abc", "--output-dir", "b.abc"})), 1, "",
                    "quillmoor-cli: Could not create the directory b.abc.\n");
    QCOMPARE(file("b.abc"), TuneB);
}

void tst_AbcCommand::devicesAreWrittenTo()
{
    QVERIFY(QFile::link(QStringLiteral("/dev/null"), m_dir->filePath(QStringLiteral("null"))));
    QCOMPARE(run(args({"a.abc", "-o", "null"})).status, 0);
    QCOMPARE(QFile::symLinkTarget(m_dir->filePath(QStringLiteral("null"))),
             QStringLiteral("/dev/null"));
    QVERIFY(!QFileInfo(QStringLiteral("/dev/null")).isFile());
    COMPARE_OUTCOME(run(args({"a.abc", "-o", "/dev/full"})), 1, "",
                    "quillmoor-cli: Could not write /dev/full: No space left on device\n");
}

void tst_AbcCommand::wrongCombinationsAreBadUsage()
{
    COMPARE_OUTCOME(run(args({"a.abc", "-o", "x", "--output-dir", "y"})), 2, "",
                    "quillmoor-cli: -o and --output-dir exclude each other.\n"
                    "quillmoor-cli: Try 'quillmoor-cli abc --help'.\n");
    COMPARE_OUTCOME(run(args({"a.abc", "b.abc", "-o", "x"})), 2, "",
                    "quillmoor-cli: -o takes the tune of one file; use --output-dir.\n"
                    "quillmoor-cli: Try 'quillmoor-cli abc --help'.\n");
}

void tst_AbcCommand::anyFileNameWorks()
{
    const QString name = FileNameCodec::decode("\xff\xe9.abc");
    makeFile(m_dir->filePath(name), TuneA);
    COMPARE_OUTCOME(run({name, QStringLiteral("--output-dir"), QStringLiteral("x")}), 0,
                    "{\"file\":\"\\udcff\\udce9.abc\",\"output\":\"x/\\udcff\\udce9.abc\"}\n", "");
    QCOMPARE(listing(m_dir->filePath(QStringLiteral("x"))), QStringList(name));
}

PROGRAM_TEST_MAIN(tst_AbcCommand)
#include "tst_AbcCommand.moc"
