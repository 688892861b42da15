#pragma once

#include "Sound/FmodEntryPoints.h"

#include <cstddef>
#include <list>
#include <memory>
#include <unordered_map>

/// A handle of the installed library that lives until its release() or its system's.
template <typename Interface, typename Raw> class InstalledHandle final : public Interface {
public:
    using Release = FMOD_RESULT (*)(Raw *);
    /// The handles of one kind that a system has given out and that are still in use.
    using Owner = std::unordered_map<const void *, std::unique_ptr<InstalledHandle>>;

    /// A pointer to the new handle, kept in `owner`.
    static Interface *make(Owner &owner, Raw *raw, Release releaseEntry)
    {
        auto handle = std::make_unique<InstalledHandle>(owner, raw, releaseEntry);
        Interface *const result = handle.get();
        owner.emplace(handle.get(), std::move(handle));
        return result;
    }
    /// Null for null.
    static Raw *rawOf(Interface *handle)
    {
        return handle ? static_cast<InstalledHandle *>(handle)->m_raw : nullptr;
    }

    InstalledHandle(Owner &owner, Raw *raw, Release releaseEntry)
        : m_owner(owner)
        , m_raw(raw)
        , m_release(releaseEntry)
    {
    }

    /// The handle stays in use when the library refuses.
    FMOD_RESULT release() override
    {
        const FMOD_RESULT result = m_release(m_raw);
        if (result == FMOD_OK)
            m_owner.erase(this);
        return result;
    }

private:
    Owner &m_owner;
    Raw *m_raw;
    Release m_release;
};

using InstalledSound = InstalledHandle<FMOD::Sound, RawSound>;
using InstalledChannelGroup = InstalledHandle<FMOD::ChannelGroup, RawChannelGroup>;

class InstalledChannelPool;

class InstalledChannel final : public FMOD::Channel {
public:
    InstalledChannel(const FmodEntryPoints &entryPoints, InstalledChannelPool &pool)
        : m_entryPoints(entryPoints)
        , m_pool(pool)
    {
    }

    FMOD_RESULT stop() override;
    FMOD_RESULT setPaused(bool paused) override;
    FMOD_RESULT setVolume(float volume) override;
    FMOD_RESULT setFrequency(float frequency) override;
    FMOD_RESULT getFrequency(float *frequency) override;
    FMOD_RESULT setPan(float pan) override;
    FMOD_RESULT setDelay(FMOD_DELAYTYPE type, unsigned int delayHi, unsigned int delayLo) override;
    FMOD_RESULT setChannelGroup(FMOD::ChannelGroup *group) override;

private:
    friend class InstalledChannelPool;

    template <typename... Parameters, typename... Arguments>
    FMOD_RESULT call(FMOD_RESULT (*entryPoint)(RawChannel *, Parameters...),
                     Arguments... arguments) const
    {
        return m_raw ? entryPoint(m_raw, arguments...) : FMOD_ERR_INVALID_HANDLE;
    }

    const FmodEntryPoints &m_entryPoints;
    InstalledChannelPool &m_pool;
    RawChannel *m_raw = nullptr; ///< null while nothing plays on it
};

/// The channels of a system. They are used again after stop(), and one raw handle always means
/// one channel, so hours of play need no more of them than sounded at once.
///
/// Nobody says when a sound that is never stopped has ended. Its channel keeps its meaning until
/// `maximumInUse` channels are in use; from then on the one started longest ago is taken for the
/// next sound, so that memory stays bounded.
class InstalledChannelPool {
public:
    static constexpr std::size_t maximumInUse = 65536;

    explicit InstalledChannelPool(const FmodEntryPoints &entryPoints)
        : m_entryPoints(entryPoints)
    {
    }
    InstalledChannelPool(const InstalledChannelPool &) = delete;
    InstalledChannelPool &operator=(const InstalledChannelPool &) = delete;

    InstalledChannel *channelOf(RawChannel *raw);
    void giveBack(InstalledChannel &channel);

private:
    using Channels = std::list<InstalledChannel>;

    Channels::iterator freeChannel();
    void takeOutOfUse(Channels::iterator channel);

    const FmodEntryPoints &m_entryPoints;
    Channels m_inUse; ///< the one started longest ago first
    Channels m_free;
    std::unordered_map<const RawChannel *, Channels::iterator> m_byHandle;
};

/// A system of the installed library. It ends its own life in release(); sounds, groups and
/// channels go with it. Like the interface, for one thread at a time.
class InstalledSystem final : public FMOD::System {
public:
    InstalledSystem(const FmodEntryPoints &entryPoints, RawSystem *raw);
    InstalledSystem(const InstalledSystem &) = delete;
    InstalledSystem &operator=(const InstalledSystem &) = delete;

    FMOD_RESULT release() override;
    FMOD_RESULT setOutput(FMOD_OUTPUTTYPE output) override;
    FMOD_RESULT setSoftwareChannels(int channels) override;
    FMOD_RESULT getSoftwareFormat(int *sampleRate, FMOD_SOUND_FORMAT *format, int *outputChannels,
                                  int *maxInputChannels, FMOD_DSP_RESAMPLER *resampler,
                                  int *bits) override;
    FMOD_RESULT init(int maxChannels, FMOD_INITFLAGS flags, void *extraDriverData) override;
    FMOD_RESULT update() override;
    FMOD_RESULT getDSPClock(unsigned int *hi, unsigned int *lo) override;
    FMOD_RESULT createSound(const char *nameOrData, FMOD_MODE mode, FMOD_CREATESOUNDEXINFO *info,
                            FMOD::Sound **sound) override;
    FMOD_RESULT createChannelGroup(const char *name, FMOD::ChannelGroup **group) override;
    FMOD_RESULT playSound(FMOD_CHANNELINDEX channelId, FMOD::Sound *sound, bool paused,
                          FMOD::Channel **channel) override;

private:
    const FmodEntryPoints m_entryPoints;
    RawSystem *m_raw;
    InstalledSound::Owner m_sounds;
    InstalledChannelGroup::Owner m_groups;
    InstalledChannelPool m_channels;
};
