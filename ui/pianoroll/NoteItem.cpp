#include "ui/pianoroll/NoteItem.h"

#include "model/TrackEvent.h"
#include "ui/pianoroll/NotePainter.h"

#include <algorithm>

namespace {

/// At the largest zoom, later ticks are too many pixels away for the framework's whole numbers. It
/// is more than a week.
constexpr qreal LastTick = 4e10;

} // namespace

NoteItem::NoteItem(const TrackEvent &note, const NotePainter *painter)
    : QGraphicsRectItem(static_cast<qreal>(note.time()), note.note(),
                        static_cast<qreal>(note.duration()), 1.0)
    , m_painter(painter)
{
}

QRectF NoteItem::boundingRect() const
{
    QRectF bounds = rect();
    bounds.setLeft(std::min(bounds.left(), LastTick));
    bounds.setRight(std::min(bounds.right(), LastTick));
    return bounds;
}

void NoteItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    m_painter->draw(painter, rect(), m_isPressed);
}
