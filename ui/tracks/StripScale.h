#pragma once

#include <QRectF>
#include <QSize>

class TrackEvent;

/// Where times and pitches lie on a strip of `size` pixels whose width stands for `maxLength`
/// ticks. Finite for every time and duration; without a length or a width all times lie at 0.
class StripScale {
public:
    StripScale(const QSize &size, quint64 maxLength);

    int width() const { return m_size.width(); }
    int height() const { return m_size.height(); }
    quint64 maxLength() const { return m_maxLength; }
    double pixelsPerTick() const;

    double x(quint64 ticks) const;
    /// The top of the octave line or the row of a pitch; high pitches are above.
    double y(quint32 pitch) const;
    /// At least two pixels wide, and cut a little to the right of the strip.
    QRectF note(const TrackEvent &note) const;

    /// The column of the play position, which is `width()` for a time behind the end.
    int column(quint64 ticks) const;
    /// The time at a place of the strip, at most `maxLength()`.
    quint64 ticksAt(double x) const;

private:
    QSize m_size;
    quint64 m_maxLength;
};
