#pragma once

#include <QDir>

/// Whether the game is installed in `directory`: it has a directory "assets" and a directory
/// "win32" with "quillmoor.exe" in it.
bool isGameDirectory(const QDir &directory);

/// The canonical path of the game where it is usually installed, in the user's home directory;
/// empty when it is not there.
QString usualGameDirectory();
