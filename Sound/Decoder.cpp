#include "Sound/Decoder.h"

#include <sndfile.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <optional>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int MinRate = 1000;
constexpr int MaxRate = 768000;
constexpr int MaxChannels = 1024;
constexpr sf_count_t ChunkSamples = 16384;
constexpr sf_count_t MaxReserved = 1 << 20;

struct CloseSoundFile {
    void operator()(SNDFILE *file) const { sf_close(file); }
};
using Handle = std::unique_ptr<SNDFILE, CloseSoundFile>;

/// A descriptor of our own instead of sf_open(): that one reads standard input for the name "-"
/// and would wait for ever at a pipe.
class FileDescriptor {
public:
    explicit FileDescriptor(const char *fileName)
        : m_fd(::open(fileName, O_RDONLY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~FileDescriptor()
    {
        if (isOpen())
            ::close(m_fd);
    }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    bool isOpen() const { return m_fd >= 0; }
    int number() const { return m_fd; }

    bool isRegularFile() const
    {
        struct stat status = {};
        return ::fstat(m_fd, &status) == 0 && S_ISREG(status.st_mode);
    }

private:
    int m_fd;
};

struct MemoryFile {
    const char *data;
    sf_count_t size;
    sf_count_t position;
};

MemoryFile &memoryFile(void *user)
{
    return *static_cast<MemoryFile *>(user);
}

sf_count_t memoryLength(void *user)
{
    return memoryFile(user).size;
}

/// Positions outside the data are refused: some formats compute them from damaged headers.
sf_count_t memorySeek(sf_count_t offset, int whence, void *user)
{
    MemoryFile &file = memoryFile(user);
    const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.position : file.size;
    if (offset < -base || offset > file.size - base)
        return -1;
    file.position = base + offset;
    return file.position;
}

sf_count_t memoryRead(void *target, sf_count_t count, void *user)
{
    MemoryFile &file = memoryFile(user);
    const sf_count_t available = std::clamp<sf_count_t>(count, 0, file.size - file.position);
    if (available > 0)
        std::memcpy(target, file.data + file.position, static_cast<std::size_t>(available));
    file.position += available;
    return available;
}

sf_count_t memoryWrite(const void *, sf_count_t, void *)
{
    return 0;
}

sf_count_t memoryTell(void *user)
{
    return memoryFile(user).position;
}

/// For one side of the result, how much of each of the file's channels goes there.
using Gains = std::vector<float>;

/// Channels in the order of WAV files: left, right, centre, bass (left out), then pairs from
/// further behind or aside. Four channels are two pairs.
float downmixGain(int channel, int channels, int side)
{
    constexpr float HalfPower = 0.70710678F;
    const bool hasCentre = channels != 4;
    if (channel < 2)
        return channel == side ? 1.0F : 0.0F;
    if (hasCentre && channel == 2)
        return HalfPower;
    if (hasCentre && channel == 3)
        return 0.0F;
    return channel % 2 == side ? HalfPower : 0.0F;
}

Gains downmixGains(int channels, int side)
{
    Gains gains;
    for (int channel = 0; channel < channels; ++channel)
        gains.push_back(downmixGain(channel, channels, side));
    const float sum = std::accumulate(gains.begin(), gains.end(), 0.0F);
    for (float &gain : gains)
        gain /= sum;
    return gains;
}

void appendSide(const std::vector<float> &chunk, std::size_t frames, const Gains &gains,
                std::vector<float> &side)
{
    const std::size_t channels = gains.size();
    const std::size_t start = side.size();
    side.resize(start + frames);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const float gain = gains[channel];
        if (gain == 0.0F)
            continue;
        for (std::size_t frame = 0; frame < frames; ++frame)
            side[start + frame] += chunk[frame * channels + channel] * gain;
    }
}

/// As far as the announced length can be believed.
void reserveFrames(const SF_INFO &info, AudioSample &sample)
{
    const auto frames =
        static_cast<std::size_t>(std::clamp<sf_count_t>(info.frames, 0, MaxReserved));
    sample.left.reserve(frames);
    if (info.channels > 1)
        sample.right.reserve(frames);
}

FMOD_RESULT readFrames(SNDFILE *file, const SF_INFO &info, AudioSample &sample)
{
    const int channels = info.channels;
    const bool stereo = channels > 1;
    const Gains leftGains = stereo ? downmixGains(channels, 0) : Gains{1.0F};
    const Gains rightGains = stereo ? downmixGains(channels, 1) : Gains();
    const std::size_t maxFrames = Decoder::MaxSamples / (stereo ? 2 : 1);
    const sf_count_t chunkFrames = ChunkSamples / channels;
    std::vector<float> chunk(static_cast<std::size_t>(chunkFrames * channels));
    reserveFrames(info, sample);
    for (;;) {
        const sf_count_t read = sf_readf_float(file, chunk.data(), chunkFrames);
        if (read <= 0)
            break;
        const std::size_t frames = static_cast<std::size_t>(std::min(read, chunkFrames));
        if (frames > maxFrames - sample.frames())
            return FMOD_ERR_MEMORY;
        const auto end = chunk.begin() + static_cast<std::ptrdiff_t>(frames) * channels;
        std::transform(chunk.begin(), end, chunk.begin(), cleanSample);
        appendSide(chunk, frames, leftGains, sample.left);
        if (stereo)
            appendSide(chunk, frames, rightGains, sample.right);
    }
    return sample.frames() == 0 && sf_error(file) != SF_ERR_NO_ERROR ? FMOD_ERR_FILE_BAD : FMOD_OK;
}

bool isKnown(const SF_INFO &info)
{
    return info.channels >= 1 && info.channels <= MaxChannels && info.samplerate >= MinRate
        && info.samplerate <= MaxRate;
}

} // namespace

struct SoundFile::Source {
    std::optional<FileDescriptor> descriptor;
    std::vector<char> bytes;
    MemoryFile memory = {};
    SF_INFO info = {};
    Handle handle; // the first to go: it reads from the others

    FMOD_RESULT take(SNDFILE *opened)
    {
        handle.reset(opened);
        return opened != nullptr && isKnown(info) ? FMOD_OK : FMOD_ERR_FORMAT;
    }
};

SoundFile::SoundFile() = default;
SoundFile::~SoundFile() = default;

FMOD_RESULT SoundFile::openFile(const char *fileName)
{
    m_source = std::make_unique<Source>();
    const FileDescriptor &descriptor = m_source->descriptor.emplace(fileName);
    if (!descriptor.isOpen())
        return FMOD_ERR_FILE_NOTFOUND;
    if (!descriptor.isRegularFile())
        return FMOD_ERR_FILE_BAD;
    return m_source->take(sf_open_fd(descriptor.number(), SFM_READ, &m_source->info, SF_FALSE));
}

FMOD_RESULT SoundFile::openMemory(const void *data, std::size_t size)
{
    m_source = std::make_unique<Source>();
    const char *const bytes = static_cast<const char *>(data);
    m_source->bytes.assign(bytes, bytes + size);
    m_source->memory = {m_source->bytes.data(), static_cast<sf_count_t>(size), 0};
    SF_VIRTUAL_IO access = {memoryLength, memorySeek, memoryRead, memoryWrite, memoryTell};
    return m_source->take(sf_open_virtual(&access, SFM_READ, &m_source->info, &m_source->memory));
}

double SoundFile::rate() const
{
    return m_source->info.samplerate;
}

bool SoundFile::isStereo() const
{
    return m_source->info.channels > 1;
}

FMOD_RESULT SoundFile::decode(AudioSample &sample)
{
    const std::unique_ptr<Source> source = std::move(m_source);
    AudioSample result;
    result.rate = source->info.samplerate;
    const FMOD_RESULT outcome = readFrames(source->handle.get(), source->info, result);
    if (outcome == FMOD_OK)
        sample = std::move(result);
    return outcome;
}
