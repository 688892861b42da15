#include "VoiceTraffic.h"

VoiceTraffic::VoiceTraffic(RemoteMixer &mixer, std::size_t slots)
    : m_mixer(mixer)
    , m_lives(slots, 0)
{
    for (RemoteMixer::Slot slot = 0; slot < slots; ++slot)
        begin(slot);
}

void VoiceTraffic::step()
{
    m_mixer.flush();
    const float gain = Peak / static_cast<float>(1 + ++m_steps % 8);
    for (RemoteMixer::Slot slot = 0; slot < m_lives.size(); ++slot)
        m_mixer.setGain(slot, {gain, gain});
    for (RemoteMixer::Slot slot = 0; m_mixer.takeEnded(slot); ++m_ended)
        begin(slot);
}

void VoiceTraffic::begin(RemoteMixer::Slot slot)
{
    const std::uint64_t start = m_mixer.clock() + 7 * slot;
    m_mixer.await(slot, start > 100 ? start - 100 : start, {Peak, Peak});
    m_mixer.provide(slot, m_sample);
    if (++m_lives[slot] % 3 == 0)
        m_mixer.stop(slot);
}
