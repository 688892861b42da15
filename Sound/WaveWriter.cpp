#include "Sound/WaveWriter.h"

#include "Sound/WaveHeader.h"

#include <algorithm>
#include <cmath>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "wave files are little-endian");

namespace {

constexpr float Steps = 32768.0F;

std::int16_t toSixteenBits(float sample)
{
    const float scaled = std::clamp(sample * Steps, -Steps, Steps - 1.0F);
    // In this range a float has no digits left behind the point: the addition rounds to the
    // nearest step (ties to even), as lrint() does, and can be done for many samples at once.
    constexpr float Rounder = 12582912.0F; // 1.5 * 2^23
    return static_cast<std::int16_t>((scaled + Rounder) - Rounder);
}

} // namespace

WaveWriter::WaveWriter(std::unique_ptr<ByteSink> sink)
    : m_sink(std::move(sink))
{
}

bool WaveWriter::begin()
{
    const auto header = WaveHeader::forFrames(0);
    m_failed = !m_sink->append(header.data(), header.size());
    return !m_failed;
}

bool WaveWriter::write(const float *left, const float *right, std::size_t frames)
{
    if (m_failed)
        return false;
    convert(left, right, frames);
    m_failed = !m_sink->append(m_buffer.data(), frames * WaveHeader::BytesPerFrame);
    if (m_failed)
        return false;
    measure(left, frames);
    measure(right, frames);
    m_report.frames += frames;
    return true;
}

bool WaveWriter::finish()
{
    const auto header = WaveHeader::forFrames(m_report.frames);
    return !m_failed && m_sink->rewriteStart(header.data(), header.size()) && m_sink->commit();
}

void WaveWriter::convert(const float *left, const float *right, std::size_t frames)
{
    m_buffer.resize(frames * 2);
    std::int16_t *const out = m_buffer.data();
    for (std::size_t i = 0; i < frames; ++i) {
        out[2 * i] = toSixteenBits(left[i]);
        out[2 * i + 1] = toSixteenBits(right[i]);
    }
}

void WaveWriter::measure(const float *samples, std::size_t frames)
{
    float peak = m_report.peak;
    unsigned clipped = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        const float size = std::fabs(samples[i]);
        peak = size > peak ? size : peak;
        clipped += size > 1.0F ? 1U : 0U;
    }
    m_report.peak = peak;
    m_report.clipped += clipped;
}
