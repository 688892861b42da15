#pragma once

#include "demo/Signal.h"

namespace Demo {

/// A second-order filter section.
class Biquad {
public:
    static Biquad lowPass(double hz, double q = 0.7071);
    static Biquad highPass(double hz, double q = 0.7071);
    /// Gain 1 at `hz`.
    static Biquad bandPass(double hz, double q);
    /// From coefficients with a0 = 1.
    static Biquad of(double b0, double b1, double b2, double a1, double a2);

    /// Filters in place, starting at rest.
    void apply(Signal &signal) const;

private:
    double m_b0 = 1.0;
    double m_b1 = 0.0;
    double m_b2 = 0.0;
    double m_a1 = 0.0;
    double m_a2 = 0.0;
};

/// A peak in the frequency response of an instrument's body.
struct Resonance {
    double hz;
    double q;
    double decibels;
};

/// The frequency response of an instrument's body, the same for all its notes: this is what
/// makes them sound like one instrument.
class Body {
public:
    explicit Body(std::vector<Resonance> resonances);

    /// Linear gain at a frequency above 0.
    double gain(double hz) const;

private:
    std::vector<Resonance> m_resonances;
};

/// White noise between two frequencies, about 1 at its peak.
Signal bandNoise(Noise &noise, double seconds, double lowHz, double highHz);

/// Multiplies by a decay of 60 dB in `seconds`.
void decay(Signal &signal, double seconds);

} // namespace Demo
