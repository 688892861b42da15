#include "ui/editor/ABCCodeEditor.h"

#include "ui/editor/EditorLineNumberArea.h"
#include "ui/editor/LineEnds.h"

#include <QMimeData>
#include <QPaintEvent>
#include <QPainter>
#include <QTextBlock>

namespace {

constexpr int Spacing = 5;

int digitsOf(int number)
{
    int digits = 1;
    for (; number >= 10; number /= 10)
        ++digits;
    return digits;
}

// The mark is as light in every theme, so that the light text of a dark one would not be seen.
QTextCharFormat currentLineFormat(const QPalette &palette)
{
    QTextCharFormat format;
    format.setBackground(QColor(Qt::blue).lighter(190));
    format.setProperty(QTextFormat::FullWidthSelection, true);
    if (palette.color(QPalette::Text).lightness() > 100)
        format.setForeground(Qt::black);
    return format;
}

QTextEdit::ExtraSelection currentLine(QTextCursor cursor, const QPalette &palette)
{
    cursor.clearSelection();
    QTextEdit::ExtraSelection selection;
    selection.cursor = cursor;
    selection.format = currentLineFormat(palette);
    return selection;
}

} // namespace

ABCCodeEditor::ABCCodeEditor(QWidget *parent)
    : QPlainTextEdit(parent)
    , m_lineNumberArea(new EditorLineNumberArea(this))
{
    setLayoutDirection(Qt::LeftToRight); // ABC is written so everywhere
    connect(this, &QPlainTextEdit::blockCountChanged, this, &ABCCodeEditor::onBlockCountChanged);
    connect(this, &QPlainTextEdit::updateRequest, this, &ABCCodeEditor::onUpdateRequest);
    connect(this, &QPlainTextEdit::cursorPositionChanged, this,
            &ABCCodeEditor::onCursorPositionChanged);
    onBlockCountChanged();
    onCursorPositionChanged();
}

int ABCCodeEditor::lineNumberAreaWidth() const
{
    return digitsOf(blockCount()) * fontMetrics().horizontalAdvance(QLatin1Char('9')) + Spacing;
}

void ABCCodeEditor::paintLineNumbers(const QPaintEvent &event)
{
    QPainter painter(m_lineNumberArea);
    painter.fillRect(event.rect(), Qt::lightGray);
    painter.setPen(Qt::darkGray);
    painter.setFont(font());
    const int height = fontMetrics().height();
    QTextBlock block = firstVisibleBlock();
    qreal top = blockBoundingGeometry(block).translated(contentOffset()).top();
    for (; block.isValid() && top <= event.rect().bottom(); block = block.next()) {
        if (block.isVisible())
            painter.drawText(0, qRound(top), m_lineNumberArea->width(), height,
                             Qt::AlignRight | Qt::AlignAbsolute,
                             QString::number(block.blockNumber() + 1));
        top += blockBoundingRect(block).height();
    }
}

void ABCCodeEditor::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        onBlockCountChanged();
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ReadOnlyChange)
        onCursorPositionChanged();
}

void ABCCodeEditor::insertFromMimeData(const QMimeData *source)
{
    QMimeData lines;
    lines.setText(withSimpleLineEnds(source->text()));
    QPlainTextEdit::insertFromMimeData(&lines);
}

void ABCCodeEditor::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::InsertLineSeparator) && !isReadOnly())
        insertLine();
    else
        QPlainTextEdit::keyPressEvent(event);
}

void ABCCodeEditor::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    placeLineNumberArea();
}

void ABCCodeEditor::onBlockCountChanged()
{
    setViewportMargins(lineNumberAreaWidth(), 0, 0, 0);
    placeLineNumberArea();
}

void ABCCodeEditor::onCursorPositionChanged()
{
    if (isReadOnly())
        setExtraSelections({});
    else
        setExtraSelections({currentLine(textCursor(), palette())});
}

void ABCCodeEditor::onUpdateRequest(const QRect &rect, int dy)
{
    if (dy != 0)
        m_lineNumberArea->scroll(0, dy);
    else
        m_lineNumberArea->update(0, rect.y(), m_lineNumberArea->width(), rect.height());
    if (rect.contains(viewport()->rect()))
        onBlockCountChanged();
}

void ABCCodeEditor::placeLineNumberArea()
{
    const QRect contents = contentsRect();
    m_lineNumberArea->setGeometry(contents.left(), contents.top(), lineNumberAreaWidth(),
                                  contents.height());
}

void ABCCodeEditor::insertLine()
{
    textCursor().insertBlock();
    ensureCursorVisible();
}
