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
/// is closed or has not pulled for a while. Each may go on calling while it is the other's turn,
/// and after shut(), when nobody gets to the source any more.
///
/// A device with large buffers pulls much at once and pauses for long. When that is seen to be its
/// habit, by two long pauses in a row, it is waited for half as long again as it pauses: the clock
/// would else play every other piece of the music to nobody.
class AudioGate {
public:
    /// How long a device may pause between two blocks before the clock takes over.
    static constexpr std::chrono::milliseconds Patience{150};
    /// The same at most, for a device in the habit of long pauses.
    static constexpr std::chrono::milliseconds LongestPatience{1000};
    /// How long a long pause is remembered; another one within that time makes a habit.
    static constexpr std::chrono::milliseconds Memory{2000};
    /// How far a device may be ahead of time: as much as its buffers take at the beginning.
    static constexpr std::chrono::milliseconds Head{1000};

    explicit AudioGate(AudioSource &source)
        : m_source(source)
    {
    }

    // For the thread that has the device, and has one at a time.
    /// A device may pull from now on.
    void open();
    /// No device may pull any more: its blocks are silent, and it is the clock's turn.
    void close();

    /// For the owner, once and last: returns when nobody is at the source, which may go then.
    void shut();

    /// For the device's callback: the source's next frames, or silence.
    void fillForDevice(float *interleaved, std::size_t frames) noexcept;
    /// For the clock: pulls and forgets `frames` frames, unless it is the device's turn.
    void pullForClock(float *scratch, std::size_t frames) noexcept;

    // For any thread.
    /// Whether the device pulled last, and did so not long ago.
    bool isDevicePulling() const;
    /// Whether the device wanted far more since open() than fits into that time. It got silence
    /// instead: something that throws sound away as fast as it comes does not move the music.
    bool isDeviceRacing() const { return m_isRacing.load(std::memory_order_relaxed); }

private:
    bool enter() noexcept { return !m_busy.test_and_set(std::memory_order_acquire); }
    void leave() noexcept { m_busy.clear(std::memory_order_release); }
    bool mayDevicePull() noexcept;
    void learnFrom(std::chrono::nanoseconds pause, std::int64_t now) noexcept;

    AudioSource &m_source;
    std::atomic_flag m_busy = ATOMIC_FLAG_INIT; // one of them is at the source
    std::atomic<bool> m_isOpen{false};
    std::atomic<bool> m_isRacing{false};
    // Of the device, in ns of the steady clock; 0 for never.
    std::atomic<std::int64_t> m_opened{0};
    std::atomic<std::int64_t> m_lastPull{0};
    std::atomic<std::int64_t> m_lastLongPause{0}; // its end
    std::atomic<std::int64_t> m_patience{std::chrono::nanoseconds(Patience).count()};
    std::atomic<std::uint64_t> m_deviceFrames{0}; // since open()
};
