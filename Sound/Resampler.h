#pragma once

#include "Sound/AudioSample.h"
#include "Sound/Fmod.h"

/// Changes the rate of a whole sound at once, at a quality that leaves nothing to hear: images
/// and aliases stay more than 100 dB below the sound, frame 0 stays frame 0.
namespace Resampler {

/// The slowest and fastest playback, as frames of the source per frame of the result.
constexpr double MinRatio = 1.0 / 64.0;
constexpr double MaxRatio = 64.0;

/// Whether a sound can be played at `frequency` frames per second on an output of `outputRate`.
bool isPlayable(double frequency, double outputRate);

/// `source` as it sounds at `outputRate` when played at `frequency` of its frames per second;
/// the rate that `source` itself carries does not matter. Equal rates copy bit by bit.
///
/// FMOD_ERR_INVALID_PARAM for a ratio that is not finite or outside the limits,
/// FMOD_ERR_MEMORY when the result would be larger than Decoder::MaxSamples; `result` is then
/// unchanged.
FMOD_RESULT resample(const AudioSample &source, double frequency, double outputRate,
                     AudioSample &result);

} // namespace Resampler
