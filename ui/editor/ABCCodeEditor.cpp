#include "ui/editor/ABCCodeEditor.h"

ABCCodeEditor::ABCCodeEditor(QWidget *parent)
    : QPlainTextEdit(parent)
{
}
