#include "Sound/BuiltinSystem.h"

#include "Sound/ChannelPool.h"
#include "Sound/Decoder.h"
#include "Sound/LiveAhead.h"
#include "Sound/LiveMix.h"
#include "Sound/LiveStatus.h"
#include "Sound/ReplacingFile.h"
#include "Sound/WaveHeader.h"
#include "Sound/WaveOutput.h"
#include "Sound/WaveWriter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <new>
#include <system_error>
#include <unordered_map>

#include <unistd.h>

namespace {

constexpr std::size_t BlockFrames = 1024;
constexpr std::size_t SmallestCache = std::size_t{256} * 1024 * 1024;
constexpr std::size_t LargestCache = std::size_t{1024} * 1024 * 1024;
constexpr FMOD_MODE KnownModes = FMOD_2D | FMOD_SOFTWARE | FMOD_CREATESAMPLE | FMOD_OPENMEMORY;

/// An eighth of the memory. With hundreds of different notes at a time a small cache would drop
/// each shortly before it comes again.
std::size_t cacheBytes()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageBytes = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageBytes <= 0)
        return SmallestCache;
    const std::size_t share =
        static_cast<std::size_t>(pages) / 8 * static_cast<std::size_t>(pageBytes);
    return std::clamp(share, SmallestCache, LargestCache);
}

class BuiltinSystem;

class BuiltinSound final : public FMOD::Sound {
public:
    BuiltinSound(BuiltinSystem &system, ChannelSound sound)
        : m_system(system)
        , m_sound(std::move(sound))
    {
    }

    FMOD_RESULT release() override;
    const ChannelSound &sound() const { return m_sound; }

private:
    BuiltinSystem &m_system;
    ChannelSound m_sound;
};

class BuiltinChannelGroup final : public FMOD::ChannelGroup {
public:
    explicit BuiltinChannelGroup(BuiltinSystem &system)
        : m_system(system)
    {
    }

    FMOD_RESULT release() override;

private:
    BuiltinSystem &m_system;
};

class BuiltinSystem final : public FMOD::System {
public:
    BuiltinSystem(unsigned threads, AudioOutputFactory outputs);

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

    void releaseSound(BuiltinSound &sound);
    void releaseGroup(BuiltinChannelGroup &group);

    std::optional<WaveOutput::Report> report() const;
    bool abandon();
    /// From errno; 0 while nothing went wrong or the reason is not known.
    int outputError() const { return m_outputError; }

    bool isLive() const { return m_liveOutput != nullptr; }
    void prepareAhead(const FMOD::Sound &sound, double pitch);
    std::string liveProblem() const;
    std::uint64_t lateStarts() const;
    std::uint64_t missedFrames() const;

private:
    bool isInitialised() const { return m_channels != nullptr; }
    FMOD_RESULT initOutput(void *extraDriverData);
    FMOD_RESULT openWriter(const char *fileName);
    FMOD_RESULT startLive();
    FMOD_RESULT writeBlock();
    FMOD_RESULT finish();
    FMOD_RESULT addSound(const char *nameOrData, FMOD_MODE mode, const FMOD_CREATESOUNDEXINFO *info,
                         FMOD::Sound **sound);

    AudioOutputFactory m_outputs;
    FMOD_OUTPUTTYPE m_output = FMOD_OUTPUTTYPE_AUTODETECT;
    int m_softwareChannels = 0;
    PreparePool m_pool; // outlives all that is prepared
    SampleCache m_cache;
    std::unique_ptr<ChannelPool> m_channels; // from init() on
    std::unique_ptr<WaveWriter> m_writer;    // from init() on, for a file
    bool m_abandoned = false;
    int m_outputError = 0;
    std::string m_startProblem; // of a live output that did not start
    std::array<float, BlockFrames> m_left{};
    std::array<float, BlockFrames> m_right{};
    // Looked up by address: a pointer that is dead or another system's is noticed.
    std::unordered_map<const FMOD::Sound *, std::unique_ptr<BuiltinSound>> m_sounds;
    std::unordered_map<const FMOD::ChannelGroup *, std::unique_ptr<BuiltinChannelGroup>> m_groups;
    // From init() on, for a live system. The output goes first, and with it the thread that mixes.
    std::unique_ptr<LiveMix> m_liveMix;
    std::unique_ptr<AudioOutput> m_liveOutput;
};

FMOD_RESULT BuiltinSound::release()
{
    m_system.releaseSound(*this);
    return FMOD_OK;
}

FMOD_RESULT BuiltinChannelGroup::release()
{
    m_system.releaseGroup(*this);
    return FMOD_OK;
}

BuiltinSystem::BuiltinSystem(unsigned threads, AudioOutputFactory outputs)
    : m_outputs(std::move(outputs))
    , m_pool(threads)
    , m_cache(WaveHeader::SampleRate, cacheBytes(), m_pool)
{
}

FMOD_RESULT BuiltinSystem::release()
{
    if (isLive())
        m_liveOutput->stop();
    const FMOD_RESULT result = finish();
    delete this; // made by createBuiltinSystem(), which hands the ownership to the caller
    return result;
}

FMOD_RESULT BuiltinSystem::finish()
{
    if (m_writer == nullptr || m_abandoned)
        return FMOD_OK;
    return m_writer->finish() ? FMOD_OK : FMOD_ERR_FILE_BAD;
}

FMOD_RESULT BuiltinSystem::setOutput(FMOD_OUTPUTTYPE output)
{
    if (isInitialised())
        return FMOD_ERR_INITIALIZED;
    m_output = output;
    return FMOD_OK;
}

FMOD_RESULT BuiltinSystem::setSoftwareChannels(int channels)
{
    if (isInitialised())
        return FMOD_ERR_INITIALIZED;
    if (channels < 0)
        return FMOD_ERR_INVALID_PARAM;
    m_softwareChannels = channels;
    return FMOD_OK;
}

FMOD_RESULT BuiltinSystem::getSoftwareFormat(int *sampleRate, FMOD_SOUND_FORMAT *format,
                                             int *outputChannels, int *maxInputChannels,
                                             FMOD_DSP_RESAMPLER *resampler, int *bits)
{
    if (sampleRate != nullptr)
        *sampleRate = WaveHeader::SampleRate;
    if (format != nullptr)
        *format = FMOD_SOUND_FORMAT_NONE;
    if (outputChannels != nullptr)
        *outputChannels = 2;
    if (maxInputChannels != nullptr)
        *maxInputChannels = 2;
    if (resampler != nullptr)
        *resampler = FMOD_DSP_RESAMPLER_NOINTERP;
    if (bits != nullptr)
        *bits = 16;
    return FMOD_OK;
}

FMOD_RESULT BuiltinSystem::init(int maxChannels, FMOD_INITFLAGS, void *extraDriverData)
{
    if (isInitialised())
        return FMOD_ERR_INITIALIZED;
    if (maxChannels < 0)
        return FMOD_ERR_INVALID_PARAM;
    try {
        return initOutput(extraDriverData);
    } catch (const std::bad_alloc &) {
        return FMOD_ERR_MEMORY;
    }
}

FMOD_RESULT BuiltinSystem::initOutput(void *extraDriverData)
{
    if (m_output == FMOD_OUTPUTTYPE_AUTODETECT)
        return startLive();
    if (m_output != FMOD_OUTPUTTYPE_WAVWRITER_NRT)
        return FMOD_ERR_OUTPUT_INIT;
    if (extraDriverData == nullptr)
        return FMOD_ERR_INVALID_PARAM;
    return openWriter(static_cast<const char *>(extraDriverData));
}

FMOD_RESULT BuiltinSystem::openWriter(const char *fileName)
{
    errno = 0;
    auto file = ReplacingFile::open(fileName);
    auto writer = file != nullptr ? std::make_unique<WaveWriter>(std::move(file)) : nullptr;
    if (writer == nullptr || !writer->begin()) {
        m_outputError = errno;
        return FMOD_ERR_OUTPUT_INIT;
    }
    m_channels = std::make_unique<ChannelPool>(m_cache);
    m_writer = std::move(writer);
    return FMOD_OK;
}

FMOD_RESULT BuiltinSystem::startLive()
{
    auto channels = std::make_unique<ChannelPool>(m_cache);
    auto mix = std::make_unique<LiveMix>(channels->mixer());
    auto output = m_outputs();
    if (!output->start(*mix)) {
        m_startProblem = output->problem();
        return FMOD_ERR_OUTPUT_INIT;
    }
    m_pool.setMaxQueued(PreparePool::MaxQueuedLive);
    m_channels = std::move(channels);
    m_liveMix = std::move(mix);
    m_liveOutput = std::move(output);
    return FMOD_OK;
}

FMOD_RESULT BuiltinSystem::update()
{
    if (!isInitialised())
        return FMOD_ERR_INITIALIZATION;
    if (!isLive())
        return writeBlock();
    m_pool.standIn();
    return m_channels->update();
}

FMOD_RESULT BuiltinSystem::writeBlock()
{
    if (m_writer->hasFailed())
        return FMOD_ERR_FILE_BAD;
    const FMOD_RESULT result = m_channels->mix(m_left.data(), m_right.data(), BlockFrames);
    errno = 0;
    if (m_writer->write(m_left.data(), m_right.data(), BlockFrames))
        return result;
    m_outputError = errno;
    return FMOD_ERR_FILE_BAD;
}

/// Of a file the frames written: a block that was mixed but could not be written does not count.
FMOD_RESULT BuiltinSystem::getDSPClock(unsigned int *hi, unsigned int *lo)
{
    if (!isInitialised())
        return FMOD_ERR_INITIALIZATION;
    const std::uint64_t clock = isLive() ? m_channels->clock() : m_writer->report().frames;
    if (hi != nullptr)
        *hi = static_cast<unsigned int>(clock >> 32);
    if (lo != nullptr)
        *lo = static_cast<unsigned int>(clock);
    return hi == nullptr && lo == nullptr ? FMOD_ERR_INVALID_PARAM : FMOD_OK;
}

FMOD_RESULT BuiltinSystem::createSound(const char *nameOrData, FMOD_MODE mode,
                                       FMOD_CREATESOUNDEXINFO *info, FMOD::Sound **sound)
{
    if (sound == nullptr)
        return FMOD_ERR_INVALID_PARAM;
    *sound = nullptr;
    if (!isInitialised())
        return FMOD_ERR_INITIALIZATION;
    const bool isBadInfo = info != nullptr && info->cbsize != sizeof(FMOD_CREATESOUNDEXINFO);
    const bool lacksInfo = info == nullptr && (mode & FMOD_OPENMEMORY) != 0;
    if (nameOrData == nullptr || isBadInfo || lacksInfo || (mode & ~KnownModes) != 0)
        return FMOD_ERR_INVALID_PARAM;
    try {
        return addSound(nameOrData, mode, info, sound);
    } catch (const std::bad_alloc &) {
        return FMOD_ERR_MEMORY;
    }
}

FMOD_RESULT BuiltinSystem::addSound(const char *nameOrData, FMOD_MODE mode,
                                    const FMOD_CREATESOUNDEXINFO *info, FMOD::Sound **sound)
{
    const auto file = std::make_shared<SoundFile>();
    const FMOD_RESULT result = (mode & FMOD_OPENMEMORY) != 0
        ? file->openMemory(nameOrData, info->length)
        : file->openFile(nameOrData);
    if (result != FMOD_OK)
        return result;
    ChannelSound heard = {file->rate(), file->isStereo(), nullptr};
    heard.samples = m_pool.add(
        [file](AudioSample &sample, std::size_t frames) { return file->decode(sample, frames); });
    auto made = std::make_unique<BuiltinSound>(*this, std::move(heard));
    FMOD::Sound *const address = made.get();
    m_sounds.emplace(address, std::move(made));
    *sound = address;
    return FMOD_OK;
}

FMOD_RESULT BuiltinSystem::createChannelGroup(const char *name, FMOD::ChannelGroup **group)
{
    if (group == nullptr)
        return FMOD_ERR_INVALID_PARAM;
    *group = nullptr;
    if (!isInitialised())
        return FMOD_ERR_INITIALIZATION;
    if (name == nullptr)
        return FMOD_ERR_INVALID_PARAM;
    auto made = std::make_unique<BuiltinChannelGroup>(*this);
    FMOD::ChannelGroup *const address = made.get();
    m_groups.emplace(address, std::move(made));
    *group = address;
    return FMOD_OK;
}

FMOD_RESULT BuiltinSystem::playSound(FMOD_CHANNELINDEX channelId, FMOD::Sound *sound, bool paused,
                                     FMOD::Channel **channel)
{
    if (channel == nullptr)
        return FMOD_ERR_INVALID_PARAM;
    *channel = nullptr;
    if (!isInitialised())
        return FMOD_ERR_INITIALIZATION;
    if (sound == nullptr || channelId != FMOD_CHANNEL_FREE)
        return FMOD_ERR_INVALID_PARAM;
    const auto found = m_sounds.find(sound);
    if (found == m_sounds.end())
        return FMOD_ERR_INVALID_HANDLE;
    const FMOD_RESULT result = m_channels->open(found->second->sound(), channel);
    return result == FMOD_OK && !paused ? (*channel)->setPaused(false) : result;
}

/// What sounds of it goes on: the voices hold the sample.
void BuiltinSystem::releaseSound(BuiltinSound &sound)
{
    m_cache.forget(sound.sound().samples);
    m_sounds.erase(&sound);
}

void BuiltinSystem::releaseGroup(BuiltinChannelGroup &group)
{
    m_groups.erase(&group);
}

std::optional<WaveOutput::Report> BuiltinSystem::report() const
{
    if (m_writer == nullptr)
        return std::nullopt;
    return m_writer->report();
}

bool BuiltinSystem::abandon()
{
    m_abandoned = m_writer != nullptr;
    return m_abandoned;
}

void BuiltinSystem::prepareAhead(const FMOD::Sound &sound, double pitch)
{
    const auto found = m_sounds.find(&sound);
    if (!isLive() || found == m_sounds.end())
        return;
    const ChannelSound &heard = found->second->sound();
    const auto frequency = static_cast<float>(double{static_cast<float>(heard.rate)} * pitch);
    SampleCache::Sample prepared; // the cache keeps it
    try {
        m_cache.prepare(heard.samples, double{frequency}, prepared);
    } catch (const std::bad_alloc &) {
        return; // the note will tell
    }
}

std::string BuiltinSystem::liveProblem() const
{
    return isLive() ? m_liveOutput->problem() : m_startProblem;
}

std::uint64_t BuiltinSystem::lateStarts() const
{
    return isLive() ? m_channels->lateStarts() : 0;
}

std::uint64_t BuiltinSystem::missedFrames() const
{
    return isLive() ? m_channels->missedFrames() : 0;
}

} // namespace

FMOD_RESULT createBuiltinSystem(FMOD::System **system, unsigned threads, AudioOutputFactory outputs)
{
    if (system == nullptr)
        return FMOD_ERR_INVALID_PARAM;
    *system = new (std::nothrow) BuiltinSystem(threads, std::move(outputs));
    return *system != nullptr ? FMOD_OK : FMOD_ERR_MEMORY;
}

std::optional<WaveOutput::Report> WaveOutput::report(FMOD::System &system)
{
    const auto *const builtin = dynamic_cast<const BuiltinSystem *>(&system);
    return builtin != nullptr ? builtin->report() : std::nullopt;
}

bool WaveOutput::abandon(FMOD::System &system)
{
    auto *const builtin = dynamic_cast<BuiltinSystem *>(&system);
    return builtin != nullptr && builtin->abandon();
}

std::string WaveOutput::failureReason(FMOD::System &system)
{
    const auto *const builtin = dynamic_cast<const BuiltinSystem *>(&system);
    if (builtin == nullptr || builtin->outputError() == 0)
        return {};
    return std::generic_category().message(builtin->outputError());
}

std::string LiveStatus::problem(FMOD::System &system)
{
    const auto *const builtin = dynamic_cast<const BuiltinSystem *>(&system);
    return builtin != nullptr ? builtin->liveProblem() : std::string();
}

std::uint64_t LiveStatus::lateStarts(FMOD::System &system)
{
    const auto *const builtin = dynamic_cast<const BuiltinSystem *>(&system);
    return builtin != nullptr ? builtin->lateStarts() : 0;
}

std::uint64_t LiveStatus::missedFrames(FMOD::System &system)
{
    const auto *const builtin = dynamic_cast<const BuiltinSystem *>(&system);
    return builtin != nullptr ? builtin->missedFrames() : 0;
}

bool LiveAhead::isPossible(FMOD::System &system)
{
    const auto *const builtin = dynamic_cast<const BuiltinSystem *>(&system);
    return builtin != nullptr && builtin->isLive();
}

void LiveAhead::prepare(FMOD::System &system, const FMOD::Sound &sound, double pitch)
{
    if (auto *const builtin = dynamic_cast<BuiltinSystem *>(&system))
        builtin->prepareAhead(sound, pitch);
}
