#pragma once

#include "MIDI/MidiOptions.h"
#include "model/Track.h"

#include <QList>
#include <QString>

class QFile;

/// The tracks of a MIDI file, those without notes left out.
///
/// Throws a QString: "Could not open file." when `path` cannot be read or is a directory, "The
/// file is too large." beyond 256 MiB, or what MidiParser::parse() throws.
QList<Track> loadMidiFile(const QString &path, const MidiOptions &options);

/// The same from an open file, such as standard input, which may be a pipe.
QList<Track> readMidi(QFile &file, const MidiOptions &options);

/// Whether the file is taken for a MIDI file: by its name (".mid", ".midi" or ".kar" in any
/// case), else by its first bytes ("MThd").
bool isMidiFile(const QString &path);
