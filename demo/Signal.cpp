#include "demo/Signal.h"

#include <algorithm>
#include <cmath>

namespace Demo {

namespace {

size_t samplesOf(double seconds)
{
    return static_cast<size_t>(std::lround(std::max(0.0, seconds) * SampleRate));
}

double ramp(size_t index, size_t length)
{
    return 0.5 - 0.5 * std::cos(Pi * static_cast<double>(index) / static_cast<double>(length));
}

} // namespace

Signal silence(double seconds)
{
    return Signal(samplesOf(seconds), 0.0);
}

void mixInto(Signal &to, const Signal &from, double gain, double atSeconds)
{
    const size_t start = std::min(samplesOf(atSeconds), to.size());
    const size_t count = std::min(from.size(), to.size() - start);
    for (size_t i = 0; i < count; ++i)
        to[start + i] += gain * from[i];
}

void scale(Signal &signal, double gain)
{
    for (double &value : signal)
        value *= gain;
}

double peak(const Signal &signal)
{
    double highest = 0.0;
    for (double value : signal)
        highest = std::max(highest, std::abs(value));
    return highest;
}

void fadeIn(Signal &signal, double seconds)
{
    const size_t length = std::min(samplesOf(seconds), signal.size());
    for (size_t i = 0; i < length; ++i)
        signal[i] *= ramp(i, length);
}

void fadeOut(Signal &signal, double seconds)
{
    const size_t length = std::min(samplesOf(seconds), signal.size());
    for (size_t i = 0; i < length; ++i)
        signal[signal.size() - 1 - i] *= ramp(i, length);
}

double frequencyOfNote(int note)
{
    return 440.0 * std::exp2((note - 69) / 12.0);
}

double fromDecibels(double decibels)
{
    return std::pow(10.0, decibels / 20.0);
}

Noise::Noise(quint64 seed)
    : m_state(seed)
{
}

double Noise::next()
{
    // SplitMix64: every seed, 0 included, gives a full-length sequence.
    m_state += 0x9E3779B97F4A7C15U;
    quint64 bits = m_state;
    bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBU;
    bits ^= bits >> 31U;
    return std::ldexp(static_cast<double>(bits >> 11U), -52) - 1.0;
}

double Noise::between(double low, double high)
{
    return low + (high - low) * 0.5 * (next() + 1.0);
}

Wander::Wander(Noise &noise, double seconds, double step)
    : m_step(step)
    , m_targets(static_cast<size_t>(seconds / step) + 2)
{
    for (double &target : m_targets)
        target = noise.next();
}

double Wander::at(double seconds) const
{
    const double position = std::max(0.0, seconds / m_step);
    const size_t index = std::min(static_cast<size_t>(position), m_targets.size() - 2);
    const double part = std::min(1.0, position - static_cast<double>(index));
    const double eased = part * part * (3.0 - 2.0 * part);
    return m_targets[index] + (m_targets[index + 1] - m_targets[index]) * eased;
}

} // namespace Demo
