#include "Sound/ChannelPool.h"

#include "Sound/PlannedFade.h"
#include "Sound/Resampler.h"
#include "Sound/WaveHeader.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace {

constexpr float QuarterPi = 0.785398163F;

// How far ahead of the clock further pieces are queued. A device waits for nobody; a file does,
// and most of its notes end before their samples do.
constexpr std::uint64_t LiveAhead = 12000; // 0.25 s
constexpr std::uint64_t FileAhead = 2400;

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
    try {
        return paused ? FMOD_OK : play();
    } catch (const std::bad_alloc &) {
        return FMOD_ERR_MEMORY;
    }
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

void BuiltinChannel::planFade(std::uint64_t clock, std::uint64_t frames)
{
    m_fade = {clock, frames};
}

FMOD_RESULT BuiltinChannel::play()
{
    SampleCache::Sample prepared;
    const FMOD_RESULT result =
        m_pool.m_cache.prepare(m_sound.samples, double{m_frequency}, prepared);
    if (result != FMOD_OK)
        return result;
    m_pool.m_awaited.push_back({this, m_uses}); // does not count before m_prepared is set
    const auto slot = m_pool.m_bank.await(m_startClock, gain(), m_fade);
    if (!slot)
        return FMOD_ERR_CHANNEL_ALLOC;
    m_slot = *slot;
    m_state = State::Playing;
    m_prepared = std::move(prepared);
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
    return m_sound.isStereo ? balance(m_volume, m_pan) : constantPower(m_volume, m_pan);
}

ChannelPool::ChannelPool(SampleCache &cache)
    : m_cache(cache)
    , m_bank(MaxVoices)
    , m_supply(cache, MaxVoices)
    , m_bySlot(MaxVoices, nullptr)
{
}

FMOD_RESULT ChannelPool::open(const ChannelSound &sound, FMOD::Channel **channel)
{
    if (m_waiting + m_bank.voices() >= MaxVoices)
        return FMOD_ERR_CHANNEL_ALLOC;
    BuiltinChannel &opened = freeChannel();
    opened.m_state = BuiltinChannel::State::Waiting;
    opened.m_sound = sound;
    opened.m_frequency = static_cast<float>(sound.rate);
    opened.m_volume = 1.0F;
    opened.m_pan = 0.0F;
    opened.m_startClock = 0;
    opened.m_fade = {};
    ++opened.m_uses;
    ++m_waiting;
    *channel = &opened;
    return FMOD_OK;
}

FMOD_RESULT ChannelPool::mix(float *left, float *right, std::size_t frames)
{
    provideDue(frames);
    const std::uint64_t end = clock() + frames;
    m_supply.makeUpTo(end);
    m_supply.ask(end + FileAhead);
    const FMOD_RESULT result = m_supply.settle();
    m_cache.settle();
    m_bank.mixer().mixAfterAll(left, right, frames);
    collectEnded();
    return result;
}

FMOD_RESULT ChannelPool::update()
{
    collectEnded();
    provideReady();
    m_supply.ask(clock() + LiveAhead);
    const FMOD_RESULT result = m_supply.settle();
    m_cache.settle();
    m_bank.mixer().flush();
    return result;
}

void ChannelPool::provideDue(std::size_t frames)
{
    dropStopped();
    const std::uint64_t end = clock() + frames;
    const auto due = std::partition(m_awaited.begin(), m_awaited.end(), [end](const Awaited &a) {
        return a.channel->m_startClock >= end;
    });
    // First what no thread has come to yet: the others finish theirs meanwhile.
    for (auto it = due; it != m_awaited.end(); ++it)
        it->channel->m_prepared->run(Preparation::HeadFrames);
    for (auto it = due; it != m_awaited.end(); ++it)
        it->channel->m_prepared->makeUpTo(Preparation::HeadFrames);
    provideFrom(due);
}

void ChannelPool::provideReady()
{
    dropStopped();
    provideFrom(std::partition(m_awaited.begin(), m_awaited.end(), [](const Awaited &a) {
        return !a.channel->m_prepared->sample().has(Preparation::HeadFrames);
    }));
}

void ChannelPool::provideFrom(std::vector<Awaited>::iterator first)
{
    std::for_each(first, m_awaited.end(), [this](const Awaited &a) { provide(*a.channel); });
    m_awaited.erase(first, m_awaited.end());
}

void ChannelPool::dropStopped()
{
    m_awaited.erase(std::remove_if(m_awaited.begin(), m_awaited.end(), isStopped), m_awaited.end());
}

bool ChannelPool::isStopped(const Awaited &awaited)
{
    return awaited.channel->m_uses != awaited.uses || awaited.channel->m_prepared == nullptr;
}

void ChannelPool::provide(BuiltinChannel &channel)
{
    const SampleCache::Sample prepared = std::move(channel.m_prepared);
    m_bank.provide(channel.m_slot, VoiceBank::Sample(prepared, &prepared->sample()));
    const std::uint64_t begin = std::max(channel.m_startClock, clock());
    m_supply.add(channel.m_slot, channel.m_sound.samples, prepared, begin);
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
    channel.m_sound = {};
    channel.m_prepared.reset();
    m_free.push_back(&channel);
}

void ChannelPool::collectEnded()
{
    for (const VoiceBank::Slot slot : m_bank.collectEnded()) {
        m_supply.remove(slot);
        BuiltinChannel *const channel = std::exchange(m_bySlot[slot], nullptr);
        if (channel != nullptr)
            endBySelf(*channel);
    }
}

void ChannelPool::endBySelf(BuiltinChannel &channel)
{
    channel.m_state = BuiltinChannel::State::Ended;
    channel.m_sound = {};
    m_ended.emplace_back(&channel, channel.m_uses);
    if (m_ended.size() <= MaxVoices)
        return;
    const auto [oldest, uses] = m_ended.front();
    m_ended.pop_front();
    if (oldest->m_state == BuiltinChannel::State::Ended && oldest->m_uses == uses)
        recycle(*oldest);
}

void PlannedFade::plan(FMOD::Channel &channel, std::uint64_t clock, std::uint64_t frames)
{
    if (auto *const builtin = dynamic_cast<BuiltinChannel *>(&channel))
        builtin->planFade(clock, frames);
}
