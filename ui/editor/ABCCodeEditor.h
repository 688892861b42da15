#pragma once

#include <QPlainTextEdit>

/// A plain text editor with line numbers and a marked current line.
class ABCCodeEditor : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit ABCCodeEditor(QWidget *parent = nullptr);
};
