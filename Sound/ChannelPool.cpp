#include "Sound/ChannelPool.h"

#include "Sound/Resampler.h"
#include "Sound/WaveHeader.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float QuarterPi = 0.785398163F;

/// Sines from both sides: the silent side of a hard pan is exactly 0, the other exactly 1.
Mixer::Gain constantPower(float volume, float pan)
{
    return {volume * std::sin((1.0F - pan) * QuarterPi),
            volume * std::sin((1.0F + pan) * QuarterPi)};
}

Mixer::Gain balance(float volume, float pan)
{
    return {volume * std::min(1.0F, 1.0F - pan), volume * std::min(1.0F, 1.0F + pan)};
}

} // namespace

FMOD_RESULT BuiltinChannel::stop()
{
    if (!isOpen())
        return FMOD_ERR_INVALID_HANDLE;
    m_pool.recycle(*this);
    return FMOD_OK;
}

FMOD_RESULT BuiltinChannel::setPaused(bool paused)
{
    if (!isOpen())
        return FMOD_ERR_INVALID_HANDLE;
    if (isSetUp())
        return paused ? FMOD_ERR_INVALID_PARAM : FMOD_OK;
    return paused ? FMOD_OK : play();
}

FMOD_RESULT BuiltinChannel::setVolume(float volume)
{
    if (!isOpen())
        return FMOD_ERR_INVALID_HANDLE;
    if (!std::isfinite(volume))
        return FMOD_ERR_INVALID_PARAM;
    m_volume = std::clamp(volume, 0.0F, 1.0F);
    applyGain();
    return FMOD_OK;
}

FMOD_RESULT BuiltinChannel::setFrequency(float frequency)
{
    if (!isOpen())
        return FMOD_ERR_INVALID_HANDLE;
    if (isSetUp() || !Resampler::isPlayable(frequency, WaveHeader::SampleRate))
        return FMOD_ERR_INVALID_PARAM;
    m_frequency = frequency;
    return FMOD_OK;
}

FMOD_RESULT BuiltinChannel::getFrequency(float *frequency)
{
    if (!isOpen())
        return FMOD_ERR_INVALID_HANDLE;
    if (frequency == nullptr)
        return FMOD_ERR_INVALID_PARAM;
    *frequency = m_frequency;
    return FMOD_OK;
}

FMOD_RESULT BuiltinChannel::setPan(float pan)
{
    if (!isOpen())
        return FMOD_ERR_INVALID_HANDLE;
    if (!std::isfinite(pan))
        return FMOD_ERR_INVALID_PARAM;
    m_pan = std::clamp(pan, -1.0F, 1.0F);
    applyGain();
    return FMOD_OK;
}

FMOD_RESULT BuiltinChannel::setDelay(FMOD_DELAYTYPE type, unsigned int delayHi,
                                     unsigned int delayLo)
{
    if (!isOpen())
        return FMOD_ERR_INVALID_HANDLE;
    if (type != FMOD_DELAYTYPE_DSPCLOCK_START || isSetUp())
        return FMOD_ERR_INVALID_PARAM;
    m_startClock = (std::uint64_t{delayHi} << 32) | delayLo;
    return FMOD_OK;
}

FMOD_RESULT BuiltinChannel::setChannelGroup(FMOD::ChannelGroup *group)
{
    if (!isOpen())
        return FMOD_ERR_INVALID_HANDLE;
    return group == nullptr ? FMOD_ERR_INVALID_PARAM : FMOD_OK;
}

FMOD_RESULT BuiltinChannel::play()
{
    SampleCache::Sample prepared;
    const FMOD_RESULT result = m_pool.m_cache.prepare(m_sample, double{m_frequency}, prepared);
    if (result != FMOD_OK)
        return result;
    const auto slot = m_pool.m_bank.start(prepared, m_startClock, gain());
    if (!slot)
        return FMOD_ERR_CHANNEL_ALLOC;
    m_slot = *slot;
    m_state = State::Playing;
    m_pool.m_bySlot[m_slot] = this;
    --m_pool.m_waiting;
    return FMOD_OK;
}

void BuiltinChannel::applyGain()
{
    if (m_state == State::Playing)
        m_pool.m_bank.setGain(m_slot, gain());
}

Mixer::Gain BuiltinChannel::gain() const
{
    return m_sample->isStereo() ? balance(m_volume, m_pan) : constantPower(m_volume, m_pan);
}

ChannelPool::ChannelPool(SampleCache &cache)
    : m_cache(cache)
    , m_bank(MaxVoices)
    , m_bySlot(MaxVoices, nullptr)
{
}

FMOD_RESULT ChannelPool::open(const SampleCache::Sample &sample, FMOD::Channel **channel)
{
    if (m_waiting + m_bank.voices() >= MaxVoices)
        return FMOD_ERR_CHANNEL_ALLOC;
    BuiltinChannel &opened = freeChannel();
    opened.m_state = BuiltinChannel::State::Waiting;
    opened.m_sample = sample;
    opened.m_frequency = static_cast<float>(sample->rate);
    opened.m_volume = 1.0F;
    opened.m_pan = 0.0F;
    opened.m_startClock = 0;
    ++opened.m_uses;
    ++m_waiting;
    *channel = &opened;
    return FMOD_OK;
}

void ChannelPool::mix(float *left, float *right, std::size_t frames)
{
    m_bank.mixer().mix(left, right, frames);
    collectEnded();
}

BuiltinChannel &ChannelPool::freeChannel()
{
    if (m_free.empty())
        return m_channels.emplace_back(*this);
    BuiltinChannel &channel = *m_free.back();
    m_free.pop_back();
    return channel;
}

void ChannelPool::recycle(BuiltinChannel &channel)
{
    if (channel.m_state == BuiltinChannel::State::Waiting)
        --m_waiting;
    if (channel.m_state == BuiltinChannel::State::Playing) {
        m_bank.stop(channel.m_slot);
        m_bySlot[channel.m_slot] = nullptr;
    }
    channel.m_state = BuiltinChannel::State::Free;
    channel.m_sample.reset();
    m_free.push_back(&channel);
}

void ChannelPool::collectEnded()
{
    for (const VoiceBank::Slot slot : m_bank.collectEnded()) {
        BuiltinChannel *const channel = std::exchange(m_bySlot[slot], nullptr);
        if (channel != nullptr)
            endBySelf(*channel);
    }
}

void ChannelPool::endBySelf(BuiltinChannel &channel)
{
    channel.m_state = BuiltinChannel::State::Ended;
    channel.m_sample.reset();
    m_ended.emplace_back(&channel, channel.m_uses);
    if (m_ended.size() <= MaxVoices)
        return;
    const auto [oldest, uses] = m_ended.front();
    m_ended.pop_front();
    if (oldest->m_state == BuiltinChannel::State::Ended && oldest->m_uses == uses)
        recycle(*oldest);
}
