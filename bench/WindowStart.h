#pragma once

#include <QString>

/// From the start of the window program to its first window, in turn with that of the ABC editor
/// qabc, and the memory of both a second later. Prints a table. `game` is the directory of a game.
void benchStart(const QString &game);
