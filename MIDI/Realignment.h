#pragma once

#include "model/Track.h"

#include <QVector>

/// The point of the grids nearest to `time`, all in ticks; `time` itself for no grid or steps of
/// 0. Half-way between two points of a grid the earlier one is taken, and where two grids are
/// equally close, that of the grid that comes first in `steps`.
quint64 snapTime(quint64 time, const QVector<quint32> &steps);

/// A copy with every event, and every note's end, on the nearest point of the grids. A grid
/// divides a whole note into as many steps as its entry in `divisions` says; with no entry there
/// is the grid of whole notes. No note is shorter than the finest step. The copy has no stored
/// text.
Track realignTrack(const Track &track, const QVector<int> &divisions);

/// realignTrack() with the finest grids of binary notes, triplets, quintuplets, septuplets and
/// nonuplets: 128, 96, 80, 112 and 72.
Track quickRealignTrack(const Track &track);
