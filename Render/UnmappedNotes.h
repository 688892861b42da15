#pragma once

#include "Quillmoor/Instrument.h"
#include "model/Track.h"

#include <QString>
#include <QVector>

/// The notes of a track that an instrument cannot play.
namespace UnmappedNotes {

struct Note {
    int eventIndex = 0; ///< in the track's events
    quint32 pitch = 0;
    quint64 time = 0; ///< ticks
    quint64 bar = 1;  ///< the measure it starts in, counted from 1

    bool operator==(const Note &other) const;
};

/// In the order of the track's events. Bars are counted by the track's measure length up to the
/// first Meter event, each of which starts a bar of its own and the count by its length. A stretch
/// without a measure (length 0, "M:none") is one bar.
QVector<Note> findUnmapped(const Track &track, const Instrument &instrument);

/// The track without those notes. Its stored ABC text is dropped if any was left out, as it no
/// longer fits.
Track withoutUnmapped(const Track &track, const Instrument &instrument);

/// "C4" for the middle C (pitch 60), "C#4" above it; octaves begin at C. The bare number for
/// pitches above 127.
QString pitchName(quint32 pitch);

/// The note as ABC spells it without a key: "C" for pitch 60, "^c" for 73, "B," for 59. The bare
/// number for pitches above 127.
QString abcName(quint32 pitch);

} // namespace UnmappedNotes
