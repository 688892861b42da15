#include "ui/pianoroll/PianoRollZoom.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array<double, PianoRollZoom::Horizontal.last + 1> horizontalFactors{
    0.0625, 0.125, 0.25, 0.5, 1.0, 2.0, 4.0, 8.0, 16.0};
// The last step is smaller on purpose.
constexpr std::array<double, PianoRollZoom::Vertical.last + 1> verticalFactors{
    -4.0, -6.0, -8.0, -12.0, -16.0, -24.0, -28.0};

/// At factor 1 a quarter note is 96 pixels wide.
constexpr double TicksPerPixel = 315.0;

} // namespace

namespace PianoRollZoom {

int Axis::bounded(int index) const
{
    return std::clamp(index, 0, last);
}

double pixelsPerTick(int index)
{
    return horizontalFactors[static_cast<size_t>(Horizontal.bounded(index))] / TicksPerPixel;
}

double pixelsPerSemitone(int index)
{
    return verticalFactors[static_cast<size_t>(Vertical.bounded(index))];
}

} // namespace PianoRollZoom
