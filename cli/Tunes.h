#pragma once

#include "model/Track.h"

/// Music files as the commands take them.
namespace Tunes {

/// The tune of an ABC file, or of standard input for "-": its text up to the first NUL byte,
/// taken as UTF-8. The track's file name is `path`. Throws "Could not open file." or what the
/// parser has to say.
Track read(const QString &path);

/// The file's name without directory and last suffix; "stdin" for "-".
QString stem(const QString &path);

} // namespace Tunes
