#include "ui/editor/EditorLineNumberArea.h"

#include "ui/editor/ABCCodeEditor.h"

EditorLineNumberArea::EditorLineNumberArea(ABCCodeEditor *editor)
    : QWidget(editor)
    , m_editor(editor)
{
}

QSize EditorLineNumberArea::sizeHint() const
{
    return {m_editor->lineNumberAreaWidth(), 0};
}

void EditorLineNumberArea::paintEvent(QPaintEvent *event)
{
    m_editor->paintLineNumbers(*event);
}
