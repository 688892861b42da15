#pragma once

#include "Sound/Mixer.h"
#include "Sound/SpscRing.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

/// A mixer that one thread commands and another one runs, without a lock between them.
///
/// Commands go through a ring and take effect at the start of the next block, in their order.
/// What the ring has no room for waits on the commanding side, where of several gains of one voice
/// only the last one is kept: a mixing thread that stands still does not make it grow for ever.
/// Both sides may also be the same thread.
class RemoteMixer {
public:
    using Slot = Mixer::Slot;
    using Gain = Mixer::Gain;
    using Fade = Mixer::Fade;

    static constexpr std::size_t RingCommands = 8192;

    /// Slots are the numbers below `slots`.
    explicit RemoteMixer(std::size_t slots, std::size_t ringCommands = RingCommands);

    // For the commanding thread: what Mixer does, from the next block on. A slot is free again
    // when takeEnded() has answered it.
    void await(Slot slot, std::uint64_t startClock, const Gain &gain, const Fade &fade = {});
    void provide(Slot slot, const AudioSample &sample);
    void setGain(Slot slot, const Gain &gain);
    void stop(Slot slot);
    /// Sends what the ring had no room for, which every command does too. Answers whether nothing
    /// is left.
    bool flush();
    /// The next slot whose voice has ended; false when there is none.
    bool takeEnded(Slot &slot) { return m_ended.pop(slot); }

    // For any thread: as of the last block that was mixed.
    std::uint64_t clock() const { return m_clock.load(std::memory_order_acquire); }
    std::uint64_t lateStarts() const { return m_lateStarts.load(std::memory_order_relaxed); }
    std::uint64_t missedFrames() const { return m_missedFrames.load(std::memory_order_relaxed); }

    // For the mixing thread: neither allocates, locks, throws or calls the system.
    void runCommands() noexcept;
    /// Runs the commands that have come, then mixes the next frames.
    void mix(float *left, float *right, std::size_t frames) noexcept;

    /// Mixes after all commands so far, also those that the ring has no room for. For a thread
    /// that is both.
    void mixAfterAll(float *left, float *right, std::size_t frames);

private:
    struct Command {
        enum class Kind { Await, Provide, SetGain, Stop };

        Kind kind = Kind::Stop;
        Slot slot = 0;
        Gain gain;
        std::uint64_t startClock = 0;
        Fade fade;
        const AudioSample *sample = nullptr;
    };

    struct LatestGain {
        Gain gain;
        bool isListed = false;
        bool isDue = false; // false again where the voice was stopped or is another one
    };

    void send(const Command &command);
    bool sendWaiting();
    bool sendGains();
    void dropGain(Slot slot);
    void run(const Command &command) noexcept;

    // The commanding side.
    std::deque<Command> m_waiting;
    std::vector<LatestGain> m_gains; // by slot
    std::vector<Slot> m_gainSlots;   // those to be sent

    // Between them.
    SpscRing<Command> m_commands;
    SpscRing<Slot> m_ended; // as many as there are slots: it is never full
    std::atomic<std::uint64_t> m_clock{0};
    std::atomic<std::uint64_t> m_lateStarts{0};
    std::atomic<std::uint64_t> m_missedFrames{0};

    // The mixing side.
    Mixer m_mixer;
};
