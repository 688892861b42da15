#pragma once

#include "model/Settings.h"

#include <QString>
#include <QVector>

#include <array>

/// The five dials with which the user chooses the grids of a realignment: what their positions
/// mean. Position 0 of the first dial is whole notes, of the others no grid at all; each further
/// position is twice as fine.
namespace RealignDials {

constexpr int Count = 5;

struct Dial {
    Settings::Setting setting; ///< where its position is kept
    int maximum;               ///< the last position, and the one to start with
    int base;                  ///< divisions of a whole note at the first grid: 1, 3, 5, 7 or 9
};

/// Regular, triplets, quintuplets, septuplets, nonuplets: also the order of the grids.
const std::array<Dial, Count> &dials();

using Positions = std::array<int, Count>;

/// The divisions of a whole note at a position of the dial (0..4, in the order of dials()); 0 for
/// no grid. A position outside of the dial's range counts as the nearest within, here and below.
int division(int dial, int position);

/// What is shown below the dial: "Whole", "None", or the division as in "96ths".
QString label(int dial, int position);

/// The grids for realignTrack(), in the order of the dials.
QVector<int> divisions(const Positions &positions);

/// A number from 1 on with the plural ending of its fraction: "2nds", "3rds", "12ths", "72nds".
QString fractionName(int number);

} // namespace RealignDials
