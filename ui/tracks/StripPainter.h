#pragma once

#include "ui/tracks/StripScale.h"

#include <QRect>

class NoteBlocks;
class QColor;
class QPainter;
class Track;

/// Draws what of a strip meets one rectangle of it. Notes and lines are drawn whole, also beyond
/// the rectangle: without a clip its pixels become exactly those of a drawing of the whole strip.
class StripPainter {
public:
    StripPainter(QPainter &painter, const QRect &part, const StripScale &scale);

    void drawGround();
    /// A line at every multiple of `measureLength` ticks, and only the first one if that is 0.
    void drawMeasureLines(quint32 measureLength);
    /// A line at every C.
    void drawOctaveLines();
    void drawNotes(const Track &track, const NoteBlocks &blocks, const QColor &color);

private:
    void drawMeasureLinesFrom(quint64 number, quint32 measureLength);
    quint64 lastLine(quint32 measureLength) const;
    quint64 lineAtOrBehind(double x, quint32 measureLength) const;
    double nextHalfPixel(double x) const;

    QPainter &m_painter;
    QRect m_part;
    StripScale m_scale;
};
