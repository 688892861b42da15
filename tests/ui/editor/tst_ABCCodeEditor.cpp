#include "support/WidgetDriver.h"
#include "ui/editor/ABCCodeEditor.h"
#include "ui/editor/EditorLineNumberArea.h"

#include <QApplication>
#include <QClipboard>
#include <QPixmap>
#include <QScreen>
#include <QScrollBar>
#include <QTextBlock>
#include <QtTest>

using namespace WidgetDriver;

namespace {

const QColor lightGrey(192, 192, 192);
const QColor darkGrey(128, 128, 128);
const QColor currentLineColor(229, 229, 255);

QString lines(int count)
{
    QStringList list;
    for (int i = 1; i <= count; ++i)
        list << QStringLiteral("x");
    return list.join(QLatin1Char('\n'));
}

EditorLineNumberArea *gutterOf(const ABCCodeEditor &editor)
{
    return editor.findChild<EditorLineNumberArea *>();
}

int digit(const ABCCodeEditor &editor)
{
    return editor.fontMetrics().horizontalAdvance(QLatin1Char('9'));
}

QImage pictureOf(QWidget *widget)
{
    QApplication::processEvents();
    return widget->grab().toImage();
}

QImage pictureOfGutter(const ABCCodeEditor &editor)
{
    return pictureOf(gutterOf(editor));
}

/// The rows of pixels that a line of the text takes in the gutter.
QRect rowOf(const ABCCodeEditor &editor, int line)
{
    const QRect cursor = editor.cursorRect(QTextCursor(editor.document()->findBlockByNumber(line)));
    return {0, cursor.top(), gutterOf(editor)->width(), editor.fontMetrics().height()};
}

int count(const QImage &picture, const QRect &area, const QColor &color)
{
    int pixels = 0;
    const QRect inside = area & picture.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            pixels += int(picture.pixelColor(x, y) == color);
    return pixels;
}

/// The part of the picture that is not of the colour.
QRect inkOf(const QImage &picture, const QRect &area, const QColor &paper)
{
    QRect ink;
    const QRect inside = area & picture.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            if (picture.pixelColor(x, y) != paper)
                ink |= QRect(x, y, 1, 1);
    return ink;
}

QPalette dark()
{
    QPalette palette(QColor(53, 53, 53), QColor(42, 42, 42));
    palette.setColor(QPalette::Base, QColor(35, 35, 35));
    palette.setColor(QPalette::Text, Qt::white);
    return palette;
}

} // namespace

class TestABCCodeEditor : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ABCCodeEditor> m_editor;

    void moveTo(int line)
    {
        m_editor->setTextCursor(QTextCursor(m_editor->document()->findBlockByNumber(line)));
    }

private slots:
    void init()
    {
        m_editor = std::make_unique<ABCCodeEditor>();
        m_editor->setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
        m_editor->resize(400, 300);
        QVERIFY(show(*m_editor));
    }
    void cleanup()
    {
        m_editor.reset();
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    }

    void theGutterIsAsWideAsTheLastNumber_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("digits");
        QTest::newRow("empty") << 1 << 1;
        QTest::newRow("9") << 9 << 1;
        QTest::newRow("10") << 10 << 2;
        QTest::newRow("99") << 99 << 2;
        QTest::newRow("100") << 100 << 3;
        QTest::newRow("9999") << 9999 << 4;
        QTest::newRow("10000") << 10000 << 5;
    }

    void theGutterIsAsWideAsTheLastNumber()
    {
        QFETCH(int, count);
        QFETCH(int, digits);
        m_editor->setPlainText(lines(count));
        const int width = digits * digit(*m_editor) + 5;
        QCOMPARE(m_editor->lineNumberAreaWidth(), width);
        QCOMPARE(gutterOf(*m_editor)->sizeHint(), QSize(width, 0));
        QCOMPARE(gutterOf(*m_editor)->geometry(),
                 QRect(m_editor->contentsRect().topLeft(),
                       QSize(width, m_editor->contentsRect().height())));
        QCOMPARE(m_editor->viewport()->x(), m_editor->contentsRect().left() + width);
    }

    void theGutterGrowsAndShrinksWithTheLines()
    {
        m_editor->setPlainText(lines(9));
        m_editor->moveCursor(QTextCursor::End);
        const int narrow = gutterOf(*m_editor)->width();
        press(Qt::Key_Return);
        QCOMPARE(gutterOf(*m_editor)->width(), narrow + digit(*m_editor));
        QCOMPARE(m_editor->viewport()->x(),
                 m_editor->contentsRect().left() + narrow + digit(*m_editor));
        press(Qt::Key_Backspace);
        QCOMPARE(gutterOf(*m_editor)->width(), narrow);
        QCOMPARE(m_editor->viewport()->x(), m_editor->contentsRect().left() + narrow);
    }

    void theGutterFollowsTheFont()
    {
        const int before = m_editor->lineNumberAreaWidth();
        m_editor->setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 30));
        QVERIFY(m_editor->lineNumberAreaWidth() > before);
        QCOMPARE(gutterOf(*m_editor)->width(), digit(*m_editor) + 5);
        QCOMPARE(m_editor->viewport()->x(), m_editor->contentsRect().left() + digit(*m_editor) + 5);
    }

    void theGutterFollowsAFontSetBeforeTheEditorIsShown()
    {
        ABCCodeEditor editor;
        editor.setPlainText(lines(10));
        editor.setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 30));
        const int width = 2 * digit(editor) + 5;
        QCOMPARE(gutterOf(editor)->width(), width);
        QVERIFY(show(editor));
        QCOMPARE(gutterOf(editor)->width(), width);
        QCOMPARE(editor.viewport()->x(), editor.contentsRect().left() + width);
    }

    void theGutterFollowsTheSize()
    {
        m_editor->resize(500, 450);
        QTRY_COMPARE(gutterOf(*m_editor)->height(), m_editor->contentsRect().height());
        QVERIFY(gutterOf(*m_editor)->height() > 400);
    }

    void theGutterIsLightGreyWithDarkGreyNumbers()
    {
        m_editor->setPlainText(lines(3));
        const QImage picture = pictureOfGutter(*m_editor);
        for (int line = 0; line < 3; ++line)
            QVERIFY(count(picture, rowOf(*m_editor, line), darkGrey) > 0);
        QCOMPARE(picture.pixelColor(0, 0), lightGrey);
        const int below = rowOf(*m_editor, 2).bottom() + 1;
        const QRect rest(0, below, picture.width(), picture.height() - below);
        QCOMPARE(count(picture, rest, lightGrey), rest.width() * rest.height());
    }

    void numbersStandAtTheRightOfTheirLines()
    {
        m_editor->setPlainText(lines(10));
        const QImage picture = pictureOfGutter(*m_editor);
        const QRect one = inkOf(picture, rowOf(*m_editor, 0), lightGrey);
        const QRect ten = inkOf(picture, rowOf(*m_editor, 9), lightGrey);
        QVERIFY(one.left() >= picture.width() - digit(*m_editor));
        QVERIFY(ten.left() >= picture.width() - 2 * digit(*m_editor));
        QVERIFY(ten.left() < picture.width() - digit(*m_editor));
        QVERIFY(one.height() > digit(*m_editor));
        QVERIFY(ten.height() >= one.height());
    }

    void theGutterIsOnTheLeftOfARightToLeftDesktopToo()
    {
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
        init();
        m_editor->setPlainText(lines(1000));
        const QImage picture = pictureOfGutter(*m_editor);
        QCOMPARE(gutterOf(*m_editor)->geometry().right() + 1, m_editor->viewport()->x());
        QVERIFY(m_editor->verticalScrollBar()->mapTo(m_editor.get(), QPoint()).x()
                > m_editor->viewport()->geometry().right());
        const QRect one = inkOf(picture, rowOf(*m_editor, 0), lightGrey);
        QVERIFY(one.left() >= picture.width() - digit(*m_editor));
    }

    void theSameNumberLooksTheSameOnItsLine()
    {
        m_editor->setPlainText(lines(20));
        const QImage before = pictureOfGutter(*m_editor).copy(rowOf(*m_editor, 11));
        m_editor->resize(m_editor->width(), 150);
        QApplication::processEvents();
        m_editor->verticalScrollBar()->setValue(7);
        QTRY_COMPARE(
            m_editor->cursorRect(QTextCursor(m_editor->document()->findBlockByNumber(7))).top(), 0);
        QCOMPARE(pictureOfGutter(*m_editor).copy(rowOf(*m_editor, 11)), before);
    }

    // What is on the screen, not painted anew for the picture.
    void theGutterScrollsWithTheText()
    {
        m_editor->setPlainText(lines(300));
        QApplication::processEvents();
        for (const int value : {3, 2, 200, 0, 280}) {
            m_editor->verticalScrollBar()->setValue(value);
            QApplication::processEvents();
            const QImage shown = m_editor->screen()
                                     ->grabWindow(m_editor->winId())
                                     .toImage()
                                     .copy(gutterOf(*m_editor)->geometry());
            QCOMPARE(shown.convertToFormat(QImage::Format_RGB32),
                     pictureOfGutter(*m_editor).convertToFormat(QImage::Format_RGB32));
        }
    }

    void aWrappedLineHasOneNumber()
    {
        m_editor->setPlainText(QStringLiteral("abc ").repeated(100) + QStringLiteral("\nx"));
        const QImage picture = pictureOfGutter(*m_editor);
        const QRect first = rowOf(*m_editor, 0);
        const int second = rowOf(*m_editor, 1).top();
        QVERIFY(second > 2 * first.height());
        QVERIFY(inkOf(picture, first, lightGrey).isValid());
        const QRect between(0, first.bottom() + 1, picture.width(), second - first.bottom() - 1);
        QVERIFY(!inkOf(picture, between, lightGrey).isValid());
        QVERIFY(inkOf(picture, rowOf(*m_editor, 1), lightGrey).isValid());
    }

    void theGutterLeavesAHorizontalScrollBarFree()
    {
        m_editor->setLineWrapMode(QPlainTextEdit::NoWrap);
        m_editor->setPlainText(QStringLiteral("abc ").repeated(100));
        QApplication::processEvents();
        const QScrollBar *bar = m_editor->horizontalScrollBar();
        QVERIFY(bar->isVisible());
        const QPoint start = bar->mapTo(m_editor.get(), QPoint(1, bar->height() / 2));
        QVERIFY(m_editor->childAt(start) == bar);
    }

    void theCurrentLineIsMarkedAtFullWidth()
    {
        m_editor->setPlainText(lines(3));
        moveTo(1);
        const QImage picture = pictureOf(m_editor->viewport());
        const QRect line = m_editor->cursorRect();
        const int margin = int(m_editor->document()->documentMargin());
        QCOMPARE(picture.pixelColor(margin + 1, line.top()), currentLineColor);
        QCOMPARE(picture.pixelColor(picture.width() / 2, line.center().y()), currentLineColor);
        QCOMPARE(picture.pixelColor(picture.width() - margin - 2, line.center().y()),
                 currentLineColor);
        const QRect other = line.translated(0, line.height());
        QCOMPARE(picture.pixelColor(picture.width() / 2, other.center().y()), QColor(Qt::white));
    }

    void theMarkFollowsTheCursor()
    {
        m_editor->setPlainText(lines(3));
        press(Qt::Key_Down);
        press(Qt::Key_Down);
        QCOMPARE(m_editor->extraSelections().size(), 1);
        const QTextEdit::ExtraSelection selection = m_editor->extraSelections().first();
        QCOMPARE(selection.cursor.blockNumber(), 2);
        QVERIFY(!selection.cursor.hasSelection());
        QCOMPARE(selection.format.background().color().rgb(), currentLineColor.rgb());
        QCOMPARE(QColor(Qt::blue).lighter(190).rgb(), currentLineColor.rgb());
        QVERIFY(selection.format.boolProperty(QTextFormat::FullWidthSelection));
    }

    void theMarkIsThereFromTheStart() { QCOMPARE(m_editor->extraSelections().size(), 1); }

    void theMarkIsOneLineWhereSeveralAreSelected()
    {
        m_editor->setPlainText(lines(3));
        press(Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(m_editor->extraSelections().size(), 1);
        QVERIFY(!m_editor->extraSelections().first().cursor.hasSelection());
        QCOMPARE(m_editor->extraSelections().first().cursor.blockNumber(), 1);
    }

    void whatIsReadOnlyHasNoMark()
    {
        m_editor->setReadOnly(true);
        QVERIFY(m_editor->extraSelections().isEmpty());
        m_editor->setPlainText(lines(3));
        moveTo(1);
        QVERIFY(m_editor->extraSelections().isEmpty());
        m_editor->setReadOnly(false);
        QCOMPARE(m_editor->extraSelections().size(), 1);
    }

    void theMarkedTextCanBeReadInADarkTheme()
    {
        m_editor->setPalette(dark());
        m_editor->setPlainText(QStringLiteral("MMMM\nMMMM"));
        const QImage picture = pictureOf(m_editor->viewport());
        const QRect line = m_editor->cursorRect().adjusted(2, 0, 40, 0);
        QVERIFY(count(picture, line, currentLineColor) > 0);
        QVERIFY(count(picture, line, Qt::black) > 0);
        QCOMPARE(count(picture, line, Qt::white), 0);
        const QRect other = line.translated(0, line.height());
        QVERIFY(count(picture, other, Qt::white) > 0);
    }

    void theMarkedTextHasItsOwnColourInALightTheme()
    {
        QVERIFY(
            !m_editor->extraSelections().first().format.hasProperty(QTextFormat::ForegroundBrush));
    }

    void everyLineEndMakesALine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("\\n") << "a\nb";
        QTest::newRow("\\r\\n") << "a\r\nb";
        QTest::newRow("line separator") << QStringLiteral("a\u2028b");
        QTest::newRow("paragraph separator") << QStringLiteral("a\u2029b");
    }

    void everyLineEndMakesALine()
    {
        QFETCH(QString, text);
        QApplication::clipboard()->setText(text);
        press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(m_editor->toPlainText(), QStringLiteral("a\nb"));
        QCOMPARE(m_editor->blockCount(), 2);
        press(Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(m_editor->toPlainText(), QString());
    }

    void whatIsNoTextIsNotPasted()
    {
        m_editor->setPlainText(QStringLiteral("abc"));
        m_editor->selectAll();
        QApplication::clipboard()->setPixmap(QPixmap(8, 8));
        press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(m_editor->toPlainText(), QStringLiteral("abc"));
    }

    void shiftAndReturnMakeALineToo()
    {
        type(QStringLiteral("a"));
        press(Qt::Key_Return, Qt::ShiftModifier);
        type(QStringLiteral("b"));
        QCOMPARE(m_editor->toPlainText(), QStringLiteral("a\nb"));
        QCOMPARE(m_editor->blockCount(), 2);
    }

    void theNewLineIsSeen()
    {
        m_editor->setPlainText(lines(100));
        m_editor->moveCursor(QTextCursor::End);
        press(Qt::Key_Return, Qt::ShiftModifier);
        QVERIFY(m_editor->viewport()->rect().contains(m_editor->cursorRect()));
        QVERIFY(m_editor->viewport()->rect().bottom() > m_editor->cursorRect().bottom());
    }

    void shiftAndReturnLeaveWhatIsReadOnly()
    {
        m_editor->setPlainText(QStringLiteral("a"));
        m_editor->setReadOnly(true);
        press(Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(m_editor->toPlainText(), QStringLiteral("a"));
    }
};

QTEST_MAIN(TestABCCodeEditor)
#include "tst_ABCCodeEditor.moc"
