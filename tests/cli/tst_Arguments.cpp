#include "cli/Arguments.h"

#include <QtTest>

class tst_Arguments : public QObject {
    Q_OBJECT

private slots:
    void operandsAndOptionsMix();
    void valueMayLookLikeAnOption();
    void valueMayFollowAnEqualsSign();
    void lastValueCounts();
    void twoDashesEndTheOptions();
    void oneDashIsAnOperand();
    void helpIsSeenAnywhereButBehindTwoDashes();
    void fileOptionsApplyToTheFilesAfterThem();
    void givenOptionsKeepTheirOrder();
    void badUsageIsRefused_data();
    void badUsageIsRefused();
    void helpExcusesAnOptionWithoutFile();
    void numbersAreChecked_data();
    void numbersAreChecked();
    void wholeNumbersAreChecked_data();
    void wholeNumbersAreChecked();
    void missingNumberGivesTheFallback();
};

namespace {

QString checkVolume(const QString &value)
{
    return checkNumber(value, 0.0, 1.0);
}

const QVector<Option> &table()
{
    static const QVector<Option> options = {
        {"--game", "DIR", "", Option::WholeCommand},
        {"--mods", nullptr, "", Option::WholeCommand},
        {"-o", "FILE", "", Option::WholeCommand},
        {"--volume", "0..1", "", Option::FilesAfter, checkVolume},
        {"--up", nullptr, "", Option::FilesAfter},
    };
    return options;
}

/// Words separated by spaces.
Arguments parsed(const QString &line)
{
    return Arguments::parse(line.split(QLatin1Char(' '), Qt::SkipEmptyParts), table());
}

QStringList texts(const Arguments &arguments)
{
    return ::texts(arguments.operands());
}

QString refusal(const QString &line)
{
    try {
        parsed(line);
    } catch (const UsageError &error) {
        return error.message;
    }
    return QStringLiteral("accepted");
}

} // namespace

void tst_Arguments::operandsAndOptionsMix()
{
    const Arguments arguments = parsed(QStringLiteral("a --game dir b --mods c"));
    QCOMPARE(texts(arguments),
             QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
    QCOMPARE(arguments.operand(1), QStringLiteral("b"));
    QCOMPARE(arguments.options().value("--game"), QStringLiteral("dir"));
    QVERIFY(arguments.options().has("--mods"));
    QVERIFY(!arguments.options().has("-o"));
    QVERIFY(!arguments.wantsHelp());
}

void tst_Arguments::valueMayLookLikeAnOption()
{
    QCOMPARE(parsed(QStringLiteral("-o --mods")).options().value("-o"), QStringLiteral("--mods"));
    QVERIFY(!parsed(QStringLiteral("-o --mods")).options().has("--mods"));
}

void tst_Arguments::valueMayFollowAnEqualsSign()
{
    QCOMPARE(parsed(QStringLiteral("--game=a=b")).options().value("--game"), QStringLiteral("a=b"));
    QVERIFY(parsed(QStringLiteral("--game=")).options().has("--game"));
}

void tst_Arguments::lastValueCounts()
{
    QCOMPARE(parsed(QStringLiteral("-o a -o b")).options().value("-o"), QStringLiteral("b"));
}

void tst_Arguments::twoDashesEndTheOptions()
{
    const Arguments arguments = parsed(QStringLiteral("--mods -- --game -- -h"));
    QCOMPARE(texts(arguments),
             QStringList({QStringLiteral("--game"), QStringLiteral("--"), QStringLiteral("-h")}));
    QVERIFY(!arguments.wantsHelp());
}

void tst_Arguments::oneDashIsAnOperand()
{
    QCOMPARE(texts(parsed(QStringLiteral("-"))), QStringList(QStringLiteral("-")));
}

void tst_Arguments::helpIsSeenAnywhereButBehindTwoDashes()
{
    QVERIFY(parsed(QStringLiteral("a --help")).wantsHelp());
    QVERIFY(parsed(QStringLiteral("-h")).wantsHelp());
}

void tst_Arguments::fileOptionsApplyToTheFilesAfterThem()
{
    const Arguments arguments = parsed(QStringLiteral("a --volume 0.5 b c --volume 1 --up d"));
    QCOMPARE(arguments.operands().at(0).options.has("--volume"), false);
    QCOMPARE(arguments.operands().at(1).options.number("--volume", 2.0), 0.5);
    QCOMPARE(arguments.operands().at(2).options.number("--volume", 2.0), 0.5);
    QCOMPARE(arguments.operands().at(2).options.has("--up"), false);
    QCOMPARE(arguments.operands().at(3).options.number("--volume", 2.0), 1.0);
    QCOMPARE(arguments.operands().at(3).options.has("--up"), true);
    QVERIFY(!arguments.options().has("--volume"));
}

void tst_Arguments::givenOptionsKeepTheirOrder()
{
    const Arguments arguments = parsed(QStringLiteral("--up --volume 1 --up a"));
    QStringList names;
    for (const auto &given : arguments.operands().at(0).options.given())
        names.append(given.name);
    QCOMPARE(
        names,
        QStringList({QStringLiteral("--up"), QStringLiteral("--volume"), QStringLiteral("--up")}));
}

void tst_Arguments::badUsageIsRefused_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("message");

    QTest::newRow("unknown") << QStringLiteral("--gme x")
                             << QStringLiteral("Unknown option '--gme'.");
    QTest::newRow("unknown with value")
        << QStringLiteral("--gme=x") << QStringLiteral("Unknown option '--gme'.");
    QTest::newRow("unknown short")
        << QStringLiteral("-x") << QStringLiteral("Unknown option '-x'.");
    QTest::newRow("abbreviated") << QStringLiteral("--gam x")
                                 << QStringLiteral("Unknown option '--gam'.");
    QTest::newRow("no value") << QStringLiteral("a --game")
                              << QStringLiteral("--game needs a value (DIR).");
    QTest::newRow("value for a switch")
        << QStringLiteral("--mods=yes") << QStringLiteral("--mods takes no value.");
    QTest::newRow("refused value") << QStringLiteral("--volume 2 a")
                                   << QStringLiteral("--volume: '2' is not a number from 0 to 1.");
    QTest::newRow("no file after")
        << QStringLiteral("a --up")
        << QStringLiteral("--up applies to the files after it, but none follows.");
}

void tst_Arguments::badUsageIsRefused()
{
    QFETCH(QString, line);
    QTEST(refusal(line), "message");
}

void tst_Arguments::helpExcusesAnOptionWithoutFile()
{
    QVERIFY(parsed(QStringLiteral("--up --help")).wantsHelp());
}

void tst_Arguments::numbersAreChecked_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("accepted");

    for (const char *const good : {"-1", "1", "-0.5", "0", "+0.25", "1e-1", "-1.0"})
        QTest::newRow(good) << QString::fromLatin1(good) << true;
    for (const char *const bad :
         {"", "1.01", "-1.0001", "one", "0,5", "0.5x", "nan", "inf", "0x1", "--1", "%2"})
        QTest::newRow(*bad == '\0' ? "empty" : bad) << QString::fromLatin1(bad) << false;
}

void tst_Arguments::numbersAreChecked()
{
    QFETCH(QString, value);
    const QString problem = checkNumber(value, -1.0, 1.0);
    const QString refused = QStringLiteral("'%1' is not a number from -1 to 1.").arg(value);
    QTEST(problem.isEmpty(), "accepted");
    QVERIFY(problem.isEmpty() || problem == refused);
}

void tst_Arguments::wholeNumbersAreChecked_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("accepted");

    const auto row = [](const char *value, bool accepted) {
        QTest::newRow(value) << QString::fromUtf8(value) << accepted;
    };
    row("-3", true);
    row("0", true);
    row("+7", true);
    row("7", true);
    row("-4", false);
    row("8", false);
    row("", false);
    row("1.0", false);
    row("1e0", false);
    row("0x1", false);
    row("one", false);
    row("4294967297", false);
}

void tst_Arguments::wholeNumbersAreChecked()
{
    QFETCH(QString, value);
    const QString problem = checkInteger(value, -3, 7);
    const QString refused = QStringLiteral("'%1' is not a whole number from -3 to 7.").arg(value);
    QTEST(problem.isEmpty(), "accepted");
    QVERIFY(problem.isEmpty() || problem == refused);
}

void tst_Arguments::missingNumberGivesTheFallback()
{
    QCOMPARE(OptionValues().number("--volume", 1.0), 1.0);
    QCOMPARE(OptionValues().value("--game", QStringLiteral("x")), QStringLiteral("x"));
}

QTEST_APPLESS_MAIN(tst_Arguments)
#include "tst_Arguments.moc"
