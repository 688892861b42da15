#pragma once

#include <QMetaType>
#include <QtGlobal>

/// One timed event of a track: a note, or a change of tempo, key, unit length or meter.
///
/// A small value record. Times and durations are ticks (see Ticks.h), pitches are MIDI note
/// numbers (60 is the ABC note "C"). Every accessor answers 0 for a kind that does not carry
/// the field; none fails.
class TrackEvent {
public:
    enum EventType : quint32 { None, Note, Tempo, Key, UnitLength, Meter };

    /// An event of type None with every field 0.
    TrackEvent() = default;

    static TrackEvent makeNote(quint32 pitch, quint64 time, quint64 duration);
    /// A tempo of `bpm` beats of `num`/`den` of a whole note per minute.
    static TrackEvent makeTempo(quint64 time, quint32 num, quint32 den, quint32 bpm);
    /// `key` is the row of the key table: 7 has no accidentals, 7 - n has n sharps, 7 + n has n
    /// flats. `mode` is 0 for major, 1 minor, 2 mixolydian, 3 dorian, 4 phrygian, 5 lydian,
    /// 6 locrian.
    static TrackEvent makeKey(quint64 time, quint32 key, quint32 mode);
    /// The ABC field "L:".
    static TrackEvent makeUnitLength(quint64 time, quint32 num, quint32 den);
    /// The ABC field "M:".
    static TrackEvent makeMeter(quint64 time, quint32 num, quint32 den);

    EventType type() const { return m_type; }
    bool isNote() const { return m_type == Note; }

    quint64 time() const { return m_time; }
    void setTime(quint64 time) { m_time = time; }

    quint32 note() const;
    quint64 duration() const;
    /// Both do nothing unless the event is a Note.
    void setDuration(quint64 duration);
    void addDuration(quint64 duration);

    /// The fraction of a Tempo, UnitLength or Meter event.
    quint32 num() const;
    quint32 den() const;
    quint32 bpm() const;
    quint64 ticksPerMinute() const;

    quint32 keyIndex() const;
    quint32 mode() const;

    bool operator==(const TrackEvent &other) const;
    bool operator!=(const TrackEvent &other) const { return !(*this == other); }

private:
    TrackEvent(EventType type, quint64 time, quint32 a, quint32 b, quint64 c = 0, quint64 d = 0);

    bool hasFraction() const;

    EventType m_type = None;
    quint64 m_time = 0;
    // Per type: pitch, numerator or key index; denominator or mode; duration or beats per
    // minute; ticks per minute.
    quint32 m_a = 0;
    quint32 m_b = 0;
    quint64 m_c = 0;
    quint64 m_d = 0;
};

Q_DECLARE_TYPEINFO(TrackEvent, Q_PRIMITIVE_TYPE);
Q_DECLARE_METATYPE(TrackEvent)
