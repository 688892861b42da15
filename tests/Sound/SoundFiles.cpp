#include "SoundFiles.h"

#include <QFile>

#include <sndfile.h>

#include <algorithm>
#include <cstring>

namespace {

struct Buffer {
    QByteArray bytes;
    qint64 position = 0;
};

Buffer &buffer(void *user)
{
    return *static_cast<Buffer *>(user);
}

sf_count_t length(void *user)
{
    return buffer(user).bytes.size();
}

sf_count_t seek(sf_count_t offset, int whence, void *user)
{
    Buffer &file = buffer(user);
    file.position = offset
        + (whence == SEEK_SET       ? 0
               : whence == SEEK_CUR ? file.position
                                    : file.bytes.size());
    return file.position;
}

sf_count_t readBytes(void *target, sf_count_t count, void *user)
{
    Buffer &file = buffer(user);
    const sf_count_t available = std::clamp<sf_count_t>(count, 0, length(user) - file.position);
    std::memcpy(target, file.bytes.constData() + file.position, static_cast<size_t>(available));
    file.position += available;
    return available;
}

sf_count_t writeBytes(const void *source, sf_count_t count, void *user)
{
    Buffer &file = buffer(user);
    const int end = static_cast<int>(file.position + count);
    if (end > file.bytes.size())
        file.bytes.resize(end);
    std::memcpy(file.bytes.data() + file.position, source, static_cast<size_t>(count));
    file.position += count;
    return count;
}

sf_count_t tell(void *user)
{
    return buffer(user).position;
}

template <typename Write>
QByteArray encodeWith(int format, int rate, int channels, const Write &write)
{
    Buffer file;
    SF_VIRTUAL_IO access = {length, seek, readBytes, writeBytes, tell};
    SF_INFO info = {};
    info.format = format;
    info.samplerate = rate;
    info.channels = channels;
    SNDFILE *const sound = sf_open_virtual(&access, SFM_WRITE, &info, &file);
    if (sound == nullptr)
        qFatal("cannot make a sound file: %s", sf_strerror(nullptr));
    write(sound);
    sf_close(sound);
    return file.bytes;
}

} // namespace

QByteArray SoundFiles::encode(int format, int rate, int channels, const std::vector<float> &samples)
{
    return encodeWith(format, rate, channels, [&](SNDFILE *sound) {
        sf_write_float(sound, samples.data(), static_cast<sf_count_t>(samples.size()));
    });
}

QByteArray SoundFiles::encode16(int rate, int channels, const std::vector<short> &samples)
{
    return encodeWith(SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate, channels, [&](SNDFILE *sound) {
        sf_write_short(sound, samples.data(), static_cast<sf_count_t>(samples.size()));
    });
}

SoundFiles::Contents SoundFiles::read(const QString &fileName)
{
    SF_INFO info = {};
    SNDFILE *const sound = sf_open(QFile::encodeName(fileName).constData(), SFM_READ, &info);
    if (sound == nullptr)
        return {};
    Contents contents{true, info.format, info.samplerate, info.channels, info.frames, {}};
    contents.samples.resize(static_cast<size_t>(info.frames * info.channels));
    const sf_count_t count =
        sf_read_short(sound, contents.samples.data(), info.frames * info.channels);
    contents.samples.resize(static_cast<size_t>(count));
    sf_close(sound);
    return contents;
}
