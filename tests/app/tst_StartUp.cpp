#include "support/ProcessRun.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>

#include <unistd.h>

/// The built program as a user meets it, with a home directory of its own for each test.
class tst_StartUp : public QObject {
    Q_OBJECT

private slots:
    void init();

    void helpAndVersionNeedNoDisplay_data();
    void helpAndVersionNeedNoDisplay();
    void badUsageIsStatusTwo();
    void withoutDisplayAMessageTellsSo();
    void optionsOfQtWork();

    void aStoredDirectoryIsUsed();
    void theUsualDirectoryIsFoundAndStored();
    void aStoredDirectoryThatIsNoGameIsNotTrusted();
    void aStoredEmptyDirectoryIsNotTrusted();
    void theUserIsAskedWhereNothingIsFound();
    void aWrongChoiceIsRejectedAndAskedAgain();
    void cancellingEndsWithStatusOne();
    void aLinkedDirectoryIsStoredByItsRealPath();
    void aDirectoryOfAnyNameIsStored();

    void theGameOfThisRunIsNotStored_data();
    void theGameOfThisRunIsNotStored();
    void theOptionGoesBeforeTheVariable();
    void aWrongGameEndsWithAMessage();

    void filesAreOpenedInTheWindow();
    void fileNamesMayBeAnyBytes();
    void eachFileThatCannotBeReadHasItsBox();
    void theDialogsDirectoryIsKept();
    void textIsUtf8WhateverTheLocale();

    void thrownTextEndsTheProgram();
    void anythingElseThrownEndsTheProgram();
    void aFailureEndsOpenDialogs();
    void aFailureWhileAskingEndsTheProgram();
    void instrumentsThatCannotBeReadEndTheProgram();

    void aSignalRemovesAnUnfinishedExport();
    void aSignalEndsOpenDialogs_data();
    void aSignalEndsOpenDialogs();
    void nobodyNeedsToReadTheMessages();

private:
    /// What comes of the program after these steps of the robot.
    ProcessRun::Outcome outcome(const QStringList &arguments, const QStringList &robot);
    void prepare(ProcessRun &run, const QStringList &robot) const;
    static ProcessRun::Outcome outcome(ProcessRun &run);
    QString path(const char *name) const { return m_home->filePath(QString::fromUtf8(name)); }
    QString makeGame(const char *name);
    QString makeUsualGame() { return makeGame(".steam/root/SteamApps/common/Quillmoor"); }
    QString makeTune(const QByteArray &name, const QByteArray &title);
    void store(const char *key, const QString &value);
    QJsonObject stored() const;

    std::unique_ptr<QTemporaryDir> m_home;
};

namespace {

const char *const SettingsFile = "config/example.quillmoor-composer/Quillmoor Composer.cfg";
const QByteArray EmptyWindow = "window [Quillmoor Composer] 710x470\n";
const QByteArray Explanation =
    "information [Quillmoor Composer] Quillmoor Composer requires Quillmoor to be installed in "
    "order to work.\nPlease specify where Quillmoor is installed. (OK)\n";
const QByteArray Rejection = "warning [Quillmoor Composer] No Quillmoor installation was found at "
                             "the specified directory. (OK)\n";

QByteArray chooser(const QString &directory)
{
    return "chooser [Please locate the Quillmoor directory.] Directories; in "
        + QFile::encodeName(directory) + '\n';
}

} // namespace

void tst_StartUp::init()
{
    m_home = std::make_unique<QTemporaryDir>();
}

void tst_StartUp::prepare(ProcessRun &run, const QStringList &robot) const
{
    run.environment("HOME", m_home->path());
    run.environment("XDG_CONFIG_HOME", path("config"));
    run.environment("QT_QPA_PLATFORM", QStringLiteral("offscreen"));
    run.environment("XDG_RUNTIME_DIR", m_home->path());
    run.environment("QT_PLUGIN_PATH", QStringLiteral(ROBOT_PLUGINS));
    run.environment("QT_QPA_GENERIC_PLUGINS", QStringLiteral("robot"));
    run.environment("ROBOT", robot.join(QLatin1Char('\n')));
    run.workingDirectory(m_home->path());
}

ProcessRun::Outcome tst_StartUp::outcome(const QStringList &arguments, const QStringList &robot)
{
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER), arguments);
    prepare(run, robot);
    return outcome(run);
}

/// Without what the offscreen platform and the sound have to say.
ProcessRun::Outcome tst_StartUp::outcome(ProcessRun &run)
{
    ProcessRun::Outcome outcome = run.outcome();
    outcome.errors.replace("This plugin does not support propagateSizeHints()\n", "");
    outcome.errors.replace("No sound device was found.\n", "");
    return outcome;
}

QString tst_StartUp::makeGame(const char *name)
{
    QString directory = path(name);
    QDir(directory).mkpath(QStringLiteral("assets"));
    QDir(directory).mkpath(QStringLiteral("win32"));
    makeFile(directory + QStringLiteral("/win32/quillmoor.exe"), "a text");
    return directory;
}

QString tst_StartUp::makeTune(const QByteArray &name, const QByteArray &title)
{
    QString file = m_home->filePath(FileNameCodec::decode(name));
    makeFile(file, "X:1\nT:" + title + "\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nCDEF|\n");
    return file;
}

void tst_StartUp::store(const char *key, const QString &value)
{
    const QString file = path(SettingsFile);
    QDir().mkpath(QFileInfo(file).path());
    makeFile(file, QJsonDocument(QJsonObject{{QString::fromUtf8(key), value}}).toJson());
}

QJsonObject tst_StartUp::stored() const
{
    return QJsonDocument::fromJson(fileContents(path(SettingsFile))).object();
}

void tst_StartUp::helpAndVersionNeedNoDisplay_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("output");
    QTest::newRow("version") << QStringLiteral("--version")
                             << QByteArray("quillmoor-composer 0.8.5\n");
    const QByteArray help = fileContents(QFINDTESTDATA("data/help.txt"));
    QTest::newRow("help") << QStringLiteral("--help") << help;
    QTest::newRow("short") << QStringLiteral("-h") << help;
}

void tst_StartUp::helpAndVersionNeedNoDisplay()
{
    QFETCH(QString, option);
    QFETCH(QByteArray, output);
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER), {option});
    COMPARE_OUTCOME(run.outcome(), 0, output, "");
}

void tst_StartUp::badUsageIsStatusTwo()
{
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER), args({"a.abc", "--frobnicate"}));
    COMPARE_OUTCOME(run.outcome(), 2, "",
                    "quillmoor-composer: Unknown option '--frobnicate'.\n"
                    "quillmoor-composer: Try 'quillmoor-composer --help'.\n");
}

void tst_StartUp::withoutDisplayAMessageTellsSo()
{
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER), {});
    COMPARE_OUTCOME(run.outcome(), 1, "",
                    "quillmoor-composer: There is no display: DISPLAY and WAYLAND_DISPLAY are not "
                    "set.\n");
}

void tst_StartUp::optionsOfQtWork()
{
    makeUsualGame();
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER),
                   args({"-platform", "offscreen", "--style=fusion"}));
    prepare(run, args({"window 0", "close"}));
    run.environment("QT_QPA_PLATFORM", QString());
    COMPARE_OUTCOME(outcome(run), 0, EmptyWindow, "");
    const auto other = outcome(args({"-style", "nowhere"}), args({"window 0", "close"}));
    QVERIFY2(other.errors.startsWith("QApplication: invalid style override 'nowhere'"),
             other.errors.constData());
}

void tst_StartUp::aStoredDirectoryIsUsed()
{
    makeUsualGame();
    const QString game = makeGame("elsewhere");
    store("quillmoor/rootPath", game);
    COMPARE_OUTCOME(outcome({}, args({"window 0", "close"})), 0, EmptyWindow, "");
    QCOMPARE(stored().value(QStringLiteral("quillmoor/rootPath")).toString(), game);
}

void tst_StartUp::theUsualDirectoryIsFoundAndStored()
{
    const QString game = makeUsualGame();
    COMPARE_OUTCOME(outcome({}, args({"window 0", "close"})), 0, EmptyWindow, "");
    QCOMPARE(stored().value(QStringLiteral("quillmoor/rootPath")).toString(), game);
}

void tst_StartUp::aStoredDirectoryThatIsNoGameIsNotTrusted()
{
    const QString game = makeGame("elsewhere");
    store("quillmoor/rootPath", game);
    QVERIFY(QFile::remove(game + QStringLiteral("/win32/quillmoor.exe")));
    COMPARE_OUTCOME(outcome({}, args({"box OK", "cancel"})), 1,
                    Explanation + chooser(m_home->path()), "");
    QCOMPARE(stored().value(QStringLiteral("quillmoor/rootPath")).toString(), game);
    const QString usual = makeUsualGame();
    COMPARE_OUTCOME(outcome({}, args({"window 0", "close"})), 0, EmptyWindow, "");
    QCOMPARE(stored().value(QStringLiteral("quillmoor/rootPath")).toString(), usual);
}

void tst_StartUp::aStoredEmptyDirectoryIsNotTrusted()
{
    makeGame("."); // which is the working directory
    store("quillmoor/rootPath", QString());
    COMPARE_OUTCOME(outcome({}, args({"box OK", "cancel"})), 1,
                    Explanation + chooser(m_home->path()), "");
}

void tst_StartUp::theUserIsAskedWhereNothingIsFound()
{
    const QString game = makeGame("chosen");
    COMPARE_OUTCOME(outcome({},
                            {QStringLiteral("box OK"), QStringLiteral("choose ") + game,
                             QStringLiteral("window 0"), QStringLiteral("close")}),
                    0, Explanation + chooser(m_home->path()) + EmptyWindow, "");
    QCOMPARE(stored().value(QStringLiteral("quillmoor/rootPath")).toString(), game);
    COMPARE_OUTCOME(outcome({}, args({"window 0", "close"})), 0, EmptyWindow, "");
}

void tst_StartUp::aWrongChoiceIsRejectedAndAskedAgain()
{
    const QString wrong = makeGame("wrong");
    QVERIFY(QFile::remove(wrong + QStringLiteral("/win32/quillmoor.exe")));
    const QString right = makeGame("right");
    COMPARE_OUTCOME(
        outcome({},
                {QStringLiteral("box OK"), QStringLiteral("choose ") + wrong,
                 QStringLiteral("box OK"), QStringLiteral("choose ") + right,
                 QStringLiteral("window 0"), QStringLiteral("close")}),
        0, Explanation + chooser(m_home->path()) + Rejection + chooser(wrong) + EmptyWindow, "");
    QCOMPARE(stored().value(QStringLiteral("quillmoor/rootPath")).toString(), right);
}

void tst_StartUp::cancellingEndsWithStatusOne()
{
    COMPARE_OUTCOME(outcome({}, args({"box OK", "cancel"})), 1,
                    Explanation + chooser(m_home->path()), "");
    QVERIFY(!stored().contains(QStringLiteral("quillmoor/rootPath")));
}

void tst_StartUp::aLinkedDirectoryIsStoredByItsRealPath()
{
    const QString game = makeGame("real");
    QVERIFY(QFile::link(game, path("link")));
    const auto run = outcome({},
                             {QStringLiteral("box OK"), QStringLiteral("choose ") + path("link"),
                              QStringLiteral("window 0"), QStringLiteral("close")});
    QCOMPARE(run.status, 0);
    QCOMPARE(stored().value(QStringLiteral("quillmoor/rootPath")).toString(), game);
}

void tst_StartUp::aDirectoryOfAnyNameIsStored()
{
    const QString game = makeGame("\xC3\x9C"
                                  "bung \xE2\x98\x83");
    const auto run = outcome({},
                             {QStringLiteral("box OK"), QStringLiteral("choose ") + game,
                              QStringLiteral("window 0"), QStringLiteral("close")});
    QCOMPARE(run.status, 0);
    QCOMPARE(stored().value(QStringLiteral("quillmoor/rootPath")).toString(), game);
    COMPARE_OUTCOME(outcome({}, args({"window 0", "close"})), 0, EmptyWindow, "");
}

void tst_StartUp::theGameOfThisRunIsNotStored_data()
{
    QTest::addColumn<bool>("byVariable");
    QTest::newRow("option") << false;
    QTest::newRow("variable") << true;
}

void tst_StartUp::theGameOfThisRunIsNotStored()
{
    QFETCH(bool, byVariable);
    makeGame("mine");
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER),
                   byVariable ? QStringList() : args({"--game", "mine"}));
    prepare(run, args({"window 0", "close"}));
    if (byVariable)
        run.environment("QUILLMOOR_GAME", QStringLiteral("mine"));
    COMPARE_OUTCOME(outcome(run), 0, EmptyWindow, "");
    QVERIFY(!stored().contains(QStringLiteral("quillmoor/rootPath")));
}

void tst_StartUp::theOptionGoesBeforeTheVariable()
{
    makeGame("mine");
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER), args({"--game=mine"}));
    prepare(run, args({"window 0", "close"}));
    run.environment("QUILLMOOR_GAME", QStringLiteral("nowhere"));
    COMPARE_OUTCOME(outcome(run), 0, EmptyWindow, "");
}

void tst_StartUp::aWrongGameEndsWithAMessage()
{
    makeUsualGame();
    COMPARE_OUTCOME(outcome(args({"--game", "<b>"}), args({"box OK"})), 1,
                    "critical [Quillmoor Composer] No Quillmoor installation was found at '<b>'. "
                    "(OK)\n",
                    "quillmoor-composer: No Quillmoor installation was found at '<b>'.\n");
}

void tst_StartUp::filesAreOpenedInTheWindow()
{
    makeUsualGame();
    makeTune("a.abc", "First");
    const QString second = makeTune("--odd", "Second");
    makeFile(path("song.mid"),
             QByteArray::fromHex("4d546864000000060000000100604d54726b0000000c"
                                 "00903c4060803c0000ff2f00"));
    const auto run =
        outcome(args({"a.abc", "song.mid", "--", "--odd"}), args({"window 3", "close"}));
    COMPARE_OUTCOME(run, 0,
                    EmptyWindow
                        + "First\nTrack 1 - Acoustic Grand Piano\n"
                          "Second\n",
                    "");
}

void tst_StartUp::fileNamesMayBeAnyBytes()
{
    makeUsualGame();
    makeTune("\xFF\xC3\x9C.abc", "Odd");
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER), {FileNameCodec::decode("\xFF\xC3\x9C.abc")});
    prepare(run, args({"window 1", "close"}));
    COMPARE_OUTCOME(outcome(run), 0, EmptyWindow + "Odd\n", "");
}

void tst_StartUp::eachFileThatCannotBeReadHasItsBox()
{
    makeUsualGame();
    makeTune("good.abc", "Good");
    makeFile(path("broken.mid"), "no MIDI");
    const auto run = outcome(args({"nowhere.abc", "good.abc", "broken.mid", "nowhere.mid"}),
                             args({"box OK", "box OK", "box OK", "window 1", "close"}));
    COMPARE_OUTCOME(run, 0,
                    "critical [Error while reading ABC file] Could not open file. (OK)\n"
                    "critical [Error while reading MIDI file] Invalid MIDI file. (OK)\n"
                    "critical [Error while reading MIDI file] Could not open file. (OK)\n"
                        + EmptyWindow + "Good\n",
                    "");
}

void tst_StartUp::theDialogsDirectoryIsKept()
{
    makeUsualGame();
    QDir(m_home->path()).mkpath(QStringLiteral("songs"));
    const QString tune = makeTune("songs/a.abc", "A song");
    const auto run = outcome({},
                             {QStringLiteral("window 0"), QStringLiteral("trigger actionOpen"),
                              QStringLiteral("choose ") + tune, QStringLiteral("window 1"),
                              QStringLiteral("trigger actionExit")});
    QCOMPARE(run.status, 0);
    QCOMPARE(stored().value(QStringLiteral("dirs/abc/open")).toString(), path("songs"));
}

/// Processes of these tests run under LANG=C.
void tst_StartUp::textIsUtf8WhateverTheLocale()
{
    makeUsualGame();
    const QByteArray title = "\xC3\x9C"
                             "bung \xE2\x98\x83 \xF0\x9D\x84\x9E";
    makeTune(title + ".abc", title);
    const auto run = outcome({QString::fromUtf8(title + ".abc")}, args({"window 1", "close"}));
    COMPARE_OUTCOME(run, 0, EmptyWindow + title + "\n", "");
}

void tst_StartUp::thrownTextEndsTheProgram()
{
    makeUsualGame();
    COMPARE_OUTCOME(outcome({}, args({"window 0", "throw Something <b>broke</b>.", "box OK"})), 1,
                    EmptyWindow
                        + "critical [Quillmoor Composer] A fatal error occured:\n"
                          "Something <b>broke</b>. (OK)\n",
                    "");
}

void tst_StartUp::anythingElseThrownEndsTheProgram()
{
    makeUsualGame();
    COMPARE_OUTCOME(
        outcome({}, args({"window 0", "throw", "box OK"})), 1,
        EmptyWindow + "critical [Quillmoor Composer] An unknown fatal error ocurred (OK)\n", "");
}

void tst_StartUp::aFailureEndsOpenDialogs()
{
    makeUsualGame();
    const auto run =
        outcome({}, args({"window 0", "trigger actionOpen", "dialog", "throw Broken.", "box OK"}));
    COMPARE_OUTCOME(
        run, 1,
        EmptyWindow + "critical [Quillmoor Composer] A fatal error occured:\nBroken. (OK)\n", "");
}

void tst_StartUp::aFailureWhileAskingEndsTheProgram()
{
    const auto run = outcome({}, args({"box OK", "dialog", "throw Broken.", "box OK"}));
    COMPARE_OUTCOME(
        run, 1,
        Explanation + "critical [Quillmoor Composer] A fatal error occured:\nBroken. (OK)\n", "");
}

void tst_StartUp::instrumentsThatCannotBeReadEndTheProgram()
{
    const QString user = makeUsualGame() + QStringLiteral("/assets/user/");
    QDir(user).mkpath(QStringLiteral("items/instruments"));
    QDir(user).mkpath(QStringLiteral("sfx/instruments/lute"));
    makeFile(user + QStringLiteral("items/instruments/lute.instrument"),
             R"({"shortdescription":"Lute","kind":"lute","inventoryIcon":"x"})");
    makeFile(user + QStringLiteral("sfx/instruments/lute/tuning.config"), "[]");
    const auto run = outcome({}, args({"box OK"}));
    QCOMPARE(run.status, 1);
    QVERIFY2(run.output.startsWith("critical [Quillmoor Composer] A fatal error occured:\n"),
             run.output.constData());
    QVERIFY2(run.output.contains("tuning"), run.output.constData());
}

void tst_StartUp::aSignalRemovesAnUnfinishedExport()
{
    makeUsualGame();
    QVERIFY(QDir(m_home->path()).mkpath(QStringLiteral("waves")));
    // Hours of silence: nobody waits for its end.
    makeFile(path("long.abc"),
             "X:1\nL:4/1\nQ:1/4=1\nK:C\n" + QByteArray("z ").repeated(30) + "C\n");
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER), args({"long.abc"}));
    prepare(run,
            {QStringLiteral("window 1"), QStringLiteral("trigger actionExport_to_Wav"),
             QStringLiteral("choose ") + path("waves/a.wav")});
    QProcess &process = run.start();
    QTRY_COMPARE_WITH_TIMEOUT(listing(path("waves")).size(), 1, 30000);
    process.terminate();
    QCOMPARE(run.finish().status, 128 + SIGTERM);
    QCOMPARE(listing(path("waves")), QStringList());
    QCOMPARE(stored().value(QStringLiteral("dirs/wav/save")).toString(), path("waves"));
}

void tst_StartUp::aSignalEndsOpenDialogs_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("hasGame");
    QTest::newRow("Ctrl-C") << SIGINT << true;
    QTest::newRow("the terminal is gone") << SIGHUP << true;
    QTest::newRow("while asking for the game") << SIGTERM << false;
}

/// The robot goes on after the dialog, so it has seen that.
void tst_StartUp::aSignalEndsOpenDialogs()
{
    QFETCH(int, number);
    QFETCH(bool, hasGame);
    if (hasGame)
        makeUsualGame();
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER), {});
    prepare(run,
            hasGame ? args({"window 0", "trigger actionOpen", "dialog", "print open"})
                    : args({"box OK", "dialog", "print open"}));
    QProcess &process = run.start();
    QTRY_VERIFY_WITH_TIMEOUT(process.peek(1 << 16).endsWith("open\n"), 30000);
    ::kill(static_cast<pid_t>(process.processId()), number);
    QCOMPARE(run.finish().status, 128 + number);
}

/// As behind a pipe whose reader has gone: the program says that there is no sound device.
void tst_StartUp::nobodyNeedsToReadTheMessages()
{
    makeUsualGame();
    ProcessRun run(QStringLiteral(QUILLMOOR_COMPOSER), {});
    prepare(run, args({"window 0", "close"}));
    run.inChild([] {
        int ends[2];
        if (::pipe(ends) == 0) {
            ::dup2(ends[1], STDERR_FILENO);
            ::close(ends[0]);
            ::close(ends[1]);
        }
    });
    COMPARE_OUTCOME(outcome(run), 0, EmptyWindow, "");
}

PROGRAM_TEST_MAIN(tst_StartUp)
#include "tst_StartUp.moc"
