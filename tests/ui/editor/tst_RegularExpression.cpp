#include "support/Thrown.h"
#include "support/WidgetDriver.h"
#include "ui/editor/RegularExpression.h"

#include <QtTest>

#include <random>

using WidgetDriver::texts;

namespace {

const SearchWatch nobody = [] {};

QString messageOf(const QString &pattern)
{
    return thrownBy([&] { const RegularExpression made(pattern, Qt::CaseSensitive); });
}

QString randomPattern(std::mt19937 &random, int depth = 0)
{
    static const QStringList parts =
        texts({"a", "b", ".", "[ab]", "\\b", "^", "$", "a*", "b+", "a?", "a{2}"});
    QString pattern;
    for (unsigned i = 0; i <= random() % 3; ++i) {
        if (depth < 2 && random() % 4 == 0)
            pattern += QStringLiteral("(%1|%2)").arg(randomPattern(random, depth + 1),
                                                     randomPattern(random, depth + 1));
        else
            pattern += parts.at(int(random() % unsigned(parts.size())));
    }
    return pattern;
}

QString shown(const std::optional<TextMatch> &match)
{
    return match ? QStringLiteral("%1+%2 %3")
                       .arg(QString::number(match->start), QString::number(match->length),
                            match->captures.join(QLatin1Char(',')))
                 : QStringLiteral("none");
}

QString shown(const QRegExp &expression, int index)
{
    return index < 0
        ? QStringLiteral("none")
        : shown(TextMatch{index, expression.matchedLength(), expression.capturedTexts()});
}

} // namespace

class TestRegularExpression : public QObject {
    Q_OBJECT

private slots:
    void theSyntaxIsChecked_data()
    {
        QTest::addColumn<QString>("pattern");
        for (const char *pattern :
             {"(", ")", "[", "[]", "a)(b", "*", "a**", "a{2000}", "abc\\", "(?<a>b)"})
            QTest::newRow(pattern) << QString::fromUtf8(pattern);
    }

    void theSyntaxIsChecked()
    {
        QFETCH(QString, pattern);
        QCOMPARE(messageOf(pattern), QStringLiteral("Invalid regular expression"));
    }

    // Each of these would take minutes, or all memory, or crash when it is compiled.
    void hugePatternsAreRefused_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::newRow("counted") << "((a{1000}){1000}){1000}";
        QTest::newRow("counted range") << "((a{0,1000}){0,1000}){1,1000}";
        QTest::newRow("open count") << "((a{1000,}){1000,}){1000,}";
        QTest::newRow("optional") << QStringLiteral("a?").repeated(10'000);
        QTest::newRow("deep") << QStringLiteral("(").repeated(16'000)
                + QStringLiteral(")").repeated(16'000);
        QTest::newRow("deep look-aheads")
            << QStringLiteral("(?=").repeated(8'000) + QStringLiteral(")").repeated(8'000);
    }

    void hugePatternsAreRefused()
    {
        QFETCH(QString, pattern);
        QCOMPARE(messageOf(pattern), QStringLiteral("The regular expression is too large."));
    }

    void largePatternsAreTaken_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::newRow("counted") << "a{1000}";
        QTest::newRow("counted twice") << "(a{100}){100}";
        QTest::newRow("text") << QStringLiteral("abc").repeated(10'000);
        QTest::newRow("class") << QStringLiteral("[%1]").arg(
            QStringLiteral("a?(^*").repeated(5'000));
        QTest::newRow("escaped") << QStringLiteral("\\(").repeated(10'000);
        QTest::newRow("words") << QStringLiteral("C,|D,|E,|").repeated(100);
    }

    void largePatternsAreTaken()
    {
        QFETCH(QString, pattern);
        QCOMPARE(messageOf(pattern), QStringLiteral("(nothing thrown)"));
    }

    // A line too long for one call of QRegExp gives what a call would.
    void longLinesAreSearchedAsShortOnes()
    {
        std::mt19937 random(3);
        for (int round = 0; round < 2000; ++round) {
            const QString pattern = randomPattern(random);
            const QRegExp theirs(pattern);
            if (!theirs.isValid() || pattern.isEmpty())
                continue;
            QString line;
            for (int i = 0; i < 12; ++i)
                line += QStringLiteral("aab ").at(int(random() % 4));
            const RegularExpression ours(pattern, Qt::CaseSensitive);
            for (int start = 0; start <= line.size(); ++start) {
                const int index = theirs.indexIn(line, start);
                const QString expected =
                    index == start ? shown(theirs, index) : QStringLiteral("none");
                QVERIFY2(shown(ours.at(line, start)) == expected,
                         qPrintable(pattern + QLatin1Char(':') + line));
            }
        }
    }

    void aLongLineIsTriedStepByStep_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("last");
        QTest::newRow("letter") << "[x]" << 10'000 << 20'001;
        QTest::newRow("end") << "x$" << 20'001 << 20'001;
        QTest::newRow("two") << "(x)(y)" << 10'000 << 10'000;
        QTest::newRow("start") << "^a" << 0 << 0;
        QTest::newRow("none") << "[x]z" << -1 << -1;
    }

    void aLongLineIsTriedStepByStep()
    {
        QFETCH(QString, pattern);
        QFETCH(int, first);
        QFETCH(int, last);
        const QString half = QStringLiteral("a").repeated(10'000);
        const QString line = half + QStringLiteral("xy") + half.mid(1) + QStringLiteral("x");
        const RegularExpression expression(pattern, Qt::CaseSensitive);
        const auto found = expression.firstFrom(line, 0, nobody);
        QCOMPARE(found ? found->start : -1, first);
        const auto foundLast = expression.lastFrom(line, line.size(), nobody);
        QCOMPARE(foundLast ? foundLast->start : -1, last);
    }

    // Alone, QRegExp would take hours for it.
    void theWatchComesInTimeOnALongLine_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::newRow("nested") << "(a+)+$";
        QTest::newRow("anything") << ".*x";
        QTest::newRow("upwards") << "(.*)(.*)x";
    }

    void theWatchComesInTimeOnALongLine()
    {
        QFETCH(QString, pattern);
        const QString line = QStringLiteral("a").repeated(1'000'000) + QStringLiteral("b");
        const RegularExpression expression(pattern, Qt::CaseSensitive);
        int calls = 0;
        const SearchWatch watch = [&calls] {
            if (++calls == 5)
                throw QStringLiteral("enough");
        };
        QCOMPARE(thrownBy([&] { expression.firstFrom(line, 0, watch); }), QStringLiteral("enough"));
        calls = 0;
        QCOMPARE(thrownBy([&] { expression.lastFrom(line, line.size(), watch); }),
                 QStringLiteral("enough"));
    }

    void linesTooLongForAPatternAreRefused_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<int>("length");
        QTest::newRow("back-reference") << "(a*)(a*)\\1\\2x" << 100'000;
        QTest::newRow("look-ahead") << "(?:a(?=.*x))*" << 100'000;
        QTest::newRow("look-aheads in each other") << "(?:a(?=(?:a(?=.*x))*))*" << 5'000;
        QTest::newRow("many repetitions") << QStringLiteral("(a*)").repeated(400) << 1'000;
    }

    void linesTooLongForAPatternAreRefused()
    {
        QFETCH(QString, pattern);
        QFETCH(int, length);
        const QString line = QStringLiteral("a").repeated(length);
        const RegularExpression expression(pattern, Qt::CaseSensitive);
        const QString message =
            QStringLiteral("A line of the text is too long for this regular expression.");
        QCOMPARE(thrownBy([&] { expression.firstFrom(line, 0, nobody); }), message);
        QCOMPARE(thrownBy([&] { expression.lastFrom(line, length, nobody); }), message);
        QCOMPARE(thrownBy([&] { expression.at(line, 0); }), message);
        QCOMPARE(thrownBy([&] { expression.whole(line); }), message);
    }

    // By QString::replace(), with a text that the pattern matches once and whole.
    void referencesAreThoseOfQt_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("after");
        for (const char *after : {"", "x", "\\1", "\\2\\1", "\\3", "\\0", "\\9", "\\", "\\\\",
                                  "\\\\1", "\\1\\", "\\12", "a\\1b\\2c", "\\a"})
            QTest::addRow("%s", after) << "(a)(b)?(c)"
                                       << "ac" << QString::fromUtf8(after);
        QTest::newRow("ten") << QStringLiteral("(.)").repeated(11) << "abcdefghijk"
                             << "\\11\\10\\1\\12\\99";
        QTest::newRow("no groups") << "a"
                                   << "a"
                                   << "\\1\\0";
        QTest::newRow("group in group") << "((a)b)"
                                        << "ab"
                                        << "\\2\\1";
        QTest::newRow("group that does not catch") << "(?:a)(b)"
                                                   << "ab"
                                                   << "\\1\\2";
    }

    void referencesAreThoseOfQt()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, text);
        QFETCH(QString, after);
        const RegularExpression expression(pattern, Qt::CaseSensitive);
        const auto match = expression.whole(text);
        QVERIFY(match);
        QCOMPARE(expression.replacement(*match, after),
                 QString(text).replace(QRegExp(pattern), after));
    }

    void whatComesOfReferencesIsBounded()
    {
        const RegularExpression expression(QStringLiteral("(a*)"), Qt::CaseSensitive);
        const auto match = expression.whole(QStringLiteral("a").repeated(100'000));
        QVERIFY(match);
        QCOMPARE(
            thrownBy([&] { expression.replacement(*match, QStringLiteral("\\1").repeated(501)); }),
            QStringLiteral("The text would become too long."));
    }
};

QTEST_APPLESS_MAIN(TestRegularExpression)
#include "tst_RegularExpression.moc"
