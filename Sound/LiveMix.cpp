#include "Sound/LiveMix.h"

#include <algorithm>

namespace {

/// No sum of clean samples is anything but a number; a damaged one must not reach a loudspeaker.
float playable(float sample)
{
    if (sample >= -1.0F && sample <= 1.0F)
        return sample;
    if (sample > 1.0F)
        return 1.0F;
    return sample < -1.0F ? -1.0F : 0.0F;
}

} // namespace

void LiveMix::fill(float *interleaved, std::size_t frames) noexcept
{
    while (frames > 0) {
        const std::size_t count = std::min(frames, PieceFrames);
        fillPiece(interleaved, count);
        interleaved += AudioOutput::Channels * count;
        frames -= count;
    }
}

void LiveMix::fillPiece(float *interleaved, std::size_t frames) noexcept
{
    m_mixer.mix(m_left.data(), m_right.data(), frames);
    for (std::size_t i = 0; i < frames; ++i) {
        interleaved[2 * i] = playable(m_left[i]);
        interleaved[2 * i + 1] = playable(m_right[i]);
    }
}
