#pragma once

#include "demo/Signal.h"

#include <QByteArray>

namespace Demo {

/// The sound as an Ogg Vorbis file. The same sound and serial number give the same bytes.
///
/// Written here because libsndfile gives each stream a random serial number. Throws a QString if
/// the encoder refuses to start.
QByteArray vorbisFile(const Sound &sound, double quality, int serial);

} // namespace Demo
