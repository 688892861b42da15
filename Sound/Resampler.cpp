#include "Sound/Resampler.h"

#include "Sound/Decoder.h"

#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr std::size_t ChunkFrames = 16384;

struct DeleteConverter {
    void operator()(soxr_t converter) const { soxr_delete(converter); }
};
using Converter = std::unique_ptr<soxr, DeleteConverter>;

Converter makeConverter(double frequency, double outputRate, bool stereo)
{
    const soxr_io_spec_t format = soxr_io_spec(SOXR_FLOAT32_S, SOXR_FLOAT32_S);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    soxr_error_t error = nullptr;
    Converter converter(
        soxr_create(frequency, outputRate, stereo ? 2 : 1, &error, &format, &quality, nullptr));
    return error == nullptr ? std::move(converter) : nullptr;
}

/// Frames of the result: those whose time lies inside the source.
double resultFrames(std::size_t frames, double ratio)
{
    return std::ceil(static_cast<double>(frames) / ratio);
}

void resizeFrames(AudioSample &sample, std::size_t frames, bool stereo)
{
    sample.left.resize(frames);
    sample.right.resize(stereo ? frames : 0);
}

/// One step: gives `frames` frames from `consumed` on (none: the end of the source) and fetches
/// what fits behind `produced`. Answers false on an error.
bool step(soxr_t converter, const AudioSample &source, std::size_t &consumed, std::size_t frames,
          AudioSample &result, std::size_t &produced)
{
    const bool stereo = source.isStereo();
    const float *in[] = {source.left.data() + consumed,
                         stereo ? source.right.data() + consumed : nullptr};
    float *out[] = {result.left.data() + produced,
                    stereo ? result.right.data() + produced : nullptr};
    std::size_t used = 0;
    std::size_t made = 0;
    const soxr_error_t error = soxr_process(converter, frames == 0 ? nullptr : in, frames, &used,
                                            out, result.frames() - produced, &made);
    consumed += used;
    produced += made;
    return error == nullptr;
}

/// In chunks, because the converter keeps a copy of what it is given at once.
bool convert(soxr_t converter, const AudioSample &source, AudioSample &result)
{
    std::size_t consumed = 0;
    std::size_t produced = 0;
    while (produced < result.frames()) {
        const std::size_t before = consumed + produced;
        const std::size_t frames = std::min(ChunkFrames, source.frames() - consumed);
        if (!step(converter, source, consumed, frames, result, produced))
            return false;
        if (frames == 0 && consumed + produced == before)
            break;
    }
    return true;
}

void clean(std::vector<float> &samples)
{
    for (float &sample : samples)
        sample = cleanSample(sample);
}

} // namespace

bool Resampler::isPlayable(double frequency, double outputRate)
{
    const double ratio = frequency / outputRate;
    return ratio >= MinRatio && ratio <= MaxRatio;
}

FMOD_RESULT Resampler::resample(const AudioSample &source, double frequency, double outputRate,
                                AudioSample &result)
{
    if (!isPlayable(frequency, outputRate))
        return FMOD_ERR_INVALID_PARAM;
    AudioSample made;
    if (frequency == outputRate || source.frames() == 0) {
        made = source;
    } else {
        const double frames = resultFrames(source.frames(), frequency / outputRate);
        if (frames * (source.isStereo() ? 2 : 1) > static_cast<double>(Decoder::MaxSamples))
            return FMOD_ERR_MEMORY;
        const Converter converter = makeConverter(frequency, outputRate, source.isStereo());
        resizeFrames(made, static_cast<std::size_t>(frames), source.isStereo());
        if (converter == nullptr || !convert(converter.get(), source, made))
            return FMOD_ERR_INTERNAL;
        clean(made.left);
        clean(made.right);
    }
    made.rate = outputRate;
    result = std::move(made);
    return FMOD_OK;
}
