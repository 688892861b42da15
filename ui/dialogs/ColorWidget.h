#pragma once

#include <QColor>
#include <QFrame>

/// A framed patch of one colour, at first black.
class ColorWidget : public QFrame {
    Q_OBJECT

public:
    explicit ColorWidget(QWidget *parent = nullptr);

    QColor color() const { return m_color; }
    /// Shown without its transparency, and read out as #rrggbb.
    void setColor(const QColor &color);

private:
    QColor m_color;
};
