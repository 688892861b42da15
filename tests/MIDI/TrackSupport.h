#pragma once

#include "model/Track.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <random>

inline QString operator""_s(const char *text, size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

/// Tracks in short.
namespace TrackSupport {

/// The events as they stand, unsorted.
inline Track trackOf(const QVector<TrackEvent> &events)
{
    Track track;
    for (const TrackEvent &event : events)
        track.addEvent(event);
    return track;
}

inline Track sortedTrackOf(const QVector<TrackEvent> &events)
{
    Track track = trackOf(events);
    track.sortEvents();
    return track;
}

/// "60@0+30240 62@30240+30240": pitch, start and duration.
inline QString notes(const Track &track)
{
    QStringList texts;
    for (const TrackEvent &event : track.events()) {
        if (event.isNote())
            texts << QStringLiteral("%1@%2+%3")
                         .arg(event.note())
                         .arg(event.time())
                         .arg(event.duration());
    }
    return texts.join(QLatin1Char(' '));
}

/// The same numbers on every system.
class Random {
public:
    explicit Random(quint32 seed)
        : m_engine(seed)
    {
    }
    /// 0..bound - 1.
    quint32 below(quint32 bound) { return static_cast<quint32>(m_engine()) % bound; }
    /// Of 64 bits.
    quint64 any()
    {
        return quint64{below(0x10000)} << 48U | quint64{m_engine()} << 16U | below(0x10000);
    }

private:
    std::mt19937 m_engine;
};

} // namespace TrackSupport
