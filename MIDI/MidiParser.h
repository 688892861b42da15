#pragma once

#include "MIDI/MidiOptions.h"
#include "model/Track.h"

#include <QList>

class QDataStream;

/// Reads a Standard MIDI File of format 0 or 1 and makes tracks of it.
///
/// A file that is cut short is read as if zeros followed, and chunks beyond the number that the
/// header gives are left alone. What makes no sense is ignored: a tempo of 0, a channel prefix
/// above 15, a meter with numerator 0 or a denominator above 65536, a key of more than seven
/// sharps or flats. A program above 127 is taken modulo 128. A note that ends before it starts,
/// which only one that goes on from chunk to chunk can do, has no length. Times end at
/// MidiClock::LatestTime.
class MidiParser {
public:
    explicit MidiParser(const MidiOptions &options);

    /// Reads all that the stream's device has from where it stands, and answers the tracks, each
    /// of which has notes.
    ///
    /// Throws a QString:
    /// - "Invalid MIDI file." for no MIDI file, one with fewer track chunks than the header gives,
    ///   or a division of 0,
    /// - "Unsupported MIDI type %1." for a format above 1,
    /// - "SMTPE time divisions are currently unsupported",
    /// - "Unknown MIDI system event 0x%1." for the status bytes F1 to FE,
    /// - "Unknown MIDI channel event 0x%1." for data before the first status byte of a chunk,
    /// - "The file is too large." beyond 256 MiB,
    /// - "The MIDI file has too many events." for what is beyond MidiBudget,
    /// - "Could not open file." when the device cannot be read.
    QList<Track> parse(QDataStream &stream);

private:
    MidiOptions m_options;
};
