#include "ui/tracks/StripScale.h"

#include "model/TrackEvent.h"

namespace {

constexpr double PitchesHigh = 87.0;
constexpr double TopPitch = 108.0;
constexpr double NoteHeight = 2.0;
constexpr double LeastNoteWidth = 2.0;

} // namespace

StripScale::StripScale(const QSize &size, quint64 maxLength)
    : m_size(size)
    , m_maxLength(maxLength)
{
}

double StripScale::pixelsPerTick() const
{
    return m_maxLength == 0 ? 0.0 : width() / static_cast<double>(m_maxLength);
}

double StripScale::x(quint64 ticks) const
{
    return static_cast<double>(ticks) * pixelsPerTick();
}

double StripScale::y(quint32 pitch) const
{
    return (TopPitch - pitch) * (height() / PitchesHigh);
}

QRectF StripScale::note(const TrackEvent &note) const
{
    const double left = x(note.time());
    const double room = qMax(0.0, width() - left) + LeastNoteWidth;
    const double length = qMax(LeastNoteWidth, x(note.duration()));
    return {left, y(note.note()) + 1.0, qMin(length, room), NoteHeight};
}

int StripScale::column(quint64 ticks) const
{
    if (m_maxLength == 0)
        return 0;
    if (ticks > m_maxLength)
        return width();
    return static_cast<int>(static_cast<double>(ticks) / static_cast<double>(m_maxLength)
                            * width());
}

quint64 StripScale::ticksAt(double x) const
{
    if (width() <= 0 || x <= 0)
        return 0;
    // What rounds to 2^64 does not fit into the type.
    const double ticks = x / width() * static_cast<double>(m_maxLength);
    return ticks < static_cast<double>(m_maxLength) ? static_cast<quint64>(ticks) : m_maxLength;
}
