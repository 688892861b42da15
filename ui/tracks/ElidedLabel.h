#pragma once

#include <QLabel>

/// A line of plain text that ends in "…" where it has no room, and is then shown whole as a tool
/// tip.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent);

    /// As high as the line. The width is that of a short text.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString shownText() const;
    bool showWholeText(const QPoint &globalPlace);
};
