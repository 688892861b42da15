#pragma once

#include <atomic>
#include <cmath>
#include <cstddef>
#include <memory>

/// A sound in memory that one thread makes while others, the mixing one among them, read what is
/// there already: floats, one array per channel, 1 being full scale; mono or stereo.
///
/// What was published stays as it is and where it is. Nobody but the thread that makes the sample
/// may look at more than the first frames() frames, nor at anything else before there is one or
/// the sample is complete.
class AudioSample {
public:
    AudioSample() = default;
    AudioSample(const AudioSample &) = delete;
    AudioSample &operator=(const AudioSample &) = delete;

    // For every thread; none of these locks or waits.
    std::size_t frames() const { return m_published.load(std::memory_order_acquire); }
    /// Whether frames() will not grow any more. Ask this before frames(), not after it.
    bool isComplete() const { return m_isComplete.load(std::memory_order_acquire); }
    /// Whether there are `frames` frames, or all that there will ever be.
    bool has(std::size_t frames) const { return isComplete() || this->frames() >= frames; }
    /// What frames() will not exceed.
    std::size_t maxFrames() const { return isComplete() ? frames() : m_maxFrames; }
    std::size_t bytes() const;

    bool isStereo() const { return m_right != nullptr; }
    const float *left() const { return m_left.get(); }
    /// The same as left() for a mono sound.
    const float *right() const { return isStereo() ? m_right.get() : left(); }

    // For the thread that makes it.

    /// Once, before anything else: room for so many frames. It costs memory only as far as it is
    /// written to.
    void allocate(std::size_t maxFrames, bool isStereo);
    /// Frames behind those that were appended before, cleaned; `right` counts only for a stereo
    /// sound. What has no room is left out.
    void append(const float *left, const float *right, std::size_t frames);
    void appendSilence(std::size_t frames);
    /// Shows what was appended to the other threads.
    void publish() { m_published.store(m_appended, std::memory_order_release); }
    /// Publishes nothing more.
    void complete() { m_isComplete.store(true, std::memory_order_release); }

    /// What was appended, published or not.
    std::size_t appendedFrames() const { return m_appended; }

private:
    std::unique_ptr<float[]> m_left;
    std::unique_ptr<float[]> m_right; // null for a mono sound
    std::size_t m_maxFrames = 0;
    std::size_t m_appended = 0;
    std::atomic<std::size_t> m_published{0};
    std::atomic<bool> m_isComplete{false};
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
