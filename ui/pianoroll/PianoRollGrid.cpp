#include "ui/pianoroll/PianoRollGrid.h"

#include "ui/pianoroll/PianoKeys.h"

#include <QColor>
#include <QLineF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr qreal WidestScreen = 65536;
/// Rows and lines beyond are never reached by scrolling, but fit into the whole numbers.
constexpr qreal LastRow = 1e9;
constexpr qreal LastLine = 9e18;

QColor rowColor(int row)
{
    return PianoKeys::isBlack(row) ? QColor(56, 56, 56) : QColor(64, 64, 64);
}

QColor weakLine()
{
    return {48, 48, 48};
}

int wholeRow(qreal y)
{
    return static_cast<int>(std::clamp(y, -LastRow, LastRow));
}

qint64 wholeNumber(qreal index)
{
    return static_cast<qint64>(std::clamp(index, -LastLine, LastLine));
}

qreal visibleLength(qreal length, qreal pixelsPerUnit)
{
    return std::min(length, WidestScreen / std::abs(pixelsPerUnit));
}

void drawRow(QPainter *painter, const QRectF &rect, int row)
{
    painter->fillRect(QRectF(rect.x(), row, rect.width(), 1.0), rowColor(row));
    const bool isOctave = PianoKeys::pitchClass(row) == 0;
    painter->setPen(QPen(isOctave ? PianoRollGrid::strongLine() : weakLine(), 0)); // cosmetic
    painter->drawLine(QLineF(rect.left(), row, rect.right(), row));
}

void shadeMeasures(QPainter *painter, const QRectF &rect, qreal measure)
{
    const auto lines = PianoRollGrid::visibleLines(*painter, rect, measure);
    for (qint64 index = lines.first; index <= lines.end; ++index)
        PianoRollGrid::shade(painter, rect, index, measure);
}

void drawMeasureLines(QPainter *painter, const QRectF &rect, qreal measure)
{
    const auto lines = PianoRollGrid::visibleLines(*painter, rect, measure);
    for (qint64 index = lines.first; index <= lines.end; ++index)
        PianoRollGrid::drawLine(painter, rect, static_cast<qreal>(index) * measure,
                                PianoRollGrid::strongLine());
}

void drawWeakBeats(QPainter *painter, const QRectF &rect, const PianoRollGrid::Beats &beats)
{
    const qreal beat = beats.ticksPerBeat;
    const auto lines = PianoRollGrid::visibleLines(*painter, rect, beat);
    for (qint64 index = lines.first; index <= lines.end; ++index)
        if (index % beats.beatsPerMeasure != 0)
            PianoRollGrid::drawLine(painter, rect, static_cast<qreal>(index) * beat, weakLine());
}

} // namespace

namespace PianoRollGrid {

QColor strongLine()
{
    return {32, 32, 32};
}

QRectF visiblePart(const QPainter &painter, const QRectF &rect)
{
    const QTransform &transform = painter.worldTransform();
    return {rect.x(), rect.y(), visibleLength(rect.width(), transform.m11()),
            visibleLength(rect.height(), transform.m22())};
}

Lines visibleLines(const QPainter &painter, const QRectF &rect, qreal distance)
{
    if (distance * painter.worldTransform().m11() < 1)
        return {0, -1};
    return {wholeNumber(std::floor(rect.left() / distance)),
            wholeNumber(std::ceil(rect.right() / distance))};
}

void drawRows(QPainter *painter, const QRectF &rect)
{
    const QRectF part = visiblePart(*painter, rect);
    const int end = wholeRow(std::ceil(part.bottom())) + 1;
    for (int row = wholeRow(std::floor(part.top())); row < end; ++row)
        drawRow(painter, part, row);
}

void drawBeats(QPainter *painter, const QRectF &rect, const Beats &beats)
{
    if (beats.beatsPerMeasure == 0)
        return;
    const qreal measure = static_cast<qreal>(beats.ticksPerBeat) * beats.beatsPerMeasure;
    const QRectF part = visiblePart(*painter, rect);
    shadeMeasures(painter, part, measure);
    drawMeasureLines(painter, part, measure);
    drawWeakBeats(painter, part, beats);
}

void shade(QPainter *painter, const QRectF &rect, qint64 index, qreal width)
{
    const QRectF column(static_cast<qreal>(index) * width, rect.y(), width, rect.height());
    if (index % 2 != 0)
        painter->fillRect(column & rect, QColor(255, 255, 255, 8));
}

void drawLine(QPainter *painter, const QRectF &rect, qreal x, const QColor &color)
{
    painter->setPen(QPen(color, 0)); // cosmetic
    painter->drawLine(QLineF(x, rect.top(), x, rect.bottom()));
}

} // namespace PianoRollGrid
