#pragma once

#include "cli/Arguments.h"
#include "model/Track.h"

class Console;

/// The changes of whole tracks that options of a command ask for.
namespace TrackChanges {

/// "--transpose" and the others, for the table of a command that has them.
QVector<Option> options();

/// Whether there is any to apply.
bool areGiven(const OptionValues &options);

/// The track with the changes applied in the order given. After each the text is made and read
/// again, so that what follows from the text is as after an edit in the program. Throws what
/// Transforms::reread() throws.
Track applied(const Track &track, const OptionValues &options);

/// Says on standard error which of the keys are not for the game.
void noteUnsupportedKeys(const OptionValues &options, Console &console);

} // namespace TrackChanges
