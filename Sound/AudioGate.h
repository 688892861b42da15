#pragma once

#include "Sound/AudioOutput.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

/// Lets the device's thread and the silent clock's thread take turns in pulling from one source,
/// never both at once, without a lock between them.
///
/// The device takes over with its first block after open(); the clock takes over when the device
/// is closed or has not pulled for a while. Each may go on calling while it is the other's turn.
class AudioGate {
public:
    /// How long a device may pause between two blocks before the clock takes over.
    static constexpr std::chrono::milliseconds Patience{120};

    explicit AudioGate(AudioSource &source)
        : m_source(source)
    {
    }

    /// A device may pull from now on.
    void open();
    /// No device may pull any more: its blocks are silent, and it is the clock's turn.
    void close();

    /// For the device's callback: the source's next frames, or silence.
    void fillForDevice(float *interleaved, std::size_t frames) noexcept;
    /// For the clock: pulls and forgets `frames` frames, unless it is the device's turn.
    void pullForClock(float *scratch, std::size_t frames) noexcept;

    /// Whether the device pulled last, and did so not long ago.
    bool isDevicePulling() const;
    /// Frames that went to the device since open().
    std::uint64_t deviceFrames() const { return m_deviceFrames.load(std::memory_order_relaxed); }

private:
    bool enter() noexcept { return !m_busy.test_and_set(std::memory_order_acquire); }
    void leave() noexcept { m_busy.clear(std::memory_order_release); }
    void fillLocked(float *interleaved, std::size_t frames) noexcept;

    AudioSource &m_source;
    std::atomic_flag m_busy = ATOMIC_FLAG_INIT; // one of them is at the source
    std::atomic<bool> m_isOpen{false};
    std::atomic<std::int64_t> m_lastPull{0}; // of the device, ns of the steady clock; 0 for never
    std::atomic<std::uint64_t> m_deviceFrames{0};
};
