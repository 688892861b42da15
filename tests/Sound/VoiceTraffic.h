#pragma once

#include "Sound/RemoteMixer.h"
#include "WholeSample.h"

#include <cstddef>
#include <vector>

/// Keeps every slot of a mixer busy from the commanding side with all that can be said to a
/// voice: early, timely and late starts, gains, and a stop for every third one.
class VoiceTraffic {
public:
    static constexpr float Peak = 1.0F; ///< of one voice
    static constexpr std::size_t Frames = 300;

    VoiceTraffic(RemoteMixer &mixer, std::size_t slots);

    /// Fades all voices a bit and replaces those that have ended.
    void step();

    /// The voices that have ended so far.
    std::size_t ended() const { return m_ended; }

private:
    void begin(RemoteMixer::Slot slot);

    RemoteMixer &m_mixer;
    const CompleteSample m_sample{std::vector<float>(Frames, Peak)};
    std::vector<unsigned> m_lives; // voices so far, by slot
    std::size_t m_ended = 0;
    unsigned m_steps = 0;
};
