#include "demo/Filters.h"
#include "demo/Tones.h"
#include "demo/Voices.h"

#include <algorithm>
#include <cmath>

namespace Demo {

namespace {

/// A string that is plucked or struck once.
struct String {
    double hz;
    double stiffness; ///< how far the partials are stretched
    double place;     ///< where it is plucked, as a part of its length
    double tilt;      ///< partials fall with this power of their number
    double brightHz;  ///< and faster above this
    double ring;      ///< seconds for the fundamental to fall by 60 dB
    double damping;   ///< how much sooner the upper partials fade
};

double stretched(const String &string, int partial)
{
    const double number = partial;
    return string.hz * number
        * std::sqrt((1.0 + string.stiffness * number * number) / (1.0 + string.stiffness));
}

double amplitudeOf(const String &string, const Body &body, int partial, double hz)
{
    // Never quite 0: a real finger is wider than a point.
    const double comb = 0.06 + std::abs(std::sin(Pi * partial * string.place));
    const double bright = 1.0 + std::pow(hz / string.brightHz, 2.0);
    return comb * body.gain(hz) / (std::pow(partial, string.tilt) * bright);
}

double decayOf(const String &string, int partial, double hz)
{
    const double order = string.damping * (partial - 1);
    return std::max(0.04, string.ring / (1.0 + order + std::pow(hz / 5000.0, 2.0)));
}

/// A string swings in two planes: one gives its sound away quickly, the other slowly and a shade
/// higher or lower, which keeps the tone alive.
void addString(Signal &signal, const String &string, const Body &body, double gain, Noise &noise)
{
    std::vector<Mode> modes;
    for (int partial = 1; partial <= 70; ++partial) {
        const double hz = stretched(string, partial);
        if (hz > 16500.0)
            break;
        const double amplitude = gain * amplitudeOf(string, body, partial, hz);
        const double ring = decayOf(string, partial, hz);
        const double phase = 0.5 * noise.next();
        const double beat = std::min(0.0011 * hz, noise.between(0.1, 0.35));
        modes.push_back({hz, amplitude, phase, 0.55 * ring});
        modes.push_back({hz + beat, 0.3 * amplitude, phase, ring});
    }
    addModes(signal, modes);
}

/// A short burst, such as a nail, a plectrum or a hammer makes.
void addTouch(Signal &signal, double lowHz, double highHz, double seconds, double gain,
              Noise &noise)
{
    Signal burst = bandNoise(noise, 2.0 * seconds, lowHz, highHz);
    decay(burst, seconds);
    mixInto(signal, burst, gain * peak(signal));
}

double ringOf(double hz, double atA3, double slope)
{
    return std::clamp(atA3 * std::pow(220.0 / hz, slope), 0.45, 9.0);
}

Signal roomFor(double ring)
{
    return silence(std::clamp(0.75 * ring, 0.6, 5.0));
}

/// A bowed string: a rich spectrum, shaped by the body as the vibrato moves it about.
struct Bowed {
    double attack;
    double vibratoCents;
    double vibratoHz;
    double bowNoise;
    double softHz; ///< the spectrum falls faster above this
};

Sound bowed(int note, const Body &body, const Bowed &style, Noise &noise)
{
    HeldTone tone;
    tone.hz = frequencyOfNote(note);
    tone.attack = style.attack;
    tone.bloom = 0.06;
    tone.accent = 0.12;
    tone.vibratoCents = style.vibratoCents;
    tone.vibratoHz = style.vibratoHz;
    tone.tremolo = 0.06;
    tone.driftCents = 2.5;
    tone.shimmer = 0.16;
    tone.spectrum = [&body, &style](int harmonic, double hz) {
        return body.gain(hz) / (harmonic * (1.0 + std::pow(hz / style.softHz, 2.0)));
    };
    Signal signal = held(tone, noise);
    Signal bow = bandNoise(noise, tone.seconds, 900.0, 5500.0);
    followLevel(bow, tone);
    const double level = peak(signal) * style.bowNoise;
    mixInto(signal, bow, level);
    Signal scratch = bandNoise(noise, 0.09, 1200.0, 7000.0);
    decay(scratch, 0.08);
    mixInto(signal, scratch, 2.5 * level);
    return {signal, {}};
}

} // namespace

Sound lute(int note, Noise &noise)
{
    static const Body body({{105.0, 2.5, 5.0},
                            {215.0, 3.0, 5.0},
                            {440.0, 3.0, 3.0},
                            {1900.0, 1.2, 3.0},
                            {3600.0, 1.5, 2.0}});
    const double hz = frequencyOfNote(note);
    String string{hz, 4e-5, 0.13, 0.95, 3400.0, ringOf(hz, 5.2, 0.55), 0.16};
    Signal signal = roomFor(string.ring);
    // The strings lie in pairs, of which the second sounds a moment later.
    addString(signal, string, body, 1.0, noise);
    Signal second(signal.size(), 0.0);
    string.hz *= 1.0006;
    addString(second, string, body, 0.6, noise);
    mixInto(signal, second, 1.0, 0.006);
    addTouch(signal, 1500.0, 7000.0, 0.02, 0.1, noise);
    addTouch(signal, 90.0, 260.0, 0.09, 0.08, noise);
    return {signal, {}};
}

Sound harp(int note, Noise &noise)
{
    static const Body body({{150.0, 1.5, 3.0}, {320.0, 2.0, 3.0}, {700.0, 2.0, 2.0}});
    const double hz = frequencyOfNote(note);
    const String string{hz, 1e-5, 0.31, 1.35, 2600.0, ringOf(hz, 9.0, 0.6), 0.11};
    Signal signal = roomFor(string.ring);
    addString(signal, string, body, 1.0, noise);
    addTouch(signal, 300.0, 1800.0, 0.03, 0.06, noise);
    return {signal, {}};
}

Sound piano(int note, Noise &noise)
{
    static const Body body({{110.0, 1.0, 3.0}, {240.0, 1.5, 2.0}, {900.0, 1.0, 2.0}});
    const double hz = frequencyOfNote(note);
    const double stiffness = 8e-5 * std::exp2((note - 48) / 9.0) + 4e-5;
    const double bright = std::clamp(1400.0 + 2.2 * hz, 1400.0, 6500.0);
    String string{hz, std::min(stiffness, 6e-3), 0.12, 0.75, bright, ringOf(hz, 13.0, 0.62), 0.09};
    Signal signal = roomFor(string.ring);
    // Three strings to a note, a little apart: a quick first decay, then a long one.
    for (double cents : {0.0, 0.55, -0.5}) {
        string.hz = hz * std::exp2(cents / 1200.0);
        addString(signal, string, body, cents == 0.0 ? 1.0 : 0.6, noise);
    }
    addTouch(signal, 120.0, 900.0, 0.05, 0.07, noise);
    addTouch(signal, 1200.0, 4000.0, 0.018, 0.05, noise);
    return {signal, {}};
}

Sound bass(int note, Noise &noise)
{
    static const Body body({{98.0, 1.5, 4.0}, {190.0, 2.0, 3.0}, {700.0, 1.2, 2.0}});
    const double hz = frequencyOfNote(note);
    const String string{hz, 9e-5, 0.22, 1.15, 1500.0, ringOf(hz, 3.2, 0.35), 0.2};
    Signal signal = roomFor(string.ring);
    addString(signal, string, body, 1.0, noise);
    addTouch(signal, 500.0, 2400.0, 0.025, 0.07, noise);
    addTouch(signal, 60.0, 160.0, 0.1, 0.1, noise);
    return {signal, {}};
}

Sound fiddle(int note, Noise &noise)
{
    static const Body body({{285.0, 6.0, 6.0},
                            {460.0, 7.0, 6.0},
                            {560.0, 8.0, 4.0},
                            {880.0, 4.0, -3.0},
                            {1150.0, 5.0, 4.0},
                            {1650.0, 4.0, -3.0},
                            {2500.0, 1.8, 7.0},
                            {3600.0, 3.0, 4.0}});
    return bowed(note, body, {0.075, 11.0, 5.7, 0.02, 5200.0}, noise);
}

Sound cello(int note, Noise &noise)
{
    static const Body body({{105.0, 5.0, 5.0},
                            {185.0, 6.0, 6.0},
                            {225.0, 6.0, 3.0},
                            {420.0, 4.0, 3.0},
                            {650.0, 4.0, -3.0},
                            {1100.0, 2.5, 4.0},
                            {2100.0, 2.0, 4.0}});
    return bowed(note, body, {0.11, 9.0, 5.1, 0.016, 3300.0}, noise);
}

} // namespace Demo
