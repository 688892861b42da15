#include "Sound/InstalledSystem.h"

namespace {

/// A library that reports success and hands nothing out is not believed.
FMOD_RESULT verdict(FMOD_RESULT result, const void *handedOut)
{
    return result == FMOD_OK && !handedOut ? FMOD_ERR_INTERNAL : result;
}

} // namespace

FMOD_RESULT InstalledChannel::stop()
{
    const FMOD_RESULT result = call(m_entryPoints.channelStop);
    m_pool.giveBack(*this);
    return result;
}

FMOD_RESULT InstalledChannel::setPaused(bool paused)
{
    return call(m_entryPoints.channelSetPaused, paused ? 1 : 0);
}

FMOD_RESULT InstalledChannel::setVolume(float volume)
{
    return call(m_entryPoints.channelSetVolume, volume);
}

FMOD_RESULT InstalledChannel::setFrequency(float frequency)
{
    return call(m_entryPoints.channelSetFrequency, frequency);
}

FMOD_RESULT InstalledChannel::getFrequency(float *frequency)
{
    return call(m_entryPoints.channelGetFrequency, frequency);
}

FMOD_RESULT InstalledChannel::setPan(float pan)
{
    return call(m_entryPoints.channelSetPan, pan);
}

FMOD_RESULT InstalledChannel::setDelay(FMOD_DELAYTYPE type, unsigned int delayHi,
                                       unsigned int delayLo)
{
    return call(m_entryPoints.channelSetDelay, type, delayHi, delayLo);
}

FMOD_RESULT InstalledChannel::setChannelGroup(FMOD::ChannelGroup *group)
{
    return call(m_entryPoints.channelSetChannelGroup, InstalledChannelGroup::rawOf(group));
}

InstalledChannel *InstalledChannelPool::channelOf(RawChannel *raw)
{
    const auto known = m_byHandle.find(raw);
    const auto channel = known != m_byHandle.end() ? known->second : freeChannel();
    m_inUse.splice(m_inUse.end(), known != m_byHandle.end() ? m_inUse : m_free, channel);
    channel->m_raw = raw;
    m_byHandle[raw] = channel;
    return &*channel;
}

void InstalledChannelPool::giveBack(InstalledChannel &channel)
{
    const auto known = m_byHandle.find(channel.m_raw);
    if (known != m_byHandle.end())
        takeOutOfUse(known->second);
}

InstalledChannelPool::Channels::iterator InstalledChannelPool::freeChannel()
{
    if (m_free.empty() && m_inUse.size() < maximumInUse)
        m_free.emplace_back(m_entryPoints, *this);
    else if (m_free.empty())
        takeOutOfUse(m_inUse.begin());
    return m_free.begin();
}

void InstalledChannelPool::takeOutOfUse(Channels::iterator channel)
{
    m_byHandle.erase(channel->m_raw);
    channel->m_raw = nullptr;
    m_free.splice(m_free.end(), m_inUse, channel);
}

InstalledSystem::InstalledSystem(const FmodEntryPoints &entryPoints, RawSystem *raw)
    : m_entryPoints(entryPoints)
    , m_raw(raw)
    , m_channels(m_entryPoints)
{
}

FMOD_RESULT InstalledSystem::release()
{
    const std::unique_ptr<InstalledSystem> self(this);
    return m_entryPoints.systemRelease(m_raw);
}

FMOD_RESULT InstalledSystem::setOutput(FMOD_OUTPUTTYPE output)
{
    return m_entryPoints.systemSetOutput(m_raw, output);
}

FMOD_RESULT InstalledSystem::setSoftwareChannels(int channels)
{
    return m_entryPoints.systemSetSoftwareChannels(m_raw, channels);
}

FMOD_RESULT InstalledSystem::getSoftwareFormat(int *sampleRate, FMOD_SOUND_FORMAT *format,
                                               int *outputChannels, int *maxInputChannels,
                                               FMOD_DSP_RESAMPLER *resampler, int *bits)
{
    return m_entryPoints.systemGetSoftwareFormat(m_raw, sampleRate, format, outputChannels,
                                                 maxInputChannels, resampler, bits);
}

FMOD_RESULT InstalledSystem::init(int maxChannels, FMOD_INITFLAGS flags, void *extraDriverData)
{
    return m_entryPoints.systemInit(m_raw, maxChannels, flags, extraDriverData);
}

FMOD_RESULT InstalledSystem::update()
{
    return m_entryPoints.systemUpdate(m_raw);
}

FMOD_RESULT InstalledSystem::getDSPClock(unsigned int *hi, unsigned int *lo)
{
    return m_entryPoints.systemGetDSPClock(m_raw, hi, lo);
}

FMOD_RESULT InstalledSystem::createSound(const char *nameOrData, FMOD_MODE mode,
                                         FMOD_CREATESOUNDEXINFO *info, FMOD::Sound **sound)
{
    RawSound *raw = nullptr;
    const FMOD_RESULT answer = m_entryPoints.systemCreateSound(m_raw, nameOrData, mode, info, &raw);
    const FMOD_RESULT result = verdict(answer, raw);
    *sound = result == FMOD_OK ? InstalledSound::make(m_sounds, raw, m_entryPoints.soundRelease)
                               : nullptr;
    return result;
}

FMOD_RESULT InstalledSystem::createChannelGroup(const char *name, FMOD::ChannelGroup **group)
{
    RawChannelGroup *raw = nullptr;
    const FMOD_RESULT answer = m_entryPoints.systemCreateChannelGroup(m_raw, name, &raw);
    const FMOD_RESULT result = verdict(answer, raw);
    *group = result == FMOD_OK
        ? InstalledChannelGroup::make(m_groups, raw, m_entryPoints.channelGroupRelease)
        : nullptr;
    return result;
}

FMOD_RESULT InstalledSystem::playSound(FMOD_CHANNELINDEX channelId, FMOD::Sound *sound, bool paused,
                                       FMOD::Channel **channel)
{
    RawChannel *raw = nullptr;
    const FMOD_RESULT answer = m_entryPoints.systemPlaySound(
        m_raw, channelId, InstalledSound::rawOf(sound), paused ? 1 : 0, &raw);
    const FMOD_RESULT result = verdict(answer, raw);
    *channel = result == FMOD_OK ? m_channels.channelOf(raw) : nullptr;
    return result;
}
