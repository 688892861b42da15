#pragma once

#include "Sound/AudioOutput.h"

#include <atomic>
#include <chrono>
#include <cstdint>

/// Watches how a source is pulled: one of its own, whose samples are all Level, or another one.
class WatchedSource final : public AudioSource {
public:
    static constexpr float Level = 0.25F;

    explicit WatchedSource(AudioSource *watched = nullptr)
        : m_watched(watched)
    {
    }

    void fill(float *interleaved, std::size_t frames) noexcept override;

    // For any thread.
    std::uint64_t frames() const { return m_frames; }
    /// Whether two threads were ever here at once.
    bool wasCrowded() const { return m_wasCrowded; }
    /// Between two calls since the last forgetGaps().
    std::chrono::milliseconds longestGap() const;
    void forgetGaps() { m_longestGap = 0; }

private:
    void noteGap();

    AudioSource *m_watched;
    std::atomic<bool> m_isInside{false};
    std::atomic<bool> m_wasCrowded{false};
    std::atomic<std::uint64_t> m_frames{0};
    std::atomic<std::int64_t> m_longestGap{0}; // ns
    std::int64_t m_last = 0;                   // not atomic: the thread sanitizer would tell
};
