#pragma once

#include "Quillmoor/Instrument.h"
#include "model/Track.h"

#include <QByteArray>

#include <vector>

/// Notes in even steps, several parts at a time, for this program and for those that play MIDI.
struct Score {
    static constexpr int TicksPerSecond = 960; ///< at 120 beats a minute

    std::vector<std::vector<quint32>> parts; ///< the pitches of each; at most 15 for MIDI
    int step = 60;                           ///< MIDI ticks from note to note
    int length = 240;                        ///< of each note in MIDI ticks, a multiple of `step`
    std::vector<int> programs; ///< the MIDI instruments, in turn; at least one for MIDI
};

/// A part and what plays it.
struct PlayedPart {
    Track track;
    Instrument instrument;
};

Track trackOf(const Score &score, std::size_t part);
/// Each part on a channel of its own. The score strikes no sounding pitch again.
QByteArray midiFileOf(const Score &score);
/// The parts, played by the instruments in turn; none without instruments.
std::vector<PlayedPart> playedParts(const Score &score, const std::vector<Instrument> &instruments);
