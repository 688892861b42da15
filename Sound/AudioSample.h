#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

/// A sound in memory: floats, one array per channel, 1 being full scale; mono or stereo.
struct AudioSample {
    double rate = 48000.0;    ///< frames per second
    std::vector<float> left;  ///< the only channel of a mono sound
    std::vector<float> right; ///< empty for a mono sound, else as long as `left`

    bool isStereo() const { return !right.empty(); }
    std::size_t frames() const { return left.size(); }
    std::size_t bytes() const { return (left.size() + right.size()) * sizeof(float); }
};

/// `value` made fit for arithmetic: 0 for what is not a number, infinite, or so small that the
/// processor would compute with it slowly (below -400 dB); at most 65536 times full scale, so
/// that no sum of voices overflows.
inline float cleanSample(float value)
{
    constexpr float Largest = 65536.0F;
    constexpr float Smallest = 1e-20F;
    const float size = std::fabs(value);
    if (!(size >= Smallest) || std::isinf(value))
        return 0.0F;
    return size <= Largest ? value : std::copysign(Largest, value);
}
