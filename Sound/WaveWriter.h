#pragma once

#include "Sound/ByteSink.h"
#include "Sound/WaveOutput.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Writes a mix as a 16-bit stereo wave file at 48 kHz. The bytes depend on nothing but the
/// samples.
///
/// Samples are rounded to the nearest of 65536 steps, of which 32768 make full scale: what was
/// decoded from 16 bits comes back bit by bit. Beyond full scale they are clamped and counted.
class WaveWriter {
public:
    explicit WaveWriter(std::unique_ptr<ByteSink> sink);

    /// Room for the header; once, before all else. Each of these answers whether it worked.
    bool begin();
    bool write(const float *left, const float *right, std::size_t frames);
    /// Completes the header and commits the sink. False as well when a write() failed before.
    bool finish();

    bool hasFailed() const { return m_failed; }
    /// Of what was written without an error.
    const WaveOutput::Report &report() const { return m_report; }

private:
    void convert(const float *left, const float *right, std::size_t frames);
    void measure(const float *samples, std::size_t frames);

    std::unique_ptr<ByteSink> m_sink;
    std::vector<std::int16_t> m_buffer;
    WaveOutput::Report m_report;
    bool m_failed = false;
};
