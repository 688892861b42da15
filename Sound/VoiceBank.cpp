#include "Sound/VoiceBank.h"

VoiceBank::VoiceBank(std::size_t voices)
    : m_mixer(voices)
    , m_samples(voices)
{
    m_free.reserve(voices);
    for (std::size_t i = voices; i > 0; --i)
        m_free.push_back(static_cast<Slot>(i - 1));
}

std::optional<VoiceBank::Slot> VoiceBank::await(std::uint64_t startClock, const Gain &gain,
                                                const Fade &fade)
{
    if (m_free.empty())
        return std::nullopt;
    const Slot slot = m_free.back();
    m_mixer.await(slot, startClock, gain, fade);
    m_free.pop_back();
    return slot;
}

void VoiceBank::provide(Slot slot, const Sample &sample)
{
    m_samples[slot] = sample;
    m_mixer.provide(slot, *sample);
}

std::vector<VoiceBank::Slot> VoiceBank::collectEnded()
{
    std::vector<Slot> ended;
    for (Slot slot = 0; m_mixer.takeEnded(slot);) {
        m_samples[slot].reset();
        m_free.push_back(slot);
        ended.push_back(slot);
    }
    return ended;
}
