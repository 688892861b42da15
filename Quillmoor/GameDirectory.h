#pragma once

#include <QDir>

/// Whether the game is installed in `directory`: it has a directory "assets" and a directory
/// "win32" with "quillmoor.exe" in it.
bool isGameDirectory(const QDir &directory);
