// Typing and replacing in a big text, beside a plain QPlainTextEdit.
//
//     QT_QPA_PLATFORM=offscreen bench_editor
//
// All times are those of the clock on the wall, as the user sees them.

#include "ui/editor/ABCCodeEditor.h"
#include "ui/editor/RegularExpression.h"
#include "ui/editor/TextSearch.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int TextSize = 5'000'000;
constexpr int Matches = 100'000;

double millisecondsOf(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

// Every line has two bars of the note that is replaced.
QString tune(const char *lineEnd)
{
    const int lineLength = TextSize / (Matches / 2);
    QString line = QStringLiteral("A2 B2 c2 d4|A2 f2 g4 [ceg]2 z2|");
    line += QStringLiteral("e2 f2 g4|").repeated(lineLength / 9).left(lineLength - line.size() - 1);
    return (line + QLatin1String(lineEnd)).repeated(Matches / 2);
}

void show(QPlainTextEdit &editor, const QString &text)
{
    editor.setPlainText(text);
    editor.resize(900, 700);
    editor.show();
    QApplication::processEvents();
}

// Until it is on the screen.
void press(QPlainTextEdit &editor)
{
    QKeyEvent event(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    QApplication::sendEvent(&editor, &event);
    QApplication::processEvents();
    editor.repaint();
}

void moveTo(QPlainTextEdit &editor, double share)
{
    QTextCursor cursor = editor.textCursor();
    cursor.setPosition(int(share * (editor.document()->characterCount() - 1)));
    editor.setTextCursor(cursor);
    QApplication::processEvents();
}

void benchTyping(QPlainTextEdit &editor, const char *name, int keys)
{
    for (const double share : {0.0, 0.5, 1.0}) {
        moveTo(editor, share);
        std::vector<double> times;
        for (int i = 0; i < keys; ++i)
            times.push_back(millisecondsOf([&editor] { press(editor); }));
        std::sort(times.begin(), times.end());
        std::printf("%-34s at %3.0f %% %9.2f ms, worst %9.2f\n", name, share * 100,
                    times[times.size() / 2], times.back());
    }
}

void replaceOurs(QPlainTextEdit &editor, const TextPattern &pattern)
{
    const TextSearch search(editor.document(), pattern, TextSearch::Direction::Down,
                            TextSearch::Words::Any, [] {});
    QTextCursor cursor = editor.textCursor();
    search.replaceAll(TextSearch::wholeDocument(*editor.document()), QStringLiteral("XY"), cursor);
    editor.setTextCursor(cursor);
    QApplication::processEvents();
}

// Match by match, as one does it with the document's own search.
void replacePlainly(QPlainTextEdit &editor, int most)
{
    QTextCursor edit(editor.document());
    edit.beginEditBlock();
    QTextCursor found(editor.document());
    for (int i = 0; i < most && !found.isNull(); ++i) {
        found =
            editor.document()->find(QStringLiteral("A"), found, QTextDocument::FindCaseSensitively);
        if (!found.isNull())
            found.insertText(QStringLiteral("XY"));
    }
    edit.endEditBlock();
    QApplication::processEvents();
}

void undo(QPlainTextEdit &editor)
{
    editor.undo();
    QApplication::processEvents();
}

void benchReplacing(const char *name, const QString &text, const TextPattern &pattern)
{
    ABCCodeEditor editor;
    show(editor, text);
    const double there = millisecondsOf([&] { replaceOurs(editor, pattern); });
    const double back = millisecondsOf([&] { undo(editor); });
    std::printf("%-34s %9.0f ms, undo %9.0f ms\n", name, there, back);
}

void benchReplacingPlainly(const char *name, const QString &text, int matches)
{
    QPlainTextEdit editor;
    show(editor, text);
    const double there = millisecondsOf([&] { replacePlainly(editor, matches); });
    const double back = millisecondsOf([&] { undo(editor); });
    std::printf("%-34s %9.0f ms, undo %9.0f ms (%d matches)\n", name, there, back, matches);
}

template <typename Editor> void benchTypingIn(const char *name, const QString &text, int keys)
{
    Editor editor;
    show(editor, text);
    benchTyping(editor, name, keys);
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QString lines = tune("\n");
    const QString oneLine = tune("|");
    std::printf("A key, from the press to the picture, in 5 MB\n");
    benchTypingIn<ABCCodeEditor>("ABCCodeEditor, 50,000 lines", lines, 50);
    benchTypingIn<QPlainTextEdit>("QPlainTextEdit, 50,000 lines", lines, 50);
    benchTypingIn<ABCCodeEditor>("ABCCodeEditor, one line", oneLine, 3);
    benchTypingIn<QPlainTextEdit>("QPlainTextEdit, one line", oneLine, 3);

    std::printf("Replace All of 100,000 matches in 5 MB, and its undo\n");
    const PlainTextPattern plain(QStringLiteral("A"), Qt::CaseSensitive);
    const RegularExpression pattern(QStringLiteral("A(?:\\b|\\d)"), Qt::CaseSensitive);
    benchReplacing("text, 50,000 lines", lines, plain);
    benchReplacing("pattern, 50,000 lines", lines, pattern);
    benchReplacing("text, one line", oneLine, plain);
    benchReplacing("pattern, one line", oneLine, pattern);
    benchReplacingPlainly("match by match, 50,000 lines", lines, Matches);
    benchReplacingPlainly("match by match, one line", oneLine, 500);
    return 0;
}
