#pragma once

#include "model/Track.h"

#include <QString>

/// Changes of a whole track. Each answers a changed copy without stored text, so that its text is
/// made anew when it is next asked for; only reread() stores the text that it has made.
namespace Transforms {

/// All notes moved by `semitones`; those that leave the 88 piano keys are dropped. The copy has
/// the header fields and events of the track but the tempo, measure and file name of a fresh one,
/// which follow from the fields when the text is read again.
Track transposeTrack(const Track &track, int semitones);

/// The note length that the text counts in (ABC "L:"), such as "1/64".
Track withUnitLength(const Track &track, const QString &unitLength);

/// The key that the text is written in (ABC "K:"), such as "Ebm". The notes of the copy keep
/// their pitch; their text does too when it is read again, but in mixolydian keys and in major
/// ones that are spelled out ("Cmaj"), which the generator writes as minor ones
/// (FieldValues::keyForGenerator()).
Track withKey(const Track &track, const QString &key);

/// Notes from 9 to 96 (up) or from 33 to 120 (down) moved by an octave, the others left as they
/// are. The copy keeps tempo and header fields; measure and file name are a fresh track's.
Track octaveUp(const Track &track);
Track octaveDown(const Track &track);

/// The track as it is when its text is made and read again: what an edit of a whole track ends
/// with, so that tempo, measure and length follow from its fields. Keeps the file name. Throws
/// what ABCParser::parse() throws.
Track reread(const Track &track);

} // namespace Transforms
