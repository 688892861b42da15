#pragma once

#include <QColor>
#include <QRectF>
#include <QtGlobal>

class QPainter;

/// The background of the piano roll: rows of semitones and columns of beats. Scene coordinates are
/// ticks and pitches; the painter maps them to pixels. Work is bounded by what a screen can show,
/// whatever the rectangle and the lengths are.
namespace PianoRollGrid {

constexpr int LowestRow = 20;
constexpr int RowCount = 89;

/// The beats of all measures; nothing is drawn when one of the numbers is 0.
struct Beats {
    quint32 ticksPerBeat;
    quint32 beatsPerMeasure;
};

/// Indices of lines at equal distances.
struct Lines {
    qint64 first;
    qint64 end; ///< the one after the last
};

/// The lines at multiples of `distance` that can be seen in `rect`, from the one at or before its
/// left edge. None when they would be closer than a pixel and only hide everything, or when
/// `distance` is 0.
Lines visibleLines(const QPainter &painter, const QRectF &rect, qreal distance);

/// As much of `rect` as a screen that begins at its corner can show.
QRectF visiblePart(const QPainter &painter, const QRectF &rect);

void drawRows(QPainter *painter, const QRectF &rect);
void drawBeats(QPainter *painter, const QRectF &rect, const Beats &beats);

/// Shades the column if it is one of every second, which is a measure's.
void shade(QPainter *painter, const QRectF &rect, qint64 index, qreal width);
/// From top to bottom of `rect`, one pixel wide.
void drawLine(QPainter *painter, const QRectF &rect, qreal x, const QColor &color);

/// The colour of the lines between measures and between octaves.
QColor strongLine();

} // namespace PianoRollGrid
