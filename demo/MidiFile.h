#pragma once

#include "model/Track.h"

#include <QByteArray>

#include <vector>

namespace Demo {

/// One part of a MIDI file.
struct MidiPart {
    Track track;
    QString name;
    int program; ///< General MIDI, from 0
    bool isDrums;
};

/// The parts as a Standard MIDI File of format 1: a track with tempo and meter, then one for
/// each part, on a channel of its own (drums on channel 10). At most 15 pitched parts.
QByteArray midiFile(const std::vector<MidiPart> &parts);

} // namespace Demo
