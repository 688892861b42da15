#pragma once

#include <QLabel>

/// A line of text that is shown as it is, never as markup. What it has no room for is cut and
/// stands in the tool tip. An empty one takes no place.
class ProblemLabel : public QLabel {
    Q_OBJECT

public:
    explicit ProblemLabel(QWidget *parent = nullptr);

    /// In place of QLabel::setText().
    void setLine(const QString &text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
