#pragma once

#include <QGraphicsRectItem>

class NotePainter;
class TrackEvent;

/// A note on the piano roll: its time in ticks and its pitch, one semitone high.
class NoteItem : public QGraphicsRectItem {
public:
    /// The painter is not owned and must outlive the last drawing.
    NoteItem(const TrackEvent &note, const NotePainter *painter);

    /// Does not request a repaint: in a scene of many items QGraphicsItem::update() looks at all of
    /// them. The caller updates the scene at boundingRect().
    void setPressed(bool isPressed) { m_isPressed = isPressed; }

    /// The rectangle as far as it can be scrolled to.
    QRectF boundingRect() const override;

    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    const NotePainter *m_painter;
    bool m_isPressed = false;
};
