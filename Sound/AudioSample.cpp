#include "Sound/AudioSample.h"

#include <algorithm>

std::size_t AudioSample::bytes() const
{
    const std::size_t count = frames();
    return count == 0 ? 0 : count * (isStereo() ? 2 : 1) * sizeof(float);
}

void AudioSample::allocate(std::size_t maxFrames, bool isStereo)
{
    // Not std::make_unique(), which would write zeros to all of it.
    m_left.reset(new float[maxFrames]);
    m_right.reset(isStereo ? new float[maxFrames] : nullptr);
    m_maxFrames = maxFrames;
}

void AudioSample::append(const float *left, const float *right, std::size_t frames)
{
    const std::size_t count = std::min(frames, m_maxFrames - m_appended);
    std::transform(left, left + count, m_left.get() + m_appended, cleanSample);
    if (isStereo())
        std::transform(right, right + count, m_right.get() + m_appended, cleanSample);
    m_appended += count;
}

void AudioSample::appendSilence(std::size_t frames)
{
    const std::size_t count = std::min(frames, m_maxFrames - m_appended);
    std::fill_n(m_left.get() + m_appended, count, 0.0F);
    if (isStereo())
        std::fill_n(m_right.get() + m_appended, count, 0.0F);
    m_appended += count;
}
