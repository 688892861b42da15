#pragma once

#include "model/Track.h"

#include <QList>

/// One track with the events of all, in the order of time; at one time those of an earlier track
/// come first. Header fields, tempo and measure are the first one's, and the header "X" is "1". It
/// has neither a text nor a file name.
///
/// They must agree in tempo: the same initial one, and each change of tempo in a later track must
/// be found in the first one at the same time. Else throws the QString "Cannot merge tracks with
/// different tempos".
///
/// `tracks` must not be empty.
Track mergeTracks(const QList<Track> &tracks);
