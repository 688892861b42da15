#pragma once

#include <QPlainTextEdit>

class EditorLineNumberArea;

/// A plain text editor with line numbers and a marked current line. Each line of its text is a
/// block: what is typed or pasted cannot hold line ends of another kind, which would have no
/// number.
class ABCCodeEditor : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit ABCCodeEditor(QWidget *parent = nullptr);

    /// In pixels, for as many digits as the last line's number has.
    int lineNumberAreaWidth() const;
    /// For the strip itself: paints the part of it that the event names.
    void paintLineNumbers(const QPaintEvent &event);

protected:
    void changeEvent(QEvent *event) override;
    void insertFromMimeData(const QMimeData *source) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void onBlockCountChanged();
    void onCursorPositionChanged();
    void onUpdateRequest(const QRect &rect, int dy);

private:
    void placeLineNumberArea();
    void insertLine();

    EditorLineNumberArea *m_lineNumberArea;
};
