#include "ui/tracks/StripPainter.h"

#include "model/Track.h"
#include "ui/tracks/NoteBlocks.h"

#include <QPainter>

#include <cmath>

namespace {

constexpr quint32 OctavePitches[] = {24, 36, 48, 60, 72, 84, 96, 108};

/// How far a drawn line or an edge may be from where it was meant to be, in pixels, and more.
constexpr double Margin = 2.0;

} // namespace

StripPainter::StripPainter(QPainter &painter, const QRect &part, const StripScale &scale)
    : m_painter(painter)
    , m_part(part)
    , m_scale(scale)
{
}

void StripPainter::drawGround()
{
    m_painter.setRenderHint(QPainter::Antialiasing, false);
    m_painter.fillRect(m_part, Qt::black);
}

void StripPainter::drawMeasureLines(quint32 measureLength)
{
    m_painter.setPen(QColor(32, 32, 32));
    drawMeasureLinesFrom(lineAtOrBehind(m_part.left() - Margin, measureLength), measureLength);
}

/// Lines that are closer together than pixels look like one: most of those are passed over.
void StripPainter::drawMeasureLinesFrom(quint64 number, quint32 measureLength)
{
    const double end = qMin(m_part.right() + Margin, m_scale.width() - 1.0);
    const quint64 last = lastLine(measureLength);
    for (;;) {
        const double x = m_scale.x(number * measureLength);
        if (x > end)
            return;
        m_painter.drawLine(QLineF(x, -Margin, x, m_scale.height() + Margin));
        if (number == last)
            return;
        number = qMax(number + 1, lineAtOrBehind(nextHalfPixel(x), measureLength));
    }
}

/// The number of the last line, the first one having the number 0.
quint64 StripPainter::lastLine(quint32 measureLength) const
{
    return measureLength == 0 ? 0 : m_scale.maxLength() / measureLength;
}

quint64 StripPainter::lineAtOrBehind(double x, quint32 measureLength) const
{
    const quint64 last = lastLine(measureLength);
    if (x <= 0 || last == 0)
        return 0;
    const double number = std::ceil(x / (measureLength * m_scale.pixelsPerTick()));
    return number < static_cast<double>(last) ? static_cast<quint64>(number) : last;
}

/// Of the screen: half of them, since a line two of them wide may begin in the middle of one.
double StripPainter::nextHalfPixel(double x) const
{
    const double halves = 2 * m_painter.device()->devicePixelRatioF();
    return (std::floor(x * halves) + 1) / halves;
}

void StripPainter::drawOctaveLines()
{
    m_painter.setPen(QColor(48, 48, 48));
    for (const quint32 pitch : OctavePitches) {
        const double y = m_scale.y(pitch);
        if (y <= m_scale.height() - 1)
            m_painter.drawLine(QLineF(-Margin, y, m_scale.width() + Margin, y));
    }
}

void StripPainter::drawNotes(const Track &track, const NoteBlocks &blocks, const QColor &color)
{
    if (m_scale.pixelsPerTick() <= 0)
        return;
    m_painter.setRenderHint(QPainter::Antialiasing);
    const QRectF part(m_part);
    const double from = (part.left() - Margin) / m_scale.pixelsPerTick();
    const double to = (part.right() + Margin) / m_scale.pixelsPerTick();
    blocks.visit(track.events(), from, to, [&](const TrackEvent &event) {
        const QRectF note = m_scale.note(event);
        if (note.intersects(part))
            m_painter.fillRect(note, color);
    });
}
