#pragma once

#include "ABC/ABCTokenizer.h"
#include "ABC/AccidentalMemory.h"
#include "ABC/PendingTies.h"
#include "model/Track.h"

#include <QString>

#include <optional>

/// Reads the ABC text of one tune into a Track.
///
/// It reads what the game's instruments can play: one voice of notes, rests, chords, ties,
/// tuplets and bar lines, with changes of key, meter, unit length and tempo. Everything else is
/// skipped. Any text ends in a track or in a message, in time proportional to its length.
///
/// Absurd values are made harmless: a length with a denominator of 0 lasts 0 ticks, a number
/// that does not fit in 32 bits is 0, a tuplet of 0 covers no note, a tuplet without a usual
/// ratio (of 1, or above 9) leaves its notes as they are. Times that grow past 64 bits wrap.
class ABCParser {
public:
    /// The most events of a tune: far beyond any music, and twice as many as a MIDI file may bring,
    /// so that what was made of one can be read again. To read that many takes 300 MB.
    static constexpr int LargestCount = 4000000;
    /// A header field, which takes more memory than an event, counts for more.
    static constexpr int EventsPerHeader = 4;

    /// Throws a QString that says where the text cannot be understood: "Unexpected token found
    /// in ABC header: line %1, column %2.", "Unknown token found in ABC body at line %1, column
    /// %2." or "Unexpected token found in chord at line %1, column %2."; and "The ABC tune has too
    /// many events." beyond LargestCount. Smaller problems are warnings in the message log.
    Track parse(const QString &text);

private:
    void readHeader();
    void readHeaderField(QString &lastField);
    void readHeaderComment();
    [[noreturn]] void fail(const QString &message) const;
    void checkCount() const;

    void startFromHeader();
    void startMeter();
    quint64 initialTempo() const;

    void readBody();
    void readToken();
    bool isInGraceNotes();
    void readSingleNote();
    void readRest();
    void readChord();
    void readBar();
    void readTuplet();
    void readField();
    void readMeter(const QString &value);
    void readUnitLength(const QString &value);
    void advance(quint64 ticks);

    quint32 parseKey() const;
    TrackEvent parseKey(const QString &value) const;
    TrackEvent parseTempo(const QString &value) const;
    quint64 parseChord();
    quint64 endChord(int firstEvent, std::optional<quint64> shortest);

    /// The duration of the current note; the note itself goes to the track or waits for its tie.
    enum class Place { Alone, InChord };
    quint64 readNote(Place place);
    void addNote(const TrackEvent &note, Place place);
    qint64 pitchOfNote();
    quint64 noteDuration() const;
    quint64 restDuration() const;

    Track m_track;
    std::optional<ABCTokenizer> m_tokens;

    quint32 m_unitLength = 0; // ticks
    quint64 m_meterStart = 0;
    quint64 m_barLength = 0; // ticks; 0 without a meter
    quint32 m_barCount = 0;  // bar lines since m_meterStart
    quint64 m_time = 0;
    quint32 m_keyIndex = 0;
    PendingTies m_ties;
    AccidentalMemory m_barAccidentals;
    bool m_isCompoundMeter = false;
    quint32 m_tupletRemaining = 0;
    quint32 m_tupletQ = 1;
    quint32 m_tupletP = 1;
    qint32 m_transpose = 0;
    int m_graceLine = -1; // of the grace notes being skipped, -1 outside of any
};
