#pragma once

#include "Sound/AudioSample.h"
#include "Sound/Fmod.h"

#include <cstddef>
#include <memory>

namespace Decoder {

/// The largest sound, in samples over all channels kept: at 48 kHz more than eight minutes of
/// mono or four of stereo, 96 MiB. Lengths that a file announces are not believed.
constexpr std::size_t MaxSamples = std::size_t{24} * 1024 * 1024;

} // namespace Decoder

/// A sound file (WAV, FLAC, Ogg Vorbis, MP3 and whatever else libsndfile knows), opened first,
/// which reads its header, and decoded later, piece by piece, perhaps by other threads.
///
/// Mono and stereo stay as they are; of more channels a stereo mix is made that is never louder
/// than the loudest of them. What is no finite number becomes silence. A file that breaks off
/// gives what could be read of it; a valid file without frames gives an empty sample.
///
/// Results: FMOD_ERR_FILE_NOTFOUND where nothing can be opened, FMOD_ERR_FILE_BAD for what is no
/// regular file or fails at the first read, FMOD_ERR_FORMAT for an unknown format or a sample
/// rate outside 1 to 768 kHz, FMOD_ERR_MEMORY beyond Decoder::MaxSamples, whose sample has no
/// frames.
class SoundFile {
public:
    SoundFile();
    ~SoundFile();
    SoundFile(const SoundFile &) = delete;
    SoundFile &operator=(const SoundFile &) = delete;

    /// Either of them, once. `fileName` is taken byte by byte as the system knows the file. The
    /// bytes are copied; so are those of a file of usual size, and only a larger one stays open.
    FMOD_RESULT openFile(const char *fileName);
    FMOD_RESULT openMemory(const void *data, std::size_t size);

    /// Once opened.
    double rate() const;
    bool isStereo() const;

    /// Decodes on until the sample, always the same one, has `frames` frames or is complete. It
    /// shows nothing before its end where the length is not plausible or the file has stayed open.
    FMOD_RESULT decode(AudioSample &sample, std::size_t frames);

private:
    struct Source;
    std::unique_ptr<Source> m_source;
};
