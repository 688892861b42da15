#pragma once

#include "MIDI/MidiBudget.h"
#include "MIDI/MidiClock.h"
#include "MIDI/MidiConductor.h"
#include "model/Track.h"

#include <vector>

/// One of the 16 channels of a MIDI file: what sounds on it, how it is set, and the track that its
/// notes go to. All values come as they stand in the file, times in the file's own units.
class MidiChannel {
public:
    MidiChannel(const MidiClock &clock, MidiBudget &budget, const MidiConductor &conductor);

    /// Begins a fresh track, with program 0 and no bend. What sounds goes on sounding, and the
    /// bend range stays.
    void startTrack();

    /// A note that sounds already starts anew, and the one before is lost.
    void startNote(quint32 key, quint64 tick);
    /// Makes a note of what has sounded, unless it lies outside of the 88 piano keys. Ignored when
    /// nothing does.
    void endNote(quint32 key, quint64 tick);
    /// When the bend moves by whole semitones, cuts what sounds and strikes it again in the new
    /// pitch. 8192 is no bend.
    void bend(quint32 value, quint64 tick);
    /// Ends everything that sounds, whatever its pitch (of which the lowest 8 bits are taken), and
    /// answers how many notes that made.
    int endAll(quint64 tick);

    /// The bend range is set by controllers 101 and 100 (both 0) and 6; others are ignored.
    void control(quint32 controller, quint32 value);

    quint32 program() const { return m_program; }
    void setProgram(quint32 program) { m_program = program; }

    /// Adds a title to the track, with spaces in place of control characters.
    void addTitle(const QString &title);

    bool hasNotes() const { return m_track.noteCount() > 0; }
    /// Hands out the track, with all that the conductor has said up to now, unsorted. Only
    /// startTrack() may follow.
    Track takeTrack();

private:
    struct Sounding {
        quint32 pitch; // may leave 0..255 by bends, and wrap
        quint64 start;
    };
    using SoundingNotes = std::vector<Sounding>;

    quint32 bentPitch(quint32 key) const;
    SoundingNotes::iterator place(quint32 pitch);
    void moveSounding(quint32 semitones, quint64 tick);
    void addNote(quint32 pitch, quint64 start, quint64 end);
    void addConductor();

    const MidiClock &m_clock;
    MidiBudget &m_budget;
    const MidiConductor &m_conductor;

    Track m_track;
    int m_conducted = 0;      // events of the conductor that the track has
    SoundingNotes m_sounding; // ascending by pitch, each once
    quint32 m_program = 0;
    int m_bendOffset = 0; // semitones
    quint32 m_bendRange = 2;
    quint32 m_parameter = 0x7F7F; // registered parameter number: none
};
