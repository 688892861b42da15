#pragma once

#include "MIDI/MidiBudget.h"
#include "MIDI/MidiClock.h"
#include "model/Track.h"

#include <QMap>
#include <QVector>

#include <optional>

/// What a MIDI file says to all channels: tempo, meter and key.
///
/// What stands at tick 0 becomes header fields, of which the last one holds; the rest are events.
/// They are kept once, and each track takes copies (addTo()), so that channels without notes cost
/// nothing.
class MidiConductor {
public:
    /// Where tempos go: with meters and keys, or into a map of their own that outlives the chunk.
    enum class Tempos { WithTheRest, ToMap };

    MidiConductor(const MidiClock &clock, MidiBudget &budget, Tempos tempos);

    // Times are the file's own units.

    /// A quarter note of `microseconds`; ignored if that is 0.
    void setTempo(quint64 tick, quint32 microseconds);
    /// The denominator is 2 to the `exponent`. Ignored when the numerator is 0 or the exponent
    /// above 16, with which a measure would have no tick.
    void setMeter(quint64 tick, quint32 numerator, quint32 exponent);
    /// Ignored unless -7 (flats) <= `sharps` <= 7 and `mode` is 0 (major) or 1 (minor).
    void setKey(quint64 tick, int sharps, quint32 mode);

    int eventCount() const { return m_events.size(); }
    /// Copies the events from `first` on to the track.
    void addTo(Track &track, int first) const;
    /// Sets what holds from tick 0 on.
    void startTrack(Track &track) const;

    /// Adds the tempos of the map: that at tick 0 as the track's own, the others as events.
    void addTempoMap(Track &track) const;

    /// Forgets all but the tempo map.
    void startChunk();

private:
    void add(const TrackEvent &event);
    static void setTempo(Track &track, const TrackEvent &tempo);

    const MidiClock &m_clock;
    MidiBudget &m_budget;
    const Tempos m_tempos;

    QVector<TrackEvent> m_events;
    std::optional<TrackEvent> m_firstTempo;
    std::optional<TrackEvent> m_firstMeter;
    std::optional<TrackEvent> m_firstKey;
    QMap<quint64, TrackEvent> m_tempoMap; // by the file's units
};
