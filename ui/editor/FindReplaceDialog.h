#pragma once

#include <QDialog>

class ABCCodeEditor;

/// Finds and replaces text in an editor.
class FindReplaceDialog : public QDialog {
    Q_OBJECT

public:
    FindReplaceDialog(ABCCodeEditor *editor, QWidget *parent);
};
