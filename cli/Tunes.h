#pragma once

#include "model/Track.h"

/// Music files as the commands take them.
namespace Tunes {

/// The tune of an ABC file as loadABCFile() reads it, or the tune on standard input for "-".
/// Throws as that function does.
Track read(const QString &path);

/// The file's name without directory and last suffix; "stdin" for "-".
QString stem(const QString &path);

} // namespace Tunes
