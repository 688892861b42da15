#include "demo/Filters.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Demo {

namespace {

constexpr double NaturalLogOf60Decibels = 6.90775527898213705205;

/// The angle and bandwidth terms that all designs start from. Frequencies stay below the Nyquist
/// limit whatever is asked.
struct Design {
    Design(double hz, double q)
        : cosine(std::cos(angle(hz)))
        , alpha(std::sin(angle(hz)) / (2.0 * q))
    {
    }

    static double angle(double hz) { return 2.0 * Pi * std::min(hz / SampleRate, 0.49); }

    Biquad section(double b0, double b1, double b2) const
    {
        const double a0 = 1.0 + alpha;
        return Biquad::of(b0 / a0, b1 / a0, b2 / a0, -2.0 * cosine / a0, (1.0 - alpha) / a0);
    }

    double cosine;
    double alpha;
};

} // namespace

Biquad Biquad::lowPass(double hz, double q)
{
    const Design design(hz, q);
    const double b = 1.0 - design.cosine;
    return design.section(b / 2.0, b, b / 2.0);
}

Biquad Biquad::highPass(double hz, double q)
{
    const Design design(hz, q);
    const double b = 1.0 + design.cosine;
    return design.section(b / 2.0, -b, b / 2.0);
}

Biquad Biquad::bandPass(double hz, double q)
{
    const Design design(hz, q);
    return design.section(design.alpha, 0.0, -design.alpha);
}

Biquad Biquad::of(double b0, double b1, double b2, double a1, double a2)
{
    Biquad section;
    section.m_b0 = b0;
    section.m_b1 = b1;
    section.m_b2 = b2;
    section.m_a1 = a1;
    section.m_a2 = a2;
    return section;
}

void Biquad::apply(Signal &signal) const
{
    double z1 = 0.0;
    double z2 = 0.0;
    for (double &value : signal) {
        const double out = m_b0 * value + z1;
        z1 = m_b1 * value - m_a1 * out + z2;
        z2 = m_b2 * value - m_a2 * out;
        value = out;
    }
}

Body::Body(std::vector<Resonance> resonances)
    : m_resonances(std::move(resonances))
{
}

double Body::gain(double hz) const
{
    double decibels = 0.0;
    for (const Resonance &resonance : m_resonances) {
        const double distance = resonance.q * (hz / resonance.hz - resonance.hz / hz);
        decibels += resonance.decibels / (1.0 + distance * distance);
    }
    return fromDecibels(decibels);
}

Signal bandNoise(Noise &noise, double seconds, double lowHz, double highHz)
{
    Signal signal = silence(seconds);
    for (double &value : signal)
        value = noise.next();
    Biquad::highPass(lowHz).apply(signal);
    Biquad::lowPass(highHz).apply(signal);
    const double highest = peak(signal);
    scale(signal, highest > 0.0 ? 1.0 / highest : 0.0);
    return signal;
}

void decay(Signal &signal, double seconds)
{
    const double factor = std::exp(-NaturalLogOf60Decibels / (seconds * SampleRate));
    double gain = 1.0;
    for (double &value : signal) {
        value *= gain;
        gain *= factor;
    }
}

} // namespace Demo
