#pragma once

#include "ABC/AccidentalMemory.h"
#include "ABC/LengthText.h"
#include "model/Track.h"

#include <QString>

#include <array>
#include <string>

/// Writes a track as ABC text that the parser reads back into the same events.
///
/// One voice without bar lines: the header, then notes, chords and rests, with changes of tempo,
/// key, unit length and meter on lines of their own. A note that the next event overlaps is
/// written as a chord with a rest in it, since a chord lasts as long as its shortest member.
///
/// Left out are notes outside the range of the instruments (their time is kept) and header
/// fields that are no single letter. Control characters in header values become spaces. A note
/// whose length takes more characters than the parser reads in one token gets the nearest
/// shorter length that does not; a rest is then written as several.
class ABCGenerator {
public:
    /// Adds the header fields "X", "L" and "K" to `track` where it has none. The track's events
    /// must be sorted.
    QString generate(Track &track);

    /// The row of the key table that the track's "K" header names, as this class reads it; 7,
    /// with a warning in the message log, when it names none.
    uint parseKey(const Track &track) const;

private:
    struct CachedLength {
        quint64 ticks = 0;
        quint32 unit = 0; // 0 for an entry not in use
        LengthText length;
    };
    struct RestPiece {
        char letter;
        LengthText length;
    };

    void writeHeader(const Track &track);
    void writeHeaderField(const QString &key, const QString &value);
    void writeHeaderFields(const Track &track, const QString &key);

    void writeBody(const QVector<TrackEvent> &events);
    void writeControl(const TrackEvent &event);
    void writeTempo(const TrackEvent &event);
    void writeKey(const TrackEvent &event);
    void writeFraction(const char *field, const TrackEvent &event);
    void breakLine();
    void endLine();

    void writeRestUntil(quint64 time);
    void writeRest(quint64 ticks);
    RestPiece restPiece(quint64 ticks) const;

    int writeGroup(const QVector<TrackEvent> &events, int first);
    void writeNotes(const QVector<TrackEvent> &events, int first, int end, quint64 gap);
    /// Appends the note to m_group and answers the ticks that it will last.
    quint64 addToGroup(const TrackEvent &note);
    void addPitch(quint32 pitch);
    const LengthText &noteLength(quint64 ticks, int maxChars);

    quint32 m_keyIndex = 0;
    quint32 m_unitLength = 0; // ticks
    AccidentalMemory m_accidentals;
    quint64 m_time = 0; // written so far
    quint64 m_lineStart = 0;

    QString m_header;
    std::string m_body;
    std::string m_group; // the notes of one group, reused
    std::array<CachedLength, 64> m_lengths;
};
