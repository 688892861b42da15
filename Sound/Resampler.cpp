#include "Sound/Resampler.h"

#include "Sound/Decoder.h"

#include <soxr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace {

constexpr std::size_t MaxInput = 16384;
constexpr std::size_t MaxOutput = 2048; // small enough for the processor's cache

} // namespace

/// The library's converter and what it gives in one step.
struct Resampler::Converter {
    Converter(double frequency, double outputRate, bool stereo);
    ~Converter() { soxr_delete(soxr); }
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;

    /// Takes up to `frames` frames of the source from there on (none: its end) and gives what
    /// they result in. Answers how many it took, or nothing on an error.
    std::optional<std::size_t> step(const AudioSample &source, std::size_t from,
                                    std::size_t frames);

    soxr_t soxr = nullptr;
    std::size_t inputFrames; // what one step is given, because the library keeps a copy of it
    std::array<std::array<float, MaxOutput>, 2> sides;
    std::size_t frames = 0;
};

Resampler::Converter::Converter(double frequency, double outputRate, bool stereo)
    : inputFrames(static_cast<std::size_t>(
        std::clamp(std::ceil(MaxOutput * frequency / outputRate), 1.0, double{MaxInput})))
{
    const soxr_io_spec_t format = soxr_io_spec(SOXR_FLOAT32_S, SOXR_FLOAT32_S);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    soxr = soxr_create(frequency, outputRate, stereo ? 2 : 1, nullptr, &format, &quality, nullptr);
}

std::optional<std::size_t> Resampler::Converter::step(const AudioSample &source, std::size_t from,
                                                      std::size_t count)
{
    const float *in[] = {source.left() + from, source.right() + from};
    float *out[] = {sides[0].data(), sides[1].data()};
    std::size_t used = 0;
    const soxr_error_t error =
        soxr_process(soxr, count == 0 ? nullptr : in, count, &used, out, MaxOutput, &frames);
    return error == nullptr ? std::optional(used) : std::nullopt;
}

bool Resampler::isPlayable(double frequency, double outputRate)
{
    const double ratio = frequency / outputRate;
    return ratio >= MinRatio && ratio <= MaxRatio;
}

Resampler::Resampler(std::shared_ptr<Preparation> source, double frequency, double outputRate)
    : m_source(std::move(source))
    , m_frequency(frequency)
    , m_outputRate(outputRate)
{
}

Resampler::~Resampler() = default;

FMOD_RESULT Resampler::make(AudioSample &result, std::size_t frames)
{
    const FMOD_RESULT begun = m_converter == nullptr ? begin(result) : FMOD_OK;
    if (begun != FMOD_OK)
        return begun;
    while (!result.has(frames))
        if (!step(result))
            return FMOD_ERR_INTERNAL;
    return FMOD_OK;
}

/// The announced length is enough where the result has room for it. Else only the true one tells.
FMOD_RESULT Resampler::begin(AudioSample &result)
{
    if (!isPlayable(m_frequency, m_outputRate))
        return FMOD_ERR_INVALID_PARAM;
    m_source->makeUpTo(1);
    if (isTooLong())
        m_source->makeUpTo(Preparation::All);
    if (isTooLong())
        return FMOD_ERR_MEMORY;
    const AudioSample &source = m_source->sample();
    result.allocate(maxFrames(), source.isStereo());
    m_converter = std::make_unique<Converter>(m_frequency, m_outputRate, source.isStereo());
    return m_converter->soxr != nullptr ? FMOD_OK : FMOD_ERR_INTERNAL;
}

bool Resampler::isTooLong() const
{
    return maxFrames() > Decoder::MaxSamples / (m_source->sample().isStereo() ? 2 : 1);
}

/// Those whose time lies inside the source, as far as its end is known.
std::size_t Resampler::maxFrames() const
{
    const double ratio = m_frequency / m_outputRate;
    return static_cast<std::size_t>(
        std::ceil(static_cast<double>(m_source->sample().maxFrames()) / ratio));
}

/// Gives the converter always the same portions, however far the source is. Answers false on an
/// error.
bool Resampler::step(AudioSample &result)
{
    const std::size_t wanted = m_consumed + m_converter->inputFrames;
    m_source->makeUpTo(wanted);
    const AudioSample &source = m_source->sample();
    const bool isAllKnown = source.isComplete();
    const std::size_t portion = std::min(source.frames(), wanted) - m_consumed;
    const auto used = m_converter->step(source, m_consumed, portion);
    if (!used)
        return false;
    m_consumed += *used;
    append(result);
    const bool isDry = portion == 0 && m_converter->frames == 0;
    if (isAllKnown && (isDry || result.appendedFrames() == maxFrames()))
        finish(result);
    return true;
}

void Resampler::append(AudioSample &result) const
{
    const std::size_t room = maxFrames() - result.appendedFrames();
    result.append(m_converter->sides[0].data(), m_converter->sides[1].data(),
                  std::min(m_converter->frames, room));
    result.publish();
}

/// What the converter does not give to the end is silent.
void Resampler::finish(AudioSample &result) const
{
    result.appendSilence(maxFrames() - result.appendedFrames());
    result.publish();
    result.complete();
}
