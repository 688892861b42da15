#pragma once

#include <cstddef>
#include <vector>

/// What is in a signal, measured through a window whose own side lobes lie below -160 dB.
class Spectrum {
public:
    /// Looks at `size` samples (a power of two).
    Spectrum(const float *samples, std::size_t size);

    /// The strongest line, in dB of a full-scale sine; `except` is a frequency in cycles per
    /// sample around which nothing is looked at (negative: look everywhere).
    double strongest(double except = -1.0) const;
    /// The strength at just this frequency in cycles per sample.
    double at(double frequency) const;

private:
    std::vector<double> m_windowed;
    double m_windowSum = 0.0;
    std::vector<double> m_amplitudes; // per bin; a full-scale sine has 1
};
