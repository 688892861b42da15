#pragma once

#include "MIDI/MidiOptions.h"
#include "model/Track.h"

#include <QList>

class QDataStream;

/// Reads a Standard MIDI File of format 0 or 1 and makes tracks of it.
class MidiParser {
public:
    explicit MidiParser(const MidiOptions &options);

    /// Reads the whole file from the stream's position. Throws a QString for what is no MIDI file.
    QList<Track> parse(QDataStream &stream);

private:
    MidiOptions m_options;
};
