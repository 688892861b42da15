#pragma once

#include "model/Track.h"

#include <QString>

class QFile;

/// Reads a file of ABC text (UTF-8, up to the first NUL byte) into a track that has `path` as its
/// file name and keeps the text as it was written.
///
/// Throws a QString: "Could not open file." when `path` cannot be read or is a directory,
/// "The file is too large." beyond 256 MiB, or what ABCParser::parse() throws.
Track loadABCFile(const QString &path);

/// The same from an open file, such as standard input; the track has no file name.
Track readABC(QFile &file);

/// Saves ABC text as UTF-8, so that loadABCFile() reads the same. Throws what DocumentFile::save()
/// throws, and then the file is as it was.
void saveABCFile(const QString &path, const QString &text);
