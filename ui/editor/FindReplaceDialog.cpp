#include "ui/editor/FindReplaceDialog.h"

FindReplaceDialog::FindReplaceDialog(ABCCodeEditor *, QWidget *parent)
    : QDialog(parent)
{
}
