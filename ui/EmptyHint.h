#pragma once

#include <QLabel>

/// Says over the empty track list how to begin. It covers its parent, whatever size that has, and
/// lets the mouse through to it.
class EmptyHint : public QLabel {
    Q_OBJECT

public:
    explicit EmptyHint(QWidget *parent);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};
