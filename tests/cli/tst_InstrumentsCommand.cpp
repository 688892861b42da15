#include "ProgramRun.h"
#include "SmallGame.h"

#include <QDir>
#include <QtTest>

class tst_InstrumentsCommand : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void instrumentsArePrintedInTheirOrder();
    void modsAreTakenOnRequest();
    void gameMayComeFromTheEnvironment();
    void gameIsFoundInItsUsualPlace();
    void optionWinsOverTheEnvironment();
    void withoutAGameThereIsAHint();
    void directoryWithoutGameIsRefused_data();
    void directoryWithoutGameIsRefused();
    void emptyGameHasTheInstrumentNone();
    void damagedPackageIsReportedAndSkipped();
    void failingSetIsAFailure();
    void operandsAreBadUsage();

private:
    QByteArray lute() const;
    QByteArray drum() const;

    QTemporaryDir m_dir;
    QString m_game;
};

void tst_InstrumentsCommand::initTestCase()
{
    m_game = m_dir.filePath(QStringLiteral("home/.steam/root/SteamApps/common/Quillmoor"));
    makeSmallGame(m_game);
}

QByteArray tst_InstrumentsCommand::drum() const
{
    return "{\"name\":\"Drum\",\"kind\":\"drum\",\"fadeout\":0.0,\"icon\":false,\"notes\":{\"60\":{"
           "\"files\":"
           "[\"pak://"
        + m_game.toUtf8()
        + "/assets/packed.pak::/sfx/instruments/drum/"
          "a.wav\"],\"pitch\":1.0,\"frequency\":261.63}}}\n";
}

QByteArray tst_InstrumentsCommand::lute() const
{
    const QByteArray files = "\"files\":[\"pak://" + m_game.toUtf8()
        + "/assets/packed.pak::/sfx/instruments/lute/a.wav\"]";
    return "{\"name\":\"Lute\",\"kind\":\"lute\",\"fadeout\":0.25,\"icon\":true,\"notes\":{\"60\":{"
        + files + ",\"pitch\":1.0,\"frequency\":261.625},\"61\":{" + files + ",\"pitch\":"
        + QByteArray::number(277.18 / 261.625, 'g', 17) + ",\"frequency\":277.18}}}\n";
}

namespace {

const QByteArray NoDrumIcon = "quillmoor-cli: No icon file found for instrument Drum!\n";
const QByteArray NoDrumIconInPackage =
    "quillmoor-cli: tryGetFile failed on /items/instruments/none.png: File not found\n"
    + NoDrumIcon;

} // namespace

void tst_InstrumentsCommand::instrumentsArePrintedInTheirOrder()
{
    COMPARE_OUTCOME(runProgram({QStringLiteral("instruments"), QStringLiteral("--game"), m_game}),
                    0, drum() + lute(), NoDrumIconInPackage);
}

void tst_InstrumentsCommand::modsAreTakenOnRequest()
{
    const ProgramRun::Outcome outcome =
        runProgram({QStringLiteral("instruments"), QStringLiteral("--mods"),
                    QStringLiteral("--game"), m_game});
    QCOMPARE(outcome.status, 0);
    QVERIFY2(
        outcome.output.startsWith(drum() + lute() + "{\"name\":\"Whistle\",\"kind\":\"drum\","),
        outcome.output);
}

void tst_InstrumentsCommand::gameMayComeFromTheEnvironment()
{
    ProgramRun program(args({"instruments"}));
    COMPARE_OUTCOME(program.environment("QUILLMOOR_GAME", m_game).outcome(), 0, drum() + lute(),
                    NoDrumIconInPackage);
}

void tst_InstrumentsCommand::gameIsFoundInItsUsualPlace()
{
    ProgramRun program(args({"instruments"}));
    program.environment("HOME", m_dir.filePath(QStringLiteral("home")));
    COMPARE_OUTCOME(program.outcome(), 0, drum() + lute(), NoDrumIconInPackage);
}

void tst_InstrumentsCommand::optionWinsOverTheEnvironment()
{
    ProgramRun program({QStringLiteral("instruments"), QStringLiteral("--game"), m_game});
    QCOMPARE(program.environment("QUILLMOOR_GAME", QStringLiteral("/nowhere")).outcome().status, 0);
}

void tst_InstrumentsCommand::withoutAGameThereIsAHint()
{
    COMPARE_OUTCOME(
        runProgram(args({"instruments"})), 1, "",
        "quillmoor-cli: No Quillmoor installation was found. Name its directory with --game DIR, "
        "or make a demo game with 'quillmoor-cli demo-game DIR'.\n");
}

void tst_InstrumentsCommand::directoryWithoutGameIsRefused_data()
{
    QTest::addColumn<QString>("directory");

    QTest::newRow("empty name") << QString();
    QTest::newRow("missing") << QStringLiteral("/nowhere");
    QTest::newRow("other") << m_dir.path();
    QTest::newRow("inside") << m_game + QStringLiteral("/assets");
}

void tst_InstrumentsCommand::directoryWithoutGameIsRefused()
{
    QFETCH(QString, directory);
    COMPARE_OUTCOME(
        runProgram({QStringLiteral("instruments"), QStringLiteral("--game"), directory}), 1, "",
        "quillmoor-cli: No Quillmoor installation was found at the specified directory.\n");
}

void tst_InstrumentsCommand::emptyGameHasTheInstrumentNone()
{
    const QTemporaryDir game;
    QVERIFY(QDir(game.path()).mkpath(QStringLiteral("assets"))
            && QDir(game.path()).mkpath(QStringLiteral("win32")));
    makeFile(game.filePath(QStringLiteral("win32/quillmoor.exe")), {});
    COMPARE_OUTCOME(
        runProgram({QStringLiteral("instruments"), QStringLiteral("--game"), game.path()}), 0,
        "{\"name\":\"None\",\"kind\":\"\",\"fadeout\":0.0,\"icon\":false,\"notes\":{}}\n", "");
}

void tst_InstrumentsCommand::damagedPackageIsReportedAndSkipped()
{
    const QTemporaryDir game;
    makeSmallGame(game.path());
    makeFile(game.filePath(QStringLiteral("assets/bad.pak")), "no package");
    const ProgramRun::Outcome outcome =
        runProgram({QStringLiteral("instruments"), QStringLiteral("--game"), game.path()});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output.count('\n'), 2);
    QVERIFY2(outcome.errors.contains(
                 "quillmoor-cli: Failed to load pak file: Invalid Block File Header.\n"),
             outcome.errors);
}

void tst_InstrumentsCommand::failingSetIsAFailure()
{
    const QTemporaryDir game;
    makeSmallGame(game.path());
    makeFile(game.filePath(QStringLiteral("mods/more/sfx/instruments/drum/tuning.config")), "[]");
    const ProgramRun::Outcome outcome =
        runProgram({QStringLiteral("instruments"), QStringLiteral("--mods"),
                    QStringLiteral("--game"), game.path()});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.output, QByteArray());
    QVERIFY2(
        outcome.errors.endsWith(
            "quillmoor-cli: Could not read tuning file for drum, root element is not an object.\n"),
        outcome.errors);
}

void tst_InstrumentsCommand::operandsAreBadUsage()
{
    QCOMPARE(runProgram(args({"instruments", "x"})).status, 2);
}

PROGRAM_TEST_MAIN(tst_InstrumentsCommand)
#include "tst_InstrumentsCommand.moc"
