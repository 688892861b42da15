#pragma once

#include <QWidget>

class ABCCodeEditor;

/// The strip beside the text of an editor that shows the numbers of its lines. The editor knows
/// how wide it is, places and paints it.
class EditorLineNumberArea : public QWidget {
    Q_OBJECT

public:
    explicit EditorLineNumberArea(ABCCodeEditor *editor);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    ABCCodeEditor *m_editor;
};
