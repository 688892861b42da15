#pragma once

#include <QtGlobal>

/// Converts the time unit of a MIDI file to ours.
class MidiClock {
public:
    /// The last point of time there is. A later one, which no music reaches (it is thousands of
    /// years away), counts as this one: so that it can be written as text with few rests, and
    /// that a time and a duration can be added in 64 bits.
    static constexpr quint64 LatestTime = quint64{1} << 53U;

    /// `division` is the file's units to a quarter note, not 0.
    explicit MidiClock(quint32 division);

    /// The ticks of `midiTicks` units, rounded to the nearest, half-way up.
    quint64 ticks(quint64 midiTicks) const;

    /// The same of the stretch from `start` to `end`; 0 where the end comes first, as for a note
    /// that began in one chunk and ends in another.
    quint64 ticksBetween(quint64 start, quint64 end) const
    {
        return end > start ? ticks(end - start) : 0;
    }

private:
    double m_scale;
};
