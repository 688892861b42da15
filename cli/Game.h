#pragma once

#include "Quillmoor/QuillmoorInstrumentSet.h"
#include "cli/Arguments.h"

/// The game whose instruments a command uses.
namespace Game {

/// "--game" and "--mods", for the table of a command that has them.
QVector<Option> options();

/// The game directory: "--game", else the environment variable QUILLMOOR_GAME, else the place
/// where the game is usually installed. Throws "No Quillmoor installation was found at the
/// specified directory." for a directory that is none, and a hint when there is nothing to try.
/// Stored settings play no part.
QDir directory(const OptionValues &options);

/// The instruments found there, with those of mods after "--mods". Throws what the set throws.
QuillmoorInstrumentSet instruments(const OptionValues &options);

} // namespace Game
