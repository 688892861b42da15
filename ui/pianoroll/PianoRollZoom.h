#pragma once

/// The steps of the piano roll's zoom, as indices from 0.
namespace PianoRollZoom {

/// One direction's steps. What is out of range counts as the nearest in range.
struct Axis {
    int standard; ///< the default
    int last;

    int bounded(int index) const;
    int in(int index) const { return bounded(index + 1); }
    int out(int index) const { return bounded(index - 1); }
};

constexpr Axis Horizontal{4, 8};
constexpr Axis Vertical{2, 6};

double pixelsPerTick(int index);
/// Negative, which puts high notes at the top.
double pixelsPerSemitone(int index);

} // namespace PianoRollZoom
