#include "Sound/Resampler.h"

#include "Sound/Decoder.h"

#include <soxr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace {

constexpr std::size_t ChunkFrames = 16384;
constexpr std::size_t PieceFrames = 2048;

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

/// What one step gives, small enough for the processor's cache.
struct Piece {
    std::array<std::array<float, PieceFrames>, 2> sides;
    std::size_t frames = 0;
};

/// One step: gives `frames` frames from `consumed` on (none: the end of the source) and fetches
/// up to `wanted` frames. Answers false on an error.
bool step(soxr_t converter, const AudioSample &source, std::size_t &consumed, std::size_t frames,
          std::size_t wanted, Piece &piece)
{
    const float *in[] = {source.left.data() + consumed,
                         source.isStereo() ? source.right.data() + consumed : nullptr};
    float *out[] = {piece.sides[0].data(), piece.sides[1].data()};
    std::size_t used = 0;
    const soxr_error_t error = soxr_process(converter, frames == 0 ? nullptr : in, frames, &used,
                                            out, std::min(wanted, PieceFrames), &piece.frames);
    consumed += used;
    return error == nullptr;
}

void append(std::array<float, PieceFrames> &side, std::size_t frames, std::vector<float> &result)
{
    std::transform(side.begin(), side.begin() + frames, side.begin(), cleanSample);
    result.insert(result.end(), side.begin(), side.begin() + frames);
}

void append(Piece &piece, bool stereo, AudioSample &result)
{
    append(piece.sides[0], piece.frames, result.left);
    if (stereo)
        append(piece.sides[1], piece.frames, result.right);
}

/// In chunks, because the converter keeps a copy of what it is given at once. What it does not
/// fetch to the end is silent.
bool convert(soxr_t converter, const AudioSample &source, std::size_t length, AudioSample &result)
{
    Piece piece;
    std::size_t consumed = 0;
    while (result.frames() < length) {
        const std::size_t before = consumed;
        const std::size_t frames = std::min(ChunkFrames, source.frames() - consumed);
        if (!step(converter, source, consumed, frames, length - result.frames(), piece))
            return false;
        append(piece, source.isStereo(), result);
        if (frames == 0 && piece.frames == 0 && consumed == before)
            break;
    }
    result.left.resize(length);
    result.right.resize(source.isStereo() ? length : 0);
    return true;
}

void reserveFrames(AudioSample &sample, std::size_t frames, bool stereo)
{
    sample.left.reserve(frames);
    sample.right.reserve(stereo ? frames : 0);
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
        const auto length = static_cast<std::size_t>(frames);
        reserveFrames(made, length, source.isStereo());
        if (converter == nullptr || !convert(converter.get(), source, length, made))
            return FMOD_ERR_INTERNAL;
    }
    made.rate = outputRate;
    result = std::move(made);
    return FMOD_OK;
}
