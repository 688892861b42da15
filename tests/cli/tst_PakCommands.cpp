#include "ProgramRun.h"

#include <QDir>
#include <QtTest>

#include <sys/stat.h>

class tst_PakCommands : public QObject {
    Q_OBJECT

private slots:
    void init();

    void packReportsWhatItWrote();
    void packGivesTheSameBytesAgain();
    void packLeavesOutItsOwnOutput();
    void packFollowsNoLinkToADirectory();
    void packTakesHiddenAndLinkedFiles();
    void packLeavesOutPipes();
    void packOfAnEmptyDirectoryHasNoFiles();
    void packRefusesNamesThatAreNoText();
    void packReportsFilesItCannotRead();
    void packNeedsADirectory();
    void packKeepsTheOldPackageWhenItFails();
    void listPrintsThePaths();
    void getWritesTheExactBytes();
    void getWritesIntoAFile();
    void getOfAMissingPathWritesNothing();
    void getRefusesToReplaceThePackage();
    void hasAnswersByTextAndStatus();
    void damagedPackagesAreReported_data();
    void damagedPackagesAreReported();

private:
    QString path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    ProgramRun::Outcome run(const QStringList &arguments);

    QScopedPointer<QTemporaryDir> m_dir;
    QByteArray m_binary;
};

void tst_PakCommands::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("tree/items/deep")));
    m_binary.clear();
    for (int i = 0; i < 100000; ++i)
        m_binary.append(static_cast<char>(i * 7));
    makeFile(path("tree/items/deep/b.bin"), m_binary);
    makeFile(path("tree/items/a.txt"), "a text\r\n");
    makeFile(path("tree/empty"), {});
}

ProgramRun::Outcome tst_PakCommands::run(const QStringList &arguments)
{
    return ProgramRun(args({"pak"}) + arguments).workingDirectory(m_dir->path()).outcome();
}

void tst_PakCommands::packReportsWhatItWrote()
{
    const ProgramRun::Outcome outcome = run(args({"pack", "out.pak", "tree"}));
    const QByteArray size = QByteArray::number(QFileInfo(path("out.pak")).size());
    COMPARE_OUTCOME(outcome, 0, "{\"file\":\"out.pak\",\"files\":3,\"bytes\":" + size + "}\n", "");
    QVERIFY(size.toInt() > m_binary.size());
    QCOMPARE(listing(m_dir->path()), args({"out.pak", "tree"}));
}

void tst_PakCommands::packGivesTheSameBytesAgain()
{
    run(args({"pack", "one.pak", "tree"}));
    run(args({"pack", "two.pak", "tree/"}));
    QCOMPARE(fileContents(path("one.pak")), fileContents(path("two.pak")));
}

void tst_PakCommands::packLeavesOutItsOwnOutput()
{
    QCOMPARE(run(args({"pack", "tree/out.pak", "tree"})).status, 0);
    const QByteArray first = fileContents(path("tree/out.pak"));
    QVERIFY(run(args({"pack", "tree/out.pak", "tree"})).output.contains("\"files\":3,"));
    QCOMPARE(fileContents(path("tree/out.pak")), first);
}

void tst_PakCommands::packFollowsNoLinkToADirectory()
{
    QVERIFY(QFile::link(path("tree"), path("tree/items/loop")));
    QVERIFY(run(args({"pack", "out.pak", "tree"})).output.contains("\"files\":3,"));
}

void tst_PakCommands::packTakesHiddenAndLinkedFiles()
{
    makeFile(path("tree/.hidden"), "h");
    QVERIFY(QFile::link(path("tree/items/a.txt"), path("tree/link.txt")));
    QVERIFY(run(args({"pack", "out.pak", "tree"})).output.contains("\"files\":5,"));
    COMPARE_OUTCOME(run(args({"get", "out.pak", "/link.txt"})), 0, "a text\r\n", "");
}

void tst_PakCommands::packLeavesOutPipes()
{
    QCOMPARE(mkfifo(path("tree/pipe").toLocal8Bit().constData(), 0600), 0);
    QVERIFY(QFile::link(path("tree/pipe"), path("tree/link")));
    QVERIFY(run(args({"pack", "out.pak", "tree"})).output.contains("\"files\":3,"));
}

void tst_PakCommands::packOfAnEmptyDirectoryHasNoFiles()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("none")));
    QVERIFY(run(args({"pack", "out.pak", "none"})).output.contains("\"files\":0,"));
    COMPARE_OUTCOME(run(args({"list", "out.pak"})), 0, "", "");
}

void tst_PakCommands::packRefusesNamesThatAreNoText()
{
    makeFile(m_dir->filePath(FileNameCodec::decode("tree/\xff")), "x");
    COMPARE_OUTCOME(run(args({"pack", "out.pak", "tree"})), 1, "",
                    "quillmoor-cli: The name of tree/\xff is not valid UTF-8.\n");
    QVERIFY(!QFile::exists(path("out.pak")));
}

void tst_PakCommands::packReportsFilesItCannotRead()
{
    QVERIFY(QFile::link(QStringLiteral("/proc/self/mem"), path("tree/unreadable")));
    COMPARE_OUTCOME(run(args({"pack", "out.pak", "tree"})), 1, "",
                    "quillmoor-cli: tree/unreadable: Could not open file.\n");
}

void tst_PakCommands::packNeedsADirectory()
{
    COMPARE_OUTCOME(run(args({"pack", "out.pak", "nowhere"})), 1, "",
                    "quillmoor-cli: nowhere is not a directory.\n");
    COMPARE_OUTCOME(run(args({"pack", "/dev/null", "tree"})), 1, "",
                    "quillmoor-cli: /dev/null is not a regular file.\n");
}

void tst_PakCommands::packKeepsTheOldPackageWhenItFails()
{
    run(args({"pack", "out.pak", "tree"}));
    const QByteArray before = fileContents(path("out.pak"));
    QVERIFY(QFile::link(QStringLiteral("/proc/self/mem"), path("tree/unreadable")));
    QCOMPARE(run(args({"pack", "out.pak", "tree"})).status, 1);
    QCOMPARE(fileContents(path("out.pak")), before);
    QCOMPARE(run(args({"pack", "tree", "tree/items/deep"})).status, 1); // OUT is a directory
    QCOMPARE(listing(path("tree")), args({"empty", "items", "unreadable"}));
}

void tst_PakCommands::listPrintsThePaths()
{
    run(args({"pack", "out.pak", "tree"}));
    const ProgramRun::Outcome outcome = run(args({"list", "out.pak"}));
    QByteArrayList lines = outcome.output.split('\n');
    std::sort(lines.begin(), lines.end());
    QCOMPARE(lines,
             QByteArrayList({"", "{\"path\":\"/empty\"}", "{\"path\":\"/items/a.txt\"}",
                             "{\"path\":\"/items/deep/b.bin\"}"}));
    QCOMPARE(outcome.status, 0);
}

void tst_PakCommands::getWritesTheExactBytes()
{
    run(args({"pack", "out.pak", "tree"}));
    COMPARE_OUTCOME(run(args({"get", "out.pak", "/items/deep/b.bin"})), 0, m_binary, "");
    COMPARE_OUTCOME(run(args({"get", "out.pak", "/empty"})), 0, "", "");
}

void tst_PakCommands::getWritesIntoAFile()
{
    run(args({"pack", "out.pak", "tree"}));
    COMPARE_OUTCOME(run(args({"get", "out.pak", "/items/deep/b.bin", "-o", "b.bin"})), 0, "", "");
    QCOMPARE(fileContents(path("b.bin")), m_binary);
}

void tst_PakCommands::getOfAMissingPathWritesNothing()
{
    run(args({"pack", "out.pak", "tree"}));
    COMPARE_OUTCOME(run(args({"get", "out.pak", "items/a.txt", "-o", "x"})), 1, "",
                    "quillmoor-cli: File not found\n");
    QVERIFY(!QFile::exists(path("x")));
}

void tst_PakCommands::getRefusesToReplaceThePackage()
{
    run(args({"pack", "out.pak", "tree"}));
    COMPARE_OUTCOME(run(args({"get", "out.pak", "/empty", "-o", "./out.pak"})), 1, "",
                    "quillmoor-cli: ./out.pak is the package itself.\n");
}

void tst_PakCommands::hasAnswersByTextAndStatus()
{
    run(args({"pack", "out.pak", "tree"}));
    COMPARE_OUTCOME(run(args({"has", "out.pak", "/items/a.txt"})), 0, "true\n", "");
    COMPARE_OUTCOME(run(args({"has", "out.pak", "/items/A.txt"})), 1, "false\n", "");
}

void tst_PakCommands::damagedPackagesAreReported_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("list") << args({"list", "bad.pak"});
    QTest::newRow("get") << args({"get", "bad.pak", "/a"});
    QTest::newRow("has") << args({"has", "bad.pak", "/a"});
}

void tst_PakCommands::damagedPackagesAreReported()
{
    QFETCH(QStringList, arguments);
    makeFile(path("bad.pak"), "no package");
    COMPARE_OUTCOME(run(arguments), 1, "", "quillmoor-cli: Invalid Block File Header.\n");
}

PROGRAM_TEST_MAIN(tst_PakCommands)
#include "tst_PakCommands.moc"
