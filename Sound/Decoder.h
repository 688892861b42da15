#pragma once

#include "Sound/AudioSample.h"
#include "Sound/Fmod.h"

#include <cstddef>
#include <memory>

/// Reads sound files (WAV, FLAC, Ogg Vorbis, MP3 and whatever else libsndfile knows) into memory.
///
/// Mono and stereo stay as they are; of more channels a stereo mix is made that is never louder
/// than the loudest of them. What is no finite number becomes silence. A file that breaks off
/// gives what could be read of it; a valid file without frames gives an empty sample.
///
/// Results: FMOD_ERR_FILE_NOTFOUND where nothing can be opened, FMOD_ERR_FILE_BAD for what is no
/// regular file or fails at the first read, FMOD_ERR_FORMAT for an unknown format or a sample
/// rate outside 1 to 768 kHz, FMOD_ERR_MEMORY beyond MaxSamples. `sample` is changed only by
/// FMOD_OK.
///
/// SoundFile does the same in two steps, of which the second may be another thread's.
namespace Decoder {

/// The largest sound, in samples over all channels kept: at 48 kHz more than eight minutes of
/// mono or four of stereo, 96 MiB. Lengths that a file announces are not believed.
constexpr std::size_t MaxSamples = std::size_t{24} * 1024 * 1024;

/// `fileName` is taken byte by byte as the system knows the file.
FMOD_RESULT decodeFile(const char *fileName, AudioSample &sample);

FMOD_RESULT decodeMemory(const void *data, std::size_t size, AudioSample &sample);

} // namespace Decoder

/// A sound file that is opened, which reads its header, and decoded later.
class SoundFile {
public:
    SoundFile();
    ~SoundFile();
    SoundFile(const SoundFile &) = delete;
    SoundFile &operator=(const SoundFile &) = delete;

    /// Either of them, once. The file stays open, the bytes are copied.
    FMOD_RESULT openFile(const char *fileName);
    FMOD_RESULT openMemory(const void *data, std::size_t size);

    /// Once opened.
    double rate() const;
    bool isStereo() const;

    /// Once, after which the file is closed.
    FMOD_RESULT decode(AudioSample &sample);

private:
    struct Source;
    std::unique_ptr<Source> m_source;
};
