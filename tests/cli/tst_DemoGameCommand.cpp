#include "ProgramRun.h"

#include <QDir>
#include <QDirIterator>
#include <QtTest>

class tst_DemoGameCommand : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void gameAndSongsAreReported();
    void gameHasInstruments();
    void partsOfASongRenderTogether();
    void unwritableDirectoryIsReported();

private:
    QString path(const char *name) const { return m_dir.filePath(QString::fromUtf8(name)); }

    QTemporaryDir m_dir;
    ProgramRun::Outcome m_made;
};

void tst_DemoGameCommand::initTestCase()
{
    ProgramRun program(args({"demo-game", "game", "--songs", "songs"}));
    m_made = program.workingDirectory(m_dir.path()).outcome();
}

void tst_DemoGameCommand::gameAndSongsAreReported()
{
    COMPARE_OUTCOME(m_made, 0, "{\"game\":\"game\",\"songs\":\"songs\"}\n", "");
    QVERIFY(QFile::exists(path("game/assets/packed.pak")));
    QVERIFY(QFile::exists(path("game/win32/quillmoor.exe")));
    QVERIFY(QDir(path("songs")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size() >= 4);
}

void tst_DemoGameCommand::gameHasInstruments()
{
    const ProgramRun::Outcome outcome =
        runProgram({QStringLiteral("instruments"), QStringLiteral("--game"), path("game")});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QByteArray());
    QVERIFY(outcome.output.count('\n') >= 10);
}

void tst_DemoGameCommand::partsOfASongRenderTogether()
{
    QDirIterator songs(path("songs"), QDir::Dirs | QDir::NoDotAndDotDot);
    while (songs.hasNext()) {
        const QDir song(songs.next());
        QStringList arguments{QStringLiteral("render"), QStringLiteral("--game"), path("game"),
                              path("out.wav")};
        for (const QFileInfo &part : song.entryInfoList({QStringLiteral("*.abc")}))
            arguments.append(part.filePath());
        const ProgramRun::Outcome outcome = runProgram(arguments);
        QCOMPARE(outcome.errors, QByteArray());
        QCOMPARE(outcome.status, 0);
        QVERIFY(QFileInfo(path("out.wav")).size() > 1000000);
    }
}

void tst_DemoGameCommand::unwritableDirectoryIsReported()
{
    makeFile(path("file"), "x");
    const ProgramRun::Outcome outcome = runProgram({QStringLiteral("demo-game"), path("file")});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.output, QByteArray());
    QVERIFY(outcome.errors.startsWith("quillmoor-cli: "));
}

PROGRAM_TEST_MAIN(tst_DemoGameCommand)
#include "tst_DemoGameCommand.moc"
