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
constexpr sf_count_t ChunkSamples = 4096;
constexpr std::size_t MaxCopied = std::size_t{8} * 1024 * 1024;

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

    /// Nothing where it is no regular file.
    std::optional<std::size_t> size() const
    {
        struct stat status = {};
        if (::fstat(m_fd, &status) != 0 || !S_ISREG(status.st_mode))
            return std::nullopt;
        return static_cast<std::size_t>(status.st_size);
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

/// Adds the channels of interleaved frames up to one side.
void mixDown(const std::vector<float> &chunk, std::size_t frames, const Gains &gains,
             std::vector<float> &side)
{
    const std::size_t channels = gains.size();
    std::fill_n(side.begin(), frames, 0.0F);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const float gain = gains[channel];
        if (gain == 0.0F)
            continue;
        for (std::size_t frame = 0; frame < frames; ++frame)
            side[frame] += chunk[frame * channels + channel] * gain;
    }
}

bool isKnown(const SF_INFO &info)
{
    return info.channels >= 1 && info.channels <= MaxChannels && info.samplerate >= MinRate
        && info.samplerate <= MaxRate;
}

} // namespace

/// Reads a file chunk by chunk. The chunks are always the same ones, whatever is asked for.
struct SoundFile::Source {
    std::optional<FileDescriptor> descriptor;
    std::vector<char> bytes;
    MemoryFile memory = {};
    SF_INFO info = {};
    Handle handle; // the one before these to go: it reads from the others

    // Once it is decoded.
    sf_count_t chunkFrames = 0;
    std::vector<float> chunk;
    std::vector<float> left;
    std::vector<float> right;
    Gains leftGains;
    Gains rightGains;

    bool isStereo() const { return info.channels > 1; }
    std::size_t maxFrames() const { return Decoder::MaxSamples / (isStereo() ? 2 : 1); }
    bool isShownAtEnd() const;

    FMOD_RESULT take(SNDFILE *opened);
    FMOD_RESULT takeMemory();
    FMOD_RESULT copyFile(std::size_t size);
    void begin(AudioSample &sample);
    FMOD_RESULT readChunk(AudioSample &sample);
    void append(std::size_t frames, AudioSample &sample);
    FMOD_RESULT end(AudioSample &sample);
};

/// What is too long is silent as a whole, but the announced length alone does not make it so. And
/// files must not stay open for as long as their sounds are not heard to the end.
bool SoundFile::Source::isShownAtEnd() const
{
    return descriptor.has_value() || info.frames < 0
        || info.frames > static_cast<sf_count_t>(maxFrames());
}

FMOD_RESULT SoundFile::Source::take(SNDFILE *opened)
{
    handle.reset(opened);
    return opened != nullptr && isKnown(info) ? FMOD_OK : FMOD_ERR_FORMAT;
}

FMOD_RESULT SoundFile::Source::takeMemory()
{
    memory = {bytes.data(), static_cast<sf_count_t>(bytes.size()), 0};
    SF_VIRTUAL_IO access = {memoryLength, memorySeek, memoryRead, memoryWrite, memoryTell};
    return take(sf_open_virtual(&access, SFM_READ, &info, &memory));
}

/// In place of the descriptor.
FMOD_RESULT SoundFile::Source::copyFile(std::size_t size)
{
    bytes.resize(size);
    std::size_t copied = 0;
    while (copied < size) {
        const ssize_t count = ::read(descriptor->number(), bytes.data() + copied, size - copied);
        if (count < 0)
            return FMOD_ERR_FILE_BAD;
        if (count == 0)
            break;
        copied += static_cast<std::size_t>(count);
    }
    bytes.resize(copied);
    descriptor.reset();
    return FMOD_OK;
}

void SoundFile::Source::begin(AudioSample &sample)
{
    const auto limit = static_cast<sf_count_t>(maxFrames());
    sample.allocate(static_cast<std::size_t>(isShownAtEnd() ? limit : info.frames), isStereo());
    chunkFrames = ChunkSamples / info.channels;
    const auto count = static_cast<std::size_t>(chunkFrames);
    chunk.resize(count * static_cast<std::size_t>(info.channels));
    left.resize(count);
    right.resize(count);
    leftGains = isStereo() ? downmixGains(info.channels, 0) : Gains{1.0F};
    rightGains = isStereo() ? downmixGains(info.channels, 1) : Gains();
}

FMOD_RESULT SoundFile::Source::readChunk(AudioSample &sample)
{
    const sf_count_t read = sf_readf_float(handle.get(), chunk.data(), chunkFrames);
    if (read <= 0)
        return end(sample);
    const auto frames = static_cast<std::size_t>(std::min(read, chunkFrames));
    if (frames > maxFrames() - sample.appendedFrames())
        return FMOD_ERR_MEMORY;
    append(frames, sample);
    if (!isShownAtEnd())
        sample.publish();
    return FMOD_OK;
}

void SoundFile::Source::append(std::size_t frames, AudioSample &sample)
{
    if (info.channels > 2) // what is no number must not get into the sums
        std::transform(chunk.begin(), chunk.end(), chunk.begin(), cleanSample);
    mixDown(chunk, frames, leftGains, left);
    if (isStereo())
        mixDown(chunk, frames, rightGains, right);
    sample.append(left.data(), right.data(), frames);
}

FMOD_RESULT SoundFile::Source::end(AudioSample &sample)
{
    if (sample.appendedFrames() == 0 && sf_error(handle.get()) != SF_ERR_NO_ERROR)
        return FMOD_ERR_FILE_BAD;
    sample.publish();
    sample.complete();
    return FMOD_OK;
}

SoundFile::SoundFile() = default;
SoundFile::~SoundFile() = default;

FMOD_RESULT SoundFile::openFile(const char *fileName)
{
    m_source = std::make_unique<Source>();
    const FileDescriptor &descriptor = m_source->descriptor.emplace(fileName);
    if (!descriptor.isOpen())
        return FMOD_ERR_FILE_NOTFOUND;
    const std::optional<std::size_t> size = descriptor.size();
    if (!size)
        return FMOD_ERR_FILE_BAD;
    if (*size > MaxCopied)
        return m_source->take(sf_open_fd(descriptor.number(), SFM_READ, &m_source->info, SF_FALSE));
    const FMOD_RESULT copied = m_source->copyFile(*size);
    return copied == FMOD_OK ? m_source->takeMemory() : copied;
}

FMOD_RESULT SoundFile::openMemory(const void *data, std::size_t size)
{
    m_source = std::make_unique<Source>();
    const char *const bytes = static_cast<const char *>(data);
    m_source->bytes.assign(bytes, bytes + size);
    return m_source->takeMemory();
}

double SoundFile::rate() const
{
    return m_source->info.samplerate;
}

bool SoundFile::isStereo() const
{
    return m_source->isStereo();
}

FMOD_RESULT SoundFile::decode(AudioSample &sample, std::size_t frames)
{
    if (m_source->chunk.empty())
        m_source->begin(sample);
    FMOD_RESULT result = FMOD_OK;
    while (result == FMOD_OK && !sample.has(frames))
        result = m_source->readChunk(sample);
    return result;
}
