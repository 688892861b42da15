#pragma once

#include "model/Track.h"

#include <QVector>

/// The point of the grids nearest to `time`, all in ticks. Half-way between two points of a grid
/// the earlier one is taken, and where two grids are equally close, that of the grid that comes
/// first in `steps`.
///
/// A step of 0 is no grid, and without a grid the answer is `time` itself. Points past 64 bits
/// are not there: close to the end, the nearest is the last one before.
quint64 snapTime(quint64 time, const QVector<quint32> &steps);

/// A copy with every event, and every note's end, on the nearest point of the grids. A grid
/// divides a whole note into as many steps as its entry in `divisions` says; the order decides
/// as in snapTime(). No note is shorter than the finest step. The copy has no stored text.
///
/// Entries outside of 1..120960 are left out, and where none remains there is the grid of whole
/// notes. A note that would end past 64 bits ends with them.
Track realignTrack(const Track &track, const QVector<int> &divisions);

/// realignTrack() with the finest grids of binary notes, triplets, quintuplets, septuplets and
/// nonuplets: 128, 96, 80, 112 and 72.
Track quickRealignTrack(const Track &track);
