#include "ui/pianoroll/PianoRollMeasureBar.h"

#include "ui/pianoroll/PianoRollGrid.h"
#include "ui/pianoroll/ScrollCoupling.h"

#include <QPainter>
#include <QScrollBar>

namespace {

constexpr int NumberIndent = 4;

} // namespace

PianoRollMeasureBar::PianoRollMeasureBar(QGraphicsView *view)
    : SideView(view, {0, 0, Ticks::PerWholeNote, Height}, {64, 64, 64})
{
    ScrollCoupling::holdRange(view->horizontalScrollBar(), horizontalScrollBar());
    ScrollCoupling::coupleValues(view->horizontalScrollBar(), horizontalScrollBar());
}

void PianoRollMeasureBar::setMeasureLength(quint32 ticks)
{
    m_measureLength = ticks;
    viewport()->update();
}

void PianoRollMeasureBar::drawForeground(QPainter *painter, const QRectF &rect)
{
    const QRectF part = PianoRollGrid::visiblePart(*painter, rect);
    const auto measures = PianoRollGrid::visibleLines(*painter, part, m_measureLength);
    for (qint64 measure = measures.first; measure < measures.end; ++measure)
        drawMeasure(painter, part, measure);
}

void PianoRollMeasureBar::drawMeasure(QPainter *painter, const QRectF &rect, qint64 measure) const
{
    const qreal length = m_measureLength;
    painter->setRenderHint(QPainter::Antialiasing, false);
    PianoRollGrid::shade(painter, rect, measure, length);
    PianoRollGrid::drawLine(painter, rect, static_cast<qreal>(measure) * length,
                            PianoRollGrid::strongLine());
    drawNumber(painter, measure);
}

void PianoRollMeasureBar::drawNumber(QPainter *painter, qint64 measure) const
{
    const qreal length = m_measureLength;
    const QRectF place(static_cast<qreal>(measure) * length, 0, length, Height);
    const QRect pixels =
        viewportTransform().mapRect(place).toRect().adjusted(NumberIndent, 0, 0, 0);
    if (pixels.width() <= 0)
        return;
    painter->save();
    painter->resetTransform();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QColor(128, 128, 128));
    painter->drawText(pixels, Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignVCenter,
                      QString::number(measure + 1));
    painter->restore();
}
