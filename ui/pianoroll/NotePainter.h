#pragma once

#include <QBrush>
#include <QColor>
#include <QHash>
#include <QImage>
#include <QPen>

class QPainter;

/// Draws notes: framed in black and filled with a gradient of the note colour, a brighter one
/// while they sound.
///
/// It is given the rectangle of a note in scene coordinates. Where these are only scaled to whole
/// pixels, which the piano roll always does on a plain screen, the note is put together of ready
/// pixels, the same as those of QPainter::drawRect() in a fraction of the time.
class NotePainter {
public:
    explicit NotePainter(const QColor &color);

    QColor color() const { return m_color; }

    void draw(QPainter *painter, const QRectF &note, bool isPressed) const;

private:
    struct Look {
        QBrush brush;
        QHash<int, QImage> strips; // by height in pixels
    };

    void drawShape(QPainter *painter, const QRectF &note, const Look &look) const;
    void drawPixels(QPainter *painter, const QRectF &note, Look &look) const;
    const QImage &strip(Look &look, int height) const;
    QImage makeStrip(const Look &look, int height) const;

    QColor m_color;
    QPen m_pen;
    mutable Look m_released;
    mutable Look m_pressed;
};
