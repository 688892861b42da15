#pragma once

#include "Sound/Fmod.h"
#include "Sound/PreparePool.h"

#include <cstddef>
#include <memory>

/// A sound on its way to another rate, piece by piece, at a quality that leaves nothing to hear:
/// images and aliases stay more than 100 dB below the sound, frame 0 stays frame 0. The result
/// does not depend on how it is cut into pieces.
class Resampler {
public:
    /// The slowest and fastest playback, as frames of the source per frame of the result.
    static constexpr double MinRatio = 1.0 / 64.0;
    static constexpr double MaxRatio = 64.0;

    /// Whether a sound can be played at `frequency` frames per second on an output of
    /// `outputRate`.
    static bool isPlayable(double frequency, double outputRate);

    /// About what one of these has in memory between two pieces: 90 to 670 KB, by its ratio and
    /// channels.
    static constexpr std::size_t WorkingBytes = std::size_t{384} * 1024;

    /// `source` as it sounds at `outputRate` when played at `frequency` of its frames per second.
    Resampler(std::shared_ptr<Preparation> source, double frequency, double outputRate);
    ~Resampler();
    Resampler(const Resampler &) = delete;
    Resampler &operator=(const Resampler &) = delete;

    /// Goes on until the result, always the same sample, has `frames` frames or is complete. Has
    /// the source made only as far as that needs, here or by another thread. A source that could
    /// not be made gives what there is of it.
    ///
    /// FMOD_ERR_INVALID_PARAM for a ratio that is not finite or outside the limits,
    /// FMOD_ERR_MEMORY, at the first piece, when the result would be larger than
    /// Decoder::MaxSamples.
    FMOD_RESULT make(AudioSample &result, std::size_t frames);

private:
    struct Converter;

    FMOD_RESULT begin(AudioSample &result);
    bool isTooLong() const;
    std::size_t maxFrames() const;
    bool step(AudioSample &result);
    void append(AudioSample &result) const;
    void finish(AudioSample &result) const;

    const std::shared_ptr<Preparation> m_source;
    const double m_frequency;
    const double m_outputRate;
    std::unique_ptr<Converter> m_converter; // from the first piece on
    std::size_t m_consumed = 0;             // frames of the source
};
