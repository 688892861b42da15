#include "support/Thrown.h"
#include "support/WidgetDriver.h"
#include "ui/editor/RegularExpression.h"
#include "ui/editor/TextSearch.h"

#include <QTextBlock>
#include <QtTest>

#include <random>

using WidgetDriver::texts;
using Direction = TextSearch::Direction;
using Words = TextSearch::Words;

namespace {

/// A text in which "[" and "]" are the ends of the selection, "]" doubled is its moving one when it
/// is the first ("]]abc["). A single "|" is a cursor without a selection.
struct Edited {
    explicit Edited(const QString &marked)
    {
        QString text = marked;
        int anchor = 0;
        int position = 0;
        if (text.contains(QLatin1Char('|'))) {
            anchor = position = text.indexOf(QLatin1Char('|'));
            text.remove(QLatin1Char('|'));
        } else if (text.contains(QLatin1Char('>'))) {
            anchor = text.indexOf(QLatin1Char('<'));
            position = text.indexOf(QLatin1Char('>'));
            (anchor < position ? position : anchor) -= 1;
            text.remove(QLatin1Char('<')).remove(QLatin1Char('>'));
        }
        document.setPlainText(text);
        cursor = QTextCursor(&document);
        cursor.setPosition(anchor);
        cursor.setPosition(position, QTextCursor::KeepAnchor);
    }

    QString text() const { return document.toPlainText(); }

    /// The text marked as in the constructor.
    QString marked(const QTextCursor &at) const
    {
        QString text = this->text();
        if (at.isNull())
            return QStringLiteral("nothing");
        if (!at.hasSelection())
            return text.insert(at.position(), QLatin1Char('|'));
        const bool isForward = at.anchor() < at.position();
        text.insert(at.selectionEnd(), QLatin1Char(isForward ? '>' : '<'));
        return text.insert(at.selectionStart(), QLatin1Char(isForward ? '<' : '>'));
    }

    QTextDocument document;
    QTextCursor cursor;
};

struct Options {
    Qt::CaseSensitivity sensitivity = Qt::CaseInsensitive;
    Direction direction = Direction::Down;
    Words words = Words::Any;
};

std::unique_ptr<TextPattern> plain(const QString &text, const Options &options = {})
{
    return std::make_unique<PlainTextPattern>(text, options.sensitivity);
}

std::unique_ptr<TextPattern> expression(const QString &text, const Options &options = {})
{
    return std::make_unique<RegularExpression>(text, options.sensitivity);
}

TextSearch searchOf(Edited &edited, const TextPattern &pattern, const Options &options = {})
{
    return {&edited.document, pattern, options.direction, options.words, [] {}};
}

QString found(const QString &marked, const TextPattern &pattern, const Options &options = {})
{
    Edited edited(marked);
    return edited.marked(searchOf(edited, pattern, options).next(edited.cursor));
}

QString replaced(const QString &marked, const TextPattern &pattern, const QString &after,
                 const Options &options = {})
{
    Edited edited(marked);
    const bool isDone = searchOf(edited, pattern, options).replace(edited.cursor, after);
    return isDone ? edited.marked(edited.cursor) : QStringLiteral("nothing");
}

/// "count: text"
QString allReplaced(const QString &marked, const TextPattern &pattern, const QString &after,
                    const Options &options = {})
{
    Edited edited(marked);
    const int count =
        searchOf(edited, pattern, options)
            .replaceAll(TextSearch::wholeDocument(edited.document), after, edited.cursor);
    return QStringLiteral("%1: %2").arg(QString::number(count), edited.text());
}

QString allReplacedInSelection(const QString &marked, const TextPattern &pattern,
                               const QString &after, const Options &options = {})
{
    Edited edited(marked);
    const int count = searchOf(edited, pattern, options)
                          .replaceAll(TextSearch::selection(edited.cursor), after, edited.cursor);
    return QStringLiteral("%1: %2").arg(QString::number(count), edited.marked(edited.cursor));
}

Options up()
{
    return {Qt::CaseInsensitive, Direction::Up, Words::Any};
}

Options wholeWords()
{
    return {Qt::CaseInsensitive, Direction::Down, Words::Whole};
}

} // namespace

class TestTextSearch : public QObject {
    Q_OBJECT

private slots:
    void theNextMatchIsSelected_data()
    {
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("from the cursor") << "a |b a b"
                                         << "b"
                                         << "a <b> a b";
        QTest::newRow("behind the cursor") << "a b| a b"
                                           << "b"
                                           << "a b a <b>";
        QTest::newRow("behind a selection") << "a <b> a b"
                                            << "b"
                                            << "a b a <b>";
        QTest::newRow("behind a selection made backwards") << "a >b< a b"
                                                           << "b"
                                                           << "a b a <b>";
        QTest::newRow("on a later line") << "|a\n\nb\nc"
                                         << "c"
                                         << "a\n\nb\n<c>";
        QTest::newRow("at the end") << "ab|c"
                                    << "c"
                                    << "ab<c>";
        QTest::newRow("any case") << "|abC"
                                  << "c"
                                  << "ab<C>";
        QTest::newRow("none left") << "a b a b|"
                                   << "b"
                                   << "nothing";
        QTest::newRow("none at all") << "|abc"
                                     << "d"
                                     << "nothing";
        QTest::newRow("empty text") << "|"
                                    << "d"
                                    << "nothing";
        QTest::newRow("nothing to look for") << "|abc"
                                             << ""
                                             << "nothing";
        QTest::newRow("over line ends") << "|a\nb\nc\nd"
                                        << "b\nc"
                                        << "a\n<b\nc>\nd";
        QTest::newRow("not a pattern") << "|abc a.c"
                                       << "a.c"
                                       << "abc <a.c>";
    }

    void theNextMatchIsSelected()
    {
        QFETCH(QString, marked);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(found(marked, *plain(text)), expected);
    }

    void theMatchBeforeIsSelected_data()
    {
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("from the cursor") << "b a| b"
                                         << "b"
                                         << "<b> a b";
        QTest::newRow("not at the cursor") << "b a |b"
                                           << "b"
                                           << "<b> a b";
        QTest::newRow("around the cursor") << "ab ab| cd"
                                           << "b c"
                                           << "ab a<b c>d";
        QTest::newRow("before a selection") << "b a <b>"
                                            << "b"
                                            << "<b> a b";
        QTest::newRow("on an earlier line") << "a\n\nb\nc|"
                                            << "a"
                                            << "<a>\n\nb\nc";
        QTest::newRow("at the end of an earlier line") << "ca\nb\n|"
                                                       << "a"
                                                       << "c<a>\nb\n";
        QTest::newRow("none left") << "|b a b"
                                   << "b"
                                   << "nothing";
        QTest::newRow("over line ends") << "a\nb\nc\nd|"
                                        << "b\nc"
                                        << "a\n<b\nc>\nd";
    }

    void theMatchBeforeIsSelected()
    {
        QFETCH(QString, marked);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(found(marked, *plain(text), up()), expected);
    }

    void caseMattersWhenItShall()
    {
        const Options exact{Qt::CaseSensitive, Direction::Down, Words::Any};
        QCOMPARE(found(QStringLiteral("|B b"), *plain(QStringLiteral("b"), exact)),
                 QStringLiteral("B <b>"));
        QCOMPARE(found(QStringLiteral("|B b"), *expression(QStringLiteral("[b]"), exact)),
                 QStringLiteral("B <b>"));
        QCOMPARE(found(QStringLiteral("|B b"), *expression(QStringLiteral("[b]"))),
                 QStringLiteral("<B> b"));
    }

    void wholeWordsHaveNoLetterOrNumberBesideThem_data()
    {
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("expected");
        QTest::newRow("letter before") << "|xab ab"
                                       << "xab <ab>";
        QTest::newRow("letter behind") << "|abx ab"
                                       << "abx <ab>";
        QTest::newRow("number before") << "|1ab ab"
                                       << "1ab <ab>";
        QTest::newRow("number behind") << "|ab1 ab"
                                       << "ab1 <ab>";
        QTest::newRow("signs around") << "|(ab) ab"
                                      << "(<ab>) ab";
        QTest::newRow("line ends around") << "|x\nab\nx"
                                          << "x\n<ab>\nx";
        QTest::newRow("umlaut") << QStringLiteral("|\u00e4ab ab")
                                << QStringLiteral("\u00e4ab <ab>");
        QTest::newRow("none") << "|abab"
                              << "nothing";
    }

    void wholeWordsHaveNoLetterOrNumberBesideThem()
    {
        QFETCH(QString, marked);
        QFETCH(QString, expected);
        QCOMPARE(found(marked, *plain(QStringLiteral("ab")), wholeWords()), expected);
        QCOMPARE(found(marked, *expression(QStringLiteral("[a]b")), wholeWords()), expected);
    }

    void wholeWordsAreFoundUpwards()
    {
        const Options upwards{Qt::CaseInsensitive, Direction::Up, Words::Whole};
        const QString marked = QStringLiteral("ab abx xab|");
        QCOMPARE(found(marked, *plain(QStringLiteral("ab")), upwards),
                 QStringLiteral("<ab> abx xab"));
        QCOMPARE(found(marked, *expression(QStringLiteral("[a]b")), upwards),
                 QStringLiteral("<ab> abx xab"));
    }

    void patternsMatchWithinALine_data()
    {
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("expected");
        QTest::newRow("class") << "|abc"
                               << "[bc]+"
                               << "a<bc>";
        QTest::newRow("start of a line") << "a|b\nab"
                                         << "^a"
                                         << "ab\n<a>b";
        QTest::newRow("end of a line") << "|ab\nba"
                                       << "a$"
                                       << "ab\nb<a>";
        QTest::newRow("dot") << "|ab\ncd"
                             << "b.*"
                             << "a<b>\ncd";
        QTest::newRow("no line end") << "|ab\ncd"
                                     << "b\\nc"
                                     << "nothing";
        QTest::newRow("word boundary") << "|xab ab"
                                       << "\\bab"
                                       << "xab <ab>";
        QTest::newRow("look-ahead") << "|ab ac"
                                    << "a(?=c)"
                                    << "ab <a>c";
        QTest::newRow("nothing to look for") << "|ab"
                                             << ""
                                             << "nothing";
    }

    void patternsMatchWithinALine()
    {
        QFETCH(QString, marked);
        QFETCH(QString, pattern);
        QFETCH(QString, expected);
        QCOMPARE(found(marked, *expression(pattern)), expected);
    }

    void emptyMatchesAreGotOnFrom_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("line starts") << "^" << texts({"ab\n|xc", "nothing"});
        QTest::newRow("line ends") << "$" << texts({"ab|\nxc", "ab\nxc|", "nothing"});
        QTest::newRow("maybe") << "x*"
                               << texts({"a|b\nxc", "ab|\nxc", "ab\n<x>c", "ab\nxc|", "nothing"});
    }

    void emptyMatchesAreGotOnFrom()
    {
        QFETCH(QString, pattern);
        QFETCH(QStringList, expected);
        Edited edited(QStringLiteral("|ab\nxc"));
        const auto sought = expression(pattern);
        QStringList seen;
        do {
            edited.cursor = searchOf(edited, *sought).next(edited.cursor);
            seen << edited.marked(edited.cursor);
        } while (!edited.cursor.isNull() && seen.size() < 20);
        QCOMPARE(seen, expected);
    }

    void emptyMatchesAreGotOnFromUpwards()
    {
        Edited edited(QStringLiteral("ab\nxc|"));
        const auto sought = expression(QStringLiteral("^|$"));
        QStringList seen;
        do {
            edited.cursor = searchOf(edited, *sought, up()).next(edited.cursor);
            seen << edited.marked(edited.cursor);
        } while (!edited.cursor.isNull() && seen.size() < 20);
        QCOMPARE(seen, texts({"ab\n|xc", "ab|\nxc", "|ab\nxc", "nothing"}));
    }

    void theEdgeIsStartOrEnd()
    {
        Edited edited(QStringLiteral("b a| b"));
        const auto sought = plain(QStringLiteral("b"));
        QCOMPARE(edited.marked(searchOf(edited, *sought).nextFromEdge()),
                 QStringLiteral("<b> a b"));
        QCOMPARE(edited.marked(searchOf(edited, *sought, up()).nextFromEdge()),
                 QStringLiteral("b a <b>"));
        const auto lineStart = expression(QStringLiteral("^"));
        QCOMPARE(edited.marked(searchOf(edited, *lineStart).nextFromEdge()),
                 QStringLiteral("|b a b"));
    }

    void hardBlanksAreBlanks()
    {
        QCOMPARE(found(QStringLiteral("|a\u00a0b"), *plain(QStringLiteral("a b"))),
                 QStringLiteral("<a b>"));
        QCOMPARE(TextSearch::asGivenAway(QStringLiteral("a\u00a0b\u2028c\u2029d")),
                 QStringLiteral("a b\nc\nd"));
    }

    void whatIsSelectedIsReplacedIfItMatches_data()
    {
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("equal") << "a <b> c"
                               << "b"
                               << "a new| c";
        QTest::newRow("equal but for the case") << "a <B> c"
                                                << "b"
                                                << "a new| c";
        QTest::newRow("within a word") << "a<b>c"
                                       << "b"
                                       << "anew|c";
        QTest::newRow("over line ends") << "a<b\nc>d"
                                        << "b\nc"
                                        << "anew|d";
        QTest::newRow("less") << "a <b>c"
                              << "bc"
                              << "nothing";
        QTest::newRow("more") << "a <bc>"
                              << "b"
                              << "nothing";
        QTest::newRow("no selection") << "a |b"
                                      << "b"
                                      << "nothing";
        QTest::newRow("nothing to look for") << "a |b"
                                             << ""
                                             << "nothing";
    }

    void whatIsSelectedIsReplacedIfItMatches()
    {
        QFETCH(QString, marked);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(replaced(marked, *plain(text), QStringLiteral("new")), expected);
    }

    void replacingLooksAtTheCaseWhenItShall()
    {
        const Options exact{Qt::CaseSensitive, Direction::Down, Words::Any};
        const QString marked = QStringLiteral("<B>");
        QCOMPARE(replaced(marked, *plain(QStringLiteral("b"), exact), QString()),
                 QStringLiteral("nothing"));
        QCOMPARE(replaced(marked, *expression(QStringLiteral("[b]"), exact), QString()),
                 QStringLiteral("nothing"));
        QCOMPARE(replaced(marked, *expression(QStringLiteral("[b]")), QString()),
                 QStringLiteral("|"));
    }

    void whatAPatternMatchesWholeIsReplaced_data()
    {
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("expected");
        QTest::newRow("whole") << "a <bb> c"
                               << "b+"
                               << "x"
                               << "a x| c";
        QTest::newRow("part") << "a <bbc>"
                              << "b+"
                              << "x"
                              << "nothing";
        QTest::newRow("groups") << "<ab>"
                                << "(a)(b)"
                                << "\\2-\\1"
                                << "b-a|";
        QTest::newRow("over line ends") << "a<b\nc>d"
                                        << "b\\nc"
                                        << "x"
                                        << "ax|d";
        QTest::newRow("groups over line ends") << "<b\nc>"
                                               << "(.)\\n(.)"
                                               << "\\2\\1"
                                               << "cb|";
        QTest::newRow("anchored") << "a<b>"
                                  << "^b"
                                  << "x"
                                  << "ax|";
        QTest::newRow("look-ahead") << "<a>b"
                                    << "a(?=b)"
                                    << "x"
                                    << "x|b";
        QTest::newRow("look-ahead that fails") << "<a>c"
                                               << "a(?=b)"
                                               << "x"
                                               << "nothing";
        QTest::newRow("empty match") << "a\n|b"
                                     << "^"
                                     << "% "
                                     << "a\n% |b";
        QTest::newRow("no empty match here") << "a\nb|"
                                             << "^"
                                             << "% "
                                             << "nothing";
        QTest::newRow("not empty here") << "|xx"
                                        << "x*"
                                        << "y"
                                        << "nothing";
        QTest::newRow("nothing to look for") << "a |b"
                                             << ""
                                             << "x"
                                             << "nothing";
    }

    void whatAPatternMatchesWholeIsReplaced()
    {
        QFETCH(QString, marked);
        QFETCH(QString, pattern);
        QFETCH(QString, after);
        QFETCH(QString, expected);
        QCOMPARE(replaced(marked, *expression(pattern), after), expected);
    }

    void theSearchGoesOnBeforeWhatWasPutInUpwards()
    {
        QCOMPARE(replaced(QStringLiteral("a <a>"), *plain(QStringLiteral("a")),
                          QStringLiteral("aa"), up()),
                 QStringLiteral("a |aa"));
    }

    void allMatchesAreReplaced_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sought");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("expected");
        QTest::newRow("none") << "abc"
                              << "d"
                              << "x"
                              << "0: abc";
        QTest::newRow("some") << "a b\nb a\n\nB"
                              << "b"
                              << "xy"
                              << "3: a xy\nxy a\n\nxy";
        QTest::newRow("nothing left") << "bb"
                                      << "b"
                                      << ""
                                      << "2: ";
        QTest::newRow("not overlapping") << "bbbbb"
                                         << "bb"
                                         << "x"
                                         << "2: xxb";
        QTest::newRow("not what was put in") << "b b"
                                             << "b"
                                             << "bb"
                                             << "2: bb bb";
        QTest::newRow("not what came together") << "aabb"
                                                << "ab"
                                                << ""
                                                << "1: ab";
        QTest::newRow("with lines") << "a,b"
                                    << ","
                                    << "\n"
                                    << "1: a\nb";
        QTest::newRow("with line ends of two") << "a,b"
                                               << ","
                                               << "\r\n"
                                               << "1: a\nb";
        QTest::newRow("lines") << "a\nb\nc"
                               << "\n"
                               << ","
                               << "2: a,b,c";
        QTest::newRow("no reference") << "b"
                                      << "b"
                                      << "\\0\\1"
                                      << "1: \\0\\1";
        QTest::newRow("nothing to look for") << "ab"
                                             << ""
                                             << "x"
                                             << "0: ab";
    }

    void allMatchesAreReplaced()
    {
        QFETCH(QString, text);
        QFETCH(QString, sought);
        QFETCH(QString, after);
        QFETCH(QString, expected);
        QCOMPARE(allReplaced(text, *plain(sought), after), expected);
    }

    void everyLineEndThatIsPutInMakesALine()
    {
        Edited edited(QStringLiteral("a,b"));
        const auto comma = plain(QStringLiteral(","));
        searchOf(edited, *comma)
            .replaceAll(TextSearch::wholeDocument(edited.document),
                        QStringLiteral("1\r\n2\u20283\u20294"), edited.cursor);
        QCOMPARE(edited.text(), QStringLiteral("a1\n2\n3\n4b"));
        QCOMPARE(edited.document.blockCount(), 4);
    }

    void allMatchesOfAPatternAreReplaced_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("expected");
        QTest::newRow("groups") << "a1 b2\nc3"
                                << "([a-z])(\\d)"
                                << "\\2\\1"
                                << "3: 1a 2b\n3c";
        QTest::newRow("once at a line's start") << "aaa\naa"
                                                << "^a"
                                                << ""
                                                << "2: aa\na";
        QTest::newRow("line starts") << "a\n\nb"
                                     << "^"
                                     << "%"
                                     << "3: %a\n%\n%b";
        QTest::newRow("line ends") << "a\n\nb"
                                   << "$"
                                   << "%"
                                   << "3: a%\n%\nb%";
        QTest::newRow("word boundaries") << "ab c"
                                         << "\\b"
                                         << "'"
                                         << "4: 'ab' 'c'";
        QTest::newRow("maybe") << "axxb"
                               << "x*"
                               << "-"
                               << "3: -a-b-";
        QTest::newRow("anything") << "ab\n\nc"
                                  << ".*"
                                  << "x"
                                  << "3: x\nx\nx";
        QTest::newRow("empty alternative") << "ab"
                                           << "b|"
                                           << "x"
                                           << "2: xax";
        QTest::newRow("empty document") << ""
                                        << "x*"
                                        << "y"
                                        << "1: y";
        QTest::newRow("look-ahead") << "ab ac"
                                    << "a(?=c)"
                                    << "x"
                                    << "1: ab xc";
        QTest::newRow("whole characters") << QStringLiteral("\U0001F3B5a") << "x*"
                                          << "-" << QStringLiteral("3: -\U0001F3B5-a-");
        QTest::newRow("nothing to look for") << "ab"
                                             << ""
                                             << "x"
                                             << "0: ab";
    }

    void allMatchesOfAPatternAreReplaced()
    {
        QFETCH(QString, text);
        QFETCH(QString, pattern);
        QFETCH(QString, after);
        QFETCH(QString, expected);
        QCOMPARE(allReplaced(text, *expression(pattern), after), expected);
    }

    void allWholeWordsAreReplaced()
    {
        QCOMPARE(allReplaced(QStringLiteral("a ab a-a"), *plain(QStringLiteral("a")),
                             QStringLiteral("x"), wholeWords()),
                 QStringLiteral("3: x ab x-x"));
        QCOMPARE(allReplaced(QStringLiteral("a ab a-a"), *expression(QStringLiteral("\\w")),
                             QStringLiteral("x"), wholeWords()),
                 QStringLiteral("3: x ab x-x"));
    }

    void searchingUpFromTheStartFindsNothing()
    {
        QCOMPARE(allReplaced(QStringLiteral("a a|"), *plain(QStringLiteral("a")),
                             QStringLiteral("x"), up()),
                 QStringLiteral("0: a a|").remove(QLatin1Char('|')));
    }

    void theSelectionReachesFromItsMovingEnd_data()
    {
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("expected");
        QTest::newRow("made backwards") << "a >a a< xa"
                                        << "b"
                                        << "2: a >b b< xa";
        QTest::newRow("made forwards") << "a <a a> xa"
                                       << "b"
                                       << "0: a <a a> xa";
        QTest::newRow("made forwards, match at its end") << "a <a >a a"
                                                         << "b"
                                                         << "1: a <a >b a";
        QTest::newRow("match at its end") << "a >a <a a"
                                          << "b"
                                          << "2: a >b <b a";

        QTest::newRow("longer") << "a >a a< xa xa"
                                << "bbb"
                                << "2: a >bbb bbb< xa xa";
        QTest::newRow("shorter") << "a >a a< xa"
                                 << ""
                                 << "2: a > < xa";
        QTest::newRow("several lines") << "a\n>a\na<\nxa"
                                       << "b"
                                       << "2: a\n>b\nb<\nxa";
        QTest::newRow("no selection") << "a |a a"
                                      << "b"
                                      << "1: a |b a";
    }

    void theSelectionReachesFromItsMovingEnd()
    {
        QFETCH(QString, marked);
        QFETCH(QString, after);
        QFETCH(QString, expected);
        QCOMPARE(allReplacedInSelection(marked, *plain(QStringLiteral("a")), after), expected);
    }

    void aMatchOverTheEndOfTheSelectionIsReplaced()
    {
        QCOMPARE(allReplacedInSelection(QStringLiteral("x>ab a<b ab"), *plain(QStringLiteral("ab")),
                                        QStringLiteral("c")),
                 QStringLiteral("2: x>c c< ab"));
    }

    void upwardsTheSelectionReachesFromItsMovingEndToTheStart_data()
    {
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("expected");
        QTest::newRow("forwards") << "a <a> a"
                                  << "a"
                                  << "2: xa <xa> a";
        QTest::newRow("backwards") << "a >a< a"
                                   << "a"
                                   << "1: xa >a< a";
        QTest::newRow("lines") << "a\nba\n|a"
                               << "a"
                               << "2: xa\nbxa\n|a";
        QTest::newRow("one by one") << "aaa|"
                                    << "a+"
                                    << "3: xaxaxa|";
        QTest::newRow("overlapping") << "aaa|"
                                     << "aa"
                                     << "1: axa|";
        QTest::newRow("empty") << "ab|"
                               << "y*"
                               << "2: xaaxab|";
    }

    void upwardsTheSelectionReachesFromItsMovingEndToTheStart()
    {
        QFETCH(QString, marked);
        QFETCH(QString, pattern);
        QFETCH(QString, expected);
        QCOMPARE(allReplacedInSelection(marked, *expression(pattern), QStringLiteral("xa"), up()),
                 expected);
    }

    void theCursorStaysAtItsText_data()
    {
        QTest::addColumn<QString>("marked");
        QTest::addColumn<QString>("expected");
        QTest::newRow("before") << "|x bb"
                                << "|x yyy";
        QTest::newRow("behind") << "bb x| bb"
                                << "yyy x| yyy";
        QTest::newRow("within a match") << "x b|b"
                                        << "x yyy|";
        QTest::newRow("on a later line") << "bb\nbb\nx|"
                                         << "yyy\nyyy\nx|";
        QTest::newRow("selection") << "bb <x> bb"
                                   << "yyy <x> yyy";
        QTest::newRow("selection backwards") << "bb >x bb x<"
                                             << "yyy >x yyy x<";
        QTest::newRow("nothing replaced") << "b <b> b"
                                          << "b <b> b";
    }

    void theCursorStaysAtItsText()
    {
        QFETCH(QString, marked);
        QFETCH(QString, expected);
        Edited edited(marked);
        const auto sought = plain(QStringLiteral("bb"));
        searchOf(edited, *sought)
            .replaceAll(TextSearch::wholeDocument(edited.document), QStringLiteral("yyy"),
                        edited.cursor);
        QCOMPARE(edited.marked(edited.cursor), expected);
    }

    void oneUndoTakesAllBack()
    {
        Edited edited(QStringLiteral("|a b a\n\na\nb"));
        const auto sought = plain(QStringLiteral("a"));
        searchOf(edited, *sought)
            .replaceAll(TextSearch::wholeDocument(edited.document), QStringLiteral("x\ny"),
                        edited.cursor);
        QCOMPARE(edited.text(), QStringLiteral("x\ny b x\ny\n\nx\ny\nb"));
        edited.document.undo();
        QCOMPARE(edited.text(), QStringLiteral("a b a\n\na\nb"));
        QVERIFY(!edited.document.isUndoAvailable());
    }

    void whatIsBetweenTheMatchesIsNotTouched()
    {
        Edited edited(QStringLiteral("a\u00a0\u2028a"));
        const auto sought = plain(QStringLiteral("a"));
        searchOf(edited, *sought)
            .replaceAll(TextSearch::wholeDocument(edited.document), QStringLiteral("b"),
                        edited.cursor);
        QCOMPARE(edited.document.toRawText(), QStringLiteral("b\u00a0\u2028b"));
    }

    // What Qt's own search finds, with all matches of random texts.
    void findsWhatTheDocumentFinds_data()
    {
        QTest::addColumn<bool>("isPattern");
        QTest::addColumn<QString>("sought");
        QTest::addColumn<bool>("isUp");
        for (const bool isUp : {false, true})
            for (const char *text : {"a", "ab", "aa", "b\tA", "ba"})
                QTest::addRow("%s %s", text, isUp ? "up" : "down")
                    << false << QString::fromUtf8(text) << isUp;
        for (const bool isUp : {false, true})
            for (const char *text : {"a+", "^b", "a$", "(a|ab)(b|ba)", "\\bab", "[ab]{2}", "a.b"})
                QTest::addRow("%s %s", text, isUp ? "pattern up" : "pattern down")
                    << true << QString::fromUtf8(text) << isUp;
    }

    void findsWhatTheDocumentFinds()
    {
        QFETCH(bool, isPattern);
        QFETCH(QString, sought);
        QFETCH(bool, isUp);
        std::mt19937 random(7);
        for (int round = 0; round < 50; ++round) {
            QString text;
            for (int i = 0; i < 60; ++i)
                text += QStringLiteral("aabbA\t\n").at(int(random() % 7));
            Edited edited(text);
            const auto pattern = isPattern ? expression(sought) : plain(sought);
            const TextSearch ours = searchOf(edited, *pattern, isUp ? up() : Options());
            const auto flags = isUp ? QTextDocument::FindFlags(QTextDocument::FindBackward)
                                    : QTextDocument::FindFlags();
            edited.cursor.movePosition(isUp ? QTextCursor::End : QTextCursor::Start);
            for (QTextCursor cursor = edited.cursor; !cursor.isNull();) {
                const QTextCursor theirs = isPattern
                    ? edited.document.find(QRegExp(sought, Qt::CaseInsensitive), cursor, flags)
                    : edited.document.find(sought, cursor, flags);
                cursor = ours.next(cursor);
                QCOMPARE(edited.marked(cursor), edited.marked(theirs));
            }
        }
    }

    void theWatchEndsASearchBeforeAnythingIsChanged()
    {
        Edited edited(QStringLiteral("a\n").repeated(1000));
        const auto sought = plain(QStringLiteral("a"));
        int calls = 0;
        const TextSearch search(&edited.document, *sought, Direction::Down, Words::Any, [&calls] {
            if (++calls == 500)
                throw QStringLiteral("enough");
        });
        QCOMPARE(thrownBy([&] {
                     search.replaceAll(TextSearch::wholeDocument(edited.document),
                                       QStringLiteral("b"), edited.cursor);
                 }),
                 QStringLiteral("enough"));
        QCOMPARE(edited.text(), QStringLiteral("a\n").repeated(1000));
        QVERIFY(!edited.document.isUndoAvailable());
    }

    void aTextIsNotMadeLongerThanFits()
    {
        Edited edited(QStringLiteral("a\n").repeated(30'000));
        const auto sought = plain(QStringLiteral("a"));
        QCOMPARE(thrownBy([&] {
                     searchOf(edited, *sought)
                         .replaceAll(TextSearch::wholeDocument(edited.document),
                                     QStringLiteral("x").repeated(2'000), edited.cursor);
                 }),
                 QStringLiteral("The text would become too long."));
        QCOMPARE(edited.text(), QStringLiteral("a\n").repeated(30'000));
    }
};

QTEST_MAIN(TestTextSearch)
#include "tst_TextSearch.moc"
