#pragma once

#include "model/Track.h"

#include <QString>

/// "Pos: 3:02:50" for a time in ticks: measure and beat, both from 1, and hundredths of the beat,
/// in the track's first measure. "Pos: 1:01:00" in a track whose measure or beat has no length.
QString positionText(quint64 position, const Track &track);
