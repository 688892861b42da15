#pragma once

#include <QString>

/// Writes the demo game: a game directory whose instruments, samples and icons are all made
/// here, for those who do not have the game at hand.
///
/// Creates `dir` where needed, with assets/packed.pak, win32/quillmoor.exe (a text) and two mods
/// in mods/. The same program writes the same bytes each time. It may be run again over its own
/// work; a file that is not from it stays untouched. Throws a QString, before anything is
/// written, if such a file stands in the way, or when a file cannot be written. Each file
/// appears whole or not at all.
void writeDemoGame(const QString &dir);

/// Writes the demo songs: a folder for each, with its parts as ABC files in playing order, and
/// one of them as a MIDI file beside the folders.
///
/// May be run again; a song file that the user wrote or changed stays as it is. Throws a QString
/// when a file cannot be written.
void writeDemoSongs(const QString &dir);
