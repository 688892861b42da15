#pragma once

#include "Sound/AudioGate.h"

#include <array>
#include <atomic>
#include <thread>

/// Pulls from a gate at exactly the output's rate while no device does, on a thread of its own:
/// music without a device goes on in silence, and comes to its end.
class SilentClock {
public:
    explicit SilentClock(AudioGate &gate)
        : m_gate(gate)
    {
    }
    ~SilentClock();
    SilentClock(const SilentClock &) = delete;
    SilentClock &operator=(const SilentClock &) = delete;

    /// Once. Throws std::system_error where the system gives no thread.
    void start();

private:
    void run();

    AudioGate &m_gate;
    std::atomic<bool> m_isStopping{false};
    std::array<float, AudioOutput::BlockFrames * AudioOutput::Channels> m_scratch{};
    std::thread m_thread;
};
