#include "Sound/WaveMeasure.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr sf_count_t PieceFrames = 4096;
constexpr float FullScale = 32767.0F / 32768.0F; // the largest positive 16-bit sample

void takeIn(WaveMeasure &measure, const float *samples, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        const float size = std::fabs(samples[i]);
        measure.peak = std::max(measure.peak, size);
        if (size >= FullScale)
            ++measure.clipped;
    }
}

} // namespace

std::optional<WaveMeasure> WaveMeasure::ofFile(const char *fileName)
{
    SF_INFO info = {};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE *)> file(sf_open(fileName, SFM_READ, &info),
                                                            sf_close);
    if (!file || info.channels <= 0)
        return std::nullopt;
    WaveMeasure measure;
    measure.sampleRate = info.samplerate;
    const auto channels = static_cast<std::size_t>(info.channels);
    std::vector<float> piece(channels * PieceFrames);
    for (;;) {
        const sf_count_t frames = sf_readf_float(file.get(), piece.data(), PieceFrames);
        if (frames <= 0)
            return measure;
        measure.frames += static_cast<std::uint64_t>(frames);
        takeIn(measure, piece.data(), static_cast<std::size_t>(frames) * channels);
    }
}
