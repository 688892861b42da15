#include "app/CommandLine.h"
#include "support/Thrown.h"

#include <QtTest>

Q_DECLARE_METATYPE(CommandLine::Task)

class tst_CommandLine : public QObject {
    Q_OBJECT

private slots:
    void filesAndOptionsMayBeMixed();
    void afterTwoDashesAllAreFiles();
    void aLoneDashIsAFile();
    void gameTakesAnyValue_data();
    void gameTakesAnyValue();
    void helpAndVersionAreTasks_data();
    void helpAndVersionAreTasks();
    void optionsOfQtAreSetApart_data();
    void optionsOfQtAreSetApart();
    void platformMayBeChosen();
    void badUsageIsExplained_data();
    void badUsageIsExplained();
};

namespace {

QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

CommandLine parsed(const char *text)
{
    return CommandLine::parse(words(text));
}

} // namespace

void tst_CommandLine::filesAndOptionsMayBeMixed()
{
    const CommandLine line = parsed("a.abc --game dir b.mid -style fusion c");
    QCOMPARE(line.task, CommandLine::OpenWindow);
    QCOMPARE(line.files, words("a.abc b.mid c"));
    QCOMPARE(line.game.value(), QStringLiteral("dir"));
    QCOMPARE(line.qtArguments, words("-style fusion"));
}

void tst_CommandLine::afterTwoDashesAllAreFiles()
{
    const CommandLine line = parsed("a -- --game -style --");
    QCOMPARE(line.files, words("a --game -style --"));
    QVERIFY(!line.game);
    QVERIFY(line.qtArguments.isEmpty());
}

void tst_CommandLine::aLoneDashIsAFile()
{
    QCOMPARE(parsed("-").files, words("-"));
}

void tst_CommandLine::gameTakesAnyValue_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("game");
    const QString option = QStringLiteral("--game");
    QTest::newRow("apart") << QStringList{option, QStringLiteral("a b")} << QStringLiteral("a b");
    QTest::newRow("attached") << words("--game=a=b") << QStringLiteral("a=b");
    QTest::newRow("empty") << QStringList{option, QString()} << QString();
    QTest::newRow("empty, attached") << words("--game=") << QString();
    QTest::newRow("like an option") << words("--game --help") << QStringLiteral("--help");
    QTest::newRow("the last counts") << words("--game a --game b") << QStringLiteral("b");
}

void tst_CommandLine::gameTakesAnyValue()
{
    QFETCH(QStringList, arguments);
    const CommandLine line = CommandLine::parse(arguments);
    QCOMPARE(line.task, CommandLine::OpenWindow);
    QTEST(line.game.value(), "game");
}

void tst_CommandLine::helpAndVersionAreTasks_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<CommandLine::Task>("task");
    QTest::newRow("help") << QStringLiteral("--help") << CommandLine::ShowHelp;
    QTest::newRow("short help") << QStringLiteral("-h") << CommandLine::ShowHelp;
    QTest::newRow("version") << QStringLiteral("--version") << CommandLine::ShowVersion;
    QTest::newRow("after a file") << QStringLiteral("a.abc --help") << CommandLine::ShowHelp;
    QTest::newRow("a file") << QStringLiteral("-- --help") << CommandLine::OpenWindow;
}

void tst_CommandLine::helpAndVersionAreTasks()
{
    QFETCH(QString, arguments);
    QTEST(CommandLine::parse(arguments.split(QLatin1Char(' '))).task, "task");
}

void tst_CommandLine::optionsOfQtAreSetApart_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("passedOn");
    const auto add = [](const char *given, const char *passedOn) {
        QTest::newRow(given) << QString::fromUtf8(given) << QString::fromUtf8(passedOn);
    };
    add("-geometry 800x600", "-geometry 800x600");
    add("--style fusion", "-style fusion");
    add("-style=fusion", "-style fusion");
    add("--platform=offscreen", "-platform offscreen");
    add("-platform offscreen:size=1", "-platform offscreen:size=1");
    add("-reverse", "-reverse");
    add("-style -reverse", "-style -reverse");
}

void tst_CommandLine::optionsOfQtAreSetApart()
{
    QFETCH(QString, given);
    const CommandLine line =
        CommandLine::parse((given + QStringLiteral(" file")).split(QLatin1Char(' ')));
    QTEST(line.qtArguments.join(QLatin1Char(' ')), "passedOn");
    QCOMPARE(line.files, words("file"));
}

void tst_CommandLine::platformMayBeChosen()
{
    QVERIFY(parsed("-platform offscreen").choosesPlatform);
    QVERIFY(!parsed("-platformtheme x -- -platform").choosesPlatform);
}

void tst_CommandLine::badUsageIsExplained_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("message");
    const auto add = [](const char *arguments, const char *message) {
        QTest::newRow(arguments) << QString::fromUtf8(arguments) << QString::fromUtf8(message);
    };
    add("--frobnicate", "Unknown option '--frobnicate'.");
    add("-x", "Unknown option '-x'.");
    add("---style a", "Unknown option '---style'.");
    add("--help=yes", "Unknown option '--help=yes'.");
    add("-game dir", "Unknown option '-game'.");
    add("--game", "--game needs a value.");
    add("-style", "-style needs a value.");
    add("-reverse=1", "-reverse takes no value.");
}

void tst_CommandLine::badUsageIsExplained()
{
    QFETCH(QString, arguments);
    QTEST(thrownBy([&] { CommandLine::parse(arguments.split(QLatin1Char(' '))); }), "message");
}

QTEST_APPLESS_MAIN(tst_CommandLine)
#include "tst_CommandLine.moc"
