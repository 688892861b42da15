#include "demo/Levels.h"

#include "demo/Filters.h"

#include <algorithm>
#include <cmath>

namespace Demo {

namespace {

constexpr double HighestPeak = -6.5;

/// The K weighting of ITU-R BS.1770 at 48 kHz.
Signal weighted(Signal signal)
{
    Biquad::of(1.53512485958697, -2.69169618940638, 1.19839281085285, -1.69065929318241,
               0.73248077421585)
        .apply(signal);
    Biquad::of(1.0, -2.0, 1.0, -1.99004745483398, 0.99007225036621).apply(signal);
    return signal;
}

double energy(const Signal &signal, size_t begin, size_t end)
{
    double sum = 0.0;
    for (size_t i = begin; i < std::min(end, signal.size()); ++i)
        sum += signal[i] * signal[i];
    return sum;
}

double decibelsOf(double ratio)
{
    return 20.0 * std::log10(std::max(ratio, 1e-5));
}

void scaleBoth(Sound &sound, double gain)
{
    scale(sound.left, gain);
    scale(sound.right, gain);
}

/// The ends are faded after the filter, which rings on. The lossy file smears a sudden start
/// over the moment before it; the lead gives that a place, so that the file begins in silence.
void cleanEnd(Signal &channel)
{
    constexpr size_t Lead = SampleRate * 2 / 1000;
    if (channel.empty())
        return;
    Biquad::highPass(14.0).apply(channel);
    fadeIn(channel, 0.0012);
    channel.insert(channel.begin(), Lead, 0.0);
    fadeOut(channel, 0.08);
}

void cleanEnds(Sound &sound)
{
    cleanEnd(sound.left);
    cleanEnd(sound.right);
}

double peakOf(const Sound &sound)
{
    return std::max(peak(sound.left), peak(sound.right));
}

double loudnessOf(const Sound &sound)
{
    if (sound.right.empty())
        return loudness(sound.left);
    return std::max(loudness(sound.left), loudness(sound.right));
}

} // namespace

double loudness(const Signal &signal)
{
    constexpr size_t Window = SampleRate * 4 / 10;
    constexpr size_t Hop = SampleRate / 10;
    const Signal heard = weighted(signal);
    double loudest = 0.0;
    for (size_t begin = 0; begin < heard.size(); begin += Hop)
        loudest = std::max(loudest, energy(heard, begin, begin + Window));
    return decibelsOf(std::sqrt(loudest / Window)) - 0.691;
}

void finishTone(Sound &sound, double targetLoudness)
{
    cleanEnds(sound);
    const double wanted = targetLoudness - loudnessOf(sound);
    const double allowed = HighestPeak - decibelsOf(peakOf(sound));
    scaleBoth(sound, fromDecibels(std::min(wanted, allowed)));
}

void finishDrum(Sound &sound, double targetPeak)
{
    cleanEnds(sound);
    const double gain = std::min(targetPeak, HighestPeak) - decibelsOf(peakOf(sound));
    scaleBoth(sound, fromDecibels(gain));
}

} // namespace Demo
