#include "model/TrackEvent.h"

#include "model/Ticks.h"

TrackEvent::TrackEvent(EventType type, quint64 time, quint32 a, quint32 b, quint64 c, quint64 d)
    : m_type(type)
    , m_time(time)
    , m_a(a)
    , m_b(b)
    , m_c(c)
    , m_d(d)
{
}

TrackEvent TrackEvent::makeNote(quint32 pitch, quint64 time, quint64 duration)
{
    return {Note, time, pitch, 0, duration};
}

TrackEvent TrackEvent::makeTempo(quint64 time, quint32 num, quint32 den, quint32 bpm)
{
    return {Tempo, time, num, den, bpm, Ticks::perMinute(num, den, bpm)};
}

TrackEvent TrackEvent::makeKey(quint64 time, quint32 key, quint32 mode)
{
    return {Key, time, key, mode};
}

TrackEvent TrackEvent::makeUnitLength(quint64 time, quint32 num, quint32 den)
{
    return {UnitLength, time, num, den};
}

TrackEvent TrackEvent::makeMeter(quint64 time, quint32 num, quint32 den)
{
    return {Meter, time, num, den};
}

quint32 TrackEvent::note() const
{
    return isNote() ? m_a : 0;
}

quint64 TrackEvent::duration() const
{
    return isNote() ? m_c : 0;
}

void TrackEvent::setDuration(quint64 duration)
{
    if (isNote())
        m_c = duration;
}

void TrackEvent::addDuration(quint64 duration)
{
    if (isNote())
        m_c += duration;
}

bool TrackEvent::hasFraction() const
{
    return m_type == Tempo || m_type == UnitLength || m_type == Meter;
}

quint32 TrackEvent::num() const
{
    return hasFraction() ? m_a : 0;
}

quint32 TrackEvent::den() const
{
    return hasFraction() ? m_b : 0;
}

quint32 TrackEvent::bpm() const
{
    return m_type == Tempo ? static_cast<quint32>(m_c) : 0;
}

quint64 TrackEvent::ticksPerMinute() const
{
    return m_type == Tempo ? m_d : 0;
}

quint32 TrackEvent::keyIndex() const
{
    return m_type == Key ? m_a : 0;
}

quint32 TrackEvent::mode() const
{
    return m_type == Key ? m_b : 0;
}

bool TrackEvent::operator==(const TrackEvent &other) const
{
    return m_type == other.m_type && m_time == other.m_time && m_a == other.m_a && m_b == other.m_b
        && m_c == other.m_c && m_d == other.m_d;
}
