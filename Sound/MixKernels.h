#pragma once

#include <cstddef>

/// The inner loops of the mixer: they add samples times gains to the output, nothing else.
///
/// There is a version for every x86-64 processor and one for those with AVX2. Both add the same
/// products in the same order without fusing them, so that they give the same bits.
namespace MixKernels {

struct Gain {
    float left = 0.0F;
    float right = 0.0F;

    bool operator==(const Gain &other) const { return left == other.left && right == other.right; }
    bool operator!=(const Gain &other) const { return !(*this == other); }
};

/// A piece of one voice. For mono, `left` and `right` are the same pointer.
struct Source {
    const float *left = nullptr;
    const float *right = nullptr;
    Gain gain;
};

/// A straight line from one gain to another over `length` frames, of which `done` are behind.
struct Ramp {
    Gain from;
    Gain to;
    unsigned done = 0;
    unsigned length = 0;
};

/// The voices that the batch loop adds at once.
constexpr std::size_t BatchSize = 4;

struct Table {
    /// Adds one voice at constant gain.
    void (*add)(float *left, float *right, const Source &source, std::size_t frames);
    /// Adds BatchSize voices at constant gain, with the result of adding one after the other.
    void (*addBatch)(float *left, float *right, const Source *sources, std::size_t frames);
    /// Adds one voice along a ramp; its own gain is not used. The first frame has the gain one
    /// step beyond `done`, the frame that ends the ramp has `to`.
    void (*addRamp)(float *left, float *right, const Source &source, const Ramp &ramp,
                    std::size_t frames);
};

/// What every processor can run.
const Table &portable();
/// The fastest that this processor can run.
const Table &best();

} // namespace MixKernels
