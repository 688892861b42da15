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

quint64 sumOf(quint64 time, quint64 duration)
{
    return time + std::min(duration, LastTime - time);
}

/// Just less than half a step goes up to the next point: half-way is rounded down.
quint64 nearestPoint(quint64 time, quint32 step)
{
    const quint64 past = sumOf(time, (step - 1) / 2);
    return past - remainder(past, step);
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
        const quint64 end = snapTime(sumOf(event.time(), event.duration()), steps);
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
        const quint64 point = nearestPoint(time, step);
        const quint64 distance = point > time ? point - time : time - point;
        if (distance < best) {
            best = distance;
            result = point;
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
