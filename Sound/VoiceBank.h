#pragma once

#include "Sound/AudioSample.h"
#include "Sound/RemoteMixer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// The commanding side of the mixer: hands out its slots and keeps the samples of its voices
/// alive until the mixer has let go of them. Lives on the thread that plays, never in the audio
/// callback, which has no more of it than mixer().
class VoiceBank {
public:
    using Slot = RemoteMixer::Slot;
    using Gain = RemoteMixer::Gain;
    using Fade = RemoteMixer::Fade;
    using Sample = std::shared_ptr<const AudioSample>;

    explicit VoiceBank(std::size_t voices);

    /// A voice that is silent until provide(). Nothing when all slots are taken.
    std::optional<Slot> await(std::uint64_t startClock, const Gain &gain, const Fade &fade = {});
    /// What the voice of await() plays; once for each, and not after its stop().
    void provide(Slot slot, const Sample &sample);
    void setGain(Slot slot, const Gain &gain) { m_mixer.setGain(slot, gain); }
    void stop(Slot slot) { m_mixer.stop(slot); }

    /// Takes back the slots whose voices have ended and answers them.
    std::vector<Slot> collectEnded();

    std::size_t voices() const { return m_samples.size() - m_free.size(); }

    RemoteMixer &mixer() { return m_mixer; }
    const RemoteMixer &mixer() const { return m_mixer; }

private:
    RemoteMixer m_mixer;
    std::vector<Sample> m_samples; // by slot
    std::vector<Slot> m_free;
};
