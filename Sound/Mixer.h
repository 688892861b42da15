#pragma once

#include "Sound/AudioSample.h"
#include "Sound/MixKernels.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

/// Adds up voices on an integer clock of frames.
///
/// A voice is a prepared sound: samples at the output's rate, so that mixing only accumulates.
/// Its owner numbers the voices by slots and keeps their samples alive until the slot is
/// reported as ended. A sample may still be in the making: a voice that gets ahead of it is silent
/// there and keeps its place in time. After construction nothing here allocates, locks, throws or
/// calls the system: a device's callback can run all of it. Not for several threads at once.
///
/// Voices are added in the order they were started in, and the result does not depend on how
/// the time is cut into blocks.
class Mixer {
public:
    using Gain = MixKernels::Gain;
    using Slot = std::uint32_t;

    /// Frames over which a changed gain is reached: a block of the wave writer, so that a fade
    /// that is set once per block is one straight line.
    static constexpr unsigned GainRampFrames = 1024;
    /// Frames in which a stopped voice falls silent (5 ms at 48 kHz), and the least that any fade
    /// takes.
    static constexpr unsigned StopRampFrames = 256;

    /// A straight line to silence, at which the voice ends: known beforehand, it is the same
    /// however often and however late anyone looks at the clock.
    struct Fade {
        static constexpr std::uint64_t Never = std::numeric_limits<std::uint64_t>::max();

        std::uint64_t begin = Never; ///< clock
        std::uint64_t frames = 0;
    };

    struct Voice {
        const float *left = nullptr;
        const float *right = nullptr; ///< the same as `left` for a mono sound
        std::size_t frames = 0;
        std::uint64_t startClock = 0; ///< when it is in the past the voice starts at once
        Gain gain;
        Fade fade = {};
    };

    /// Slots are the numbers below `slots`.
    explicit Mixer(std::size_t slots, const MixKernels::Table &kernels = MixKernels::best());

    /// Takes a voice into a slot that is new or was reported as ended. Ignored for a slot in use.
    void start(Slot slot, const Voice &voice);
    /// Likewise takes a voice whose samples are not there yet. It keeps its place in the order
    /// of the voices and stays silent until provide(), from where it sounds from its first frame,
    /// at its start or, when that is over, at once.
    void await(Slot slot, std::uint64_t startClock, const Gain &gain, const Fade &fade);
    void await(Slot slot, std::uint64_t startClock, const Gain &gain)
    {
        await(slot, startClock, gain, Fade());
    }
    /// The sample of an awaited voice, of which the first frames are there; ignored for any other.
    void provide(Slot slot, const AudioSample &sample);
    /// Goes to a new gain: at once while nothing of the voice was heard, else along a ramp.
    /// Ignored for a voice that has ended or is stopping, and from the beginning of its fade on.
    void setGain(Slot slot, const Gain &gain);
    /// Fades the voice out quickly, unless its fade is as quickly over; it is then reported as
    /// ended.
    void stop(Slot slot);

    /// Writes the next frames (not adding to what is there) and moves the clock.
    void mix(float *left, float *right, std::size_t frames);

    /// Frames mixed so far.
    std::uint64_t clock() const { return m_clock; }
    /// Voices that have not ended, waiting ones included.
    std::size_t voices() const { return m_active.size(); }

    /// Voices whose samples came when their start was over; a start at 0 never is.
    std::uint64_t lateStarts() const { return m_lateStarts; }
    /// Frames that voices passed over in silence because they were not made yet.
    std::uint64_t missedFrames() const { return m_missedFrames; }

    /// The slots that ended since clearEnded(); they are free.
    const std::vector<Slot> &ended() const { return m_ended; }
    void clearEnded() { m_ended.clear(); }

private:
    struct State {
        Voice voice;
        const AudioSample *growing = nullptr; // where more frames may come from
        std::size_t position = 0;
        MixKernels::Ramp ramp; // length 0: constant gain
        bool inUse = false;
        bool awaited = false;
        bool stopping = false;
        bool fading = false;
        Gain fadeFrom; // once fading
    };

    static void grow(State &state);
    bool mixVoice(State &state, float *left, float *right, std::size_t frames);
    bool mixDue(State &state, float *left, float *right, std::size_t frames, std::uint64_t clock);
    bool mixPiece(State &state, float *left, float *right, std::size_t frames);
    std::uint64_t followFade(State &state, std::uint64_t clock);
    void aimFade(State &state, std::uint64_t elapsed, unsigned frames);
    void beginFade(State &state, std::uint64_t elapsed);
    bool miss(State &state, std::size_t frames);
    std::size_t mixRamp(State &state, float *left, float *right, std::size_t frames);
    void addToBatch(State &state, float *left, float *right, std::size_t frames);
    void flushBatch(float *left, float *right, std::size_t frames);
    void startRamp(State &state, const Gain &target, unsigned frames);

    const MixKernels::Table &m_kernels;
    std::vector<State> m_states;
    std::vector<Slot> m_active;
    std::vector<Slot> m_ended;
    MixKernels::Source m_batch[MixKernels::BatchSize];
    std::size_t m_batchCount = 0;
    std::uint64_t m_clock = 0;
    std::uint64_t m_lateStarts = 0;
    std::uint64_t m_missedFrames = 0;
};
