#include "MIDI/Realignment.h"

#include <algorithm>
#include <limits>

namespace {

constexpr quint64 LastTime = std::numeric_limits<quint64>::max();

/// The processor divides 32 bits faster than 64, and few times need more.
quint64 remainder(quint64 time, quint32 step)
{
    if (time <= std::numeric_limits<quint32>::max())
        return static_cast<quint32>(time) % step;
    return time % step;
}

quint64 endOf(const TrackEvent &note)
{
    return note.time() + std::min(note.duration(), LastTime - note.time());
}

/// Never empty, and none of them 0.
QVector<quint32> stepsOf(const QVector<int> &divisions)
{
    QVector<quint32> steps;
    for (const int division : divisions) {
        if (division > 0 && static_cast<quint32>(division) <= Ticks::PerWholeNote)
            steps << Ticks::PerWholeNote / static_cast<quint32>(division);
    }
    if (steps.isEmpty())
        steps << Ticks::PerWholeNote;
    return steps;
}

void realign(TrackEvent &event, const QVector<quint32> &steps, quint32 finestStep)
{
    const quint64 start = snapTime(event.time(), steps);
    if (event.isNote()) {
        const quint64 end = snapTime(endOf(event), steps);
        event.setDuration(end > start ? end - start : finestStep);
    }
    event.setTime(start);
}

} // namespace

quint64 snapTime(quint64 time, const QVector<quint32> &steps)
{
    quint64 result = time;
    quint64 best = LastTime;
    for (const quint32 step : steps) {
        if (step == 0)
            continue;
        const quint64 below = remainder(time, step);
        const quint64 above = step - below;
        const bool goesDown = below <= above || above > LastTime - time;
        const quint64 distance = goesDown ? below : above;
        if (distance < best) {
            best = distance;
            result = goesDown ? time - below : time + above;
        }
    }
    return result;
}

Track realignTrack(const Track &track, const QVector<int> &divisions)
{
    const QVector<quint32> steps = stepsOf(divisions);
    const quint32 finestStep = *std::min_element(steps.begin(), steps.end());
    Track copy = track;
    copy.setAbc(QString());
    for (int i = 0; i < copy.eventCount(); ++i)
        realign(copy.event(i), steps, finestStep);
    if (copy.eventCount() > 0)
        copy.sortEvents();
    return copy;
}

Track quickRealignTrack(const Track &track)
{
    return realignTrack(track, {128, 96, 80, 112, 72});
}
