#pragma once

#include <QDir>
#include <QString>

#include <optional>

/// Whether the game is installed in `directory`: it has a directory "assets" and a directory
/// "win32" with "quillmoor.exe" in it.
bool isGameDirectory(const QDir &directory);
/// The same for a path as somebody wrote or stored it. An empty one names no directory, though to
/// QDir it is the working directory.
bool isGameDirectory(const QString &path);

/// The canonical path of the game where it is usually installed, in the user's home directory;
/// empty when it is not there.
QString usualGameDirectory();

/// What the user names for this run: the value of an option, else the environment variable
/// QUILLMOOR_GAME unless it is empty, else nothing. It may be no game directory.
std::optional<QString> namedGameDirectory(const std::optional<QString> &option);
