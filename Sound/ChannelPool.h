#pragma once

#include "Sound/Fmod.h"
#include "Sound/SampleCache.h"
#include "Sound/SampleSupply.h"
#include "Sound/VoiceBank.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

class ChannelPool;

/// A sound as its channels need it.
struct ChannelSound {
    double rate = 0.0; ///< frames per second
    bool isStereo = false;
    SampleCache::Sample samples;
};

/// A channel of the built-in engine. It waits, paused, while it is set up; setPaused(false)
/// has the sound prepared for its rate and hands it to the mixer, from where only volume, pan and
/// stop() reach it, and volume and pan only until the fade that planFade() announced. When its
/// sound has ended by itself, they are taken in silence: a note may well outlast its sample, and
/// its fade is no error. After stop() every call answers FMOD_ERR_INVALID_HANDLE until the object
/// serves another sound.
class BuiltinChannel final : public FMOD::Channel {
public:
    explicit BuiltinChannel(ChannelPool &pool)
        : m_pool(pool)
    {
    }

    FMOD_RESULT stop() override;
    /// True is answered with FMOD_ERR_INVALID_PARAM once the channel sounds.
    FMOD_RESULT setPaused(bool paused) override;
    /// Clamped to 0..1.
    FMOD_RESULT setVolume(float volume) override;
    /// FMOD_ERR_INVALID_PARAM outside 1/64 to 64 times the output's rate, or once the channel
    /// sounds.
    FMOD_RESULT setFrequency(float frequency) override;
    FMOD_RESULT getFrequency(float *frequency) override;
    /// Clamped to -1..1; constant power for mono, balance for stereo.
    FMOD_RESULT setPan(float pan) override;
    FMOD_RESULT setDelay(FMOD_DELAYTYPE type, unsigned int delayHi, unsigned int delayLo) override;
    /// Groups have no settings of their own here.
    FMOD_RESULT setChannelGroup(FMOD::ChannelGroup *group) override;

    /// See PlannedFade. Changes nothing once the channel sounds.
    void planFade(std::uint64_t clock, std::uint64_t frames);

private:
    friend class ChannelPool;

    enum class State { Free, Waiting, Playing, Ended };

    bool isOpen() const { return m_state != State::Free; }
    bool isSetUp() const { return m_state != State::Waiting; }
    FMOD_RESULT play();
    void applyGain();
    Mixer::Gain gain() const;

    ChannelPool &m_pool;
    State m_state = State::Free;
    std::uint64_t m_uses = 0; // tells one life of the object from the next
    ChannelSound m_sound;
    SampleCache::Sample m_prepared; // while the voice waits for its head
    float m_frequency = 0.0F;
    float m_volume = 1.0F;
    float m_pan = 0.0F;
    std::uint64_t m_startClock = 0;
    VoiceBank::Fade m_fade;
    VoiceBank::Slot m_slot = 0;
};

/// Owns the channels of one system and connects them with the voices of its mixer.
///
/// A channel's memory is never given back before the pool is, so that a caller may use a channel
/// whose sound has ended. After stop() the object serves another playSound(); a channel that
/// ended without it (its caller may have dropped it) does so after as many others have ended
/// as there can be voices.
class ChannelPool {
public:
    /// More than any song needs; it only bounds the memory.
    static constexpr std::size_t MaxVoices = 65536;

    explicit ChannelPool(SampleCache &cache);

    /// A paused channel, or FMOD_ERR_CHANNEL_ALLOC when MaxVoices wait or sound already.
    FMOD_RESULT open(const ChannelSound &sound, FMOD::Channel **channel);

    /// Mixes the next frames and learns which channels have ended. Before that it waits for what
    /// is heard in these frames. Answers the error of a sample that could not be made, once; what
    /// plays it is silent, and all else is mixed as ever.
    FMOD_RESULT mix(float *left, float *right, std::size_t frames);

    /// For a mixer that another thread runs: hands over the samples whose heads have become ready,
    /// asks for what will be heard of the others soon, and learns which channels have ended. Makes
    /// no sample and waits for none; a voice whose head comes after its start begins when it
    /// comes. Answers as mix() does.
    FMOD_RESULT update();

    /// What another thread may run; then update() takes the place of mix().
    RemoteMixer &mixer() { return m_bank.mixer(); }

    std::uint64_t clock() const { return m_bank.mixer().clock(); }
    std::uint64_t lateStarts() const { return m_bank.mixer().lateStarts(); }
    std::uint64_t missedFrames() const { return m_bank.mixer().missedFrames(); }

private:
    friend class BuiltinChannel;

    struct Awaited {
        BuiltinChannel *channel;
        std::uint64_t uses; // as `m_uses` was: a stopped channel may serve another sound
    };

    BuiltinChannel &freeChannel();
    void provideDue(std::size_t frames);
    void provideReady();
    void provideFrom(std::vector<Awaited>::iterator first);
    void dropStopped();
    static bool isStopped(const Awaited &awaited);
    void provide(BuiltinChannel &channel);
    void recycle(BuiltinChannel &channel);
    void collectEnded();
    void endBySelf(BuiltinChannel &channel);

    SampleCache &m_cache;
    VoiceBank m_bank;
    SampleSupply m_supply;
    std::deque<BuiltinChannel> m_channels; // addresses stay
    std::vector<BuiltinChannel *> m_free;
    std::vector<BuiltinChannel *> m_bySlot; // null where a stopped voice still fades
    std::deque<std::pair<BuiltinChannel *, std::uint64_t>> m_ended; // with `m_uses` of then
    std::vector<Awaited> m_awaited; // voices without samples, and left-overs of stopped ones
    std::size_t m_waiting = 0;
};
