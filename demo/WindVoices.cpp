#include "demo/Filters.h"
#include "demo/Tones.h"
#include "demo/Voices.h"

#include <algorithm>
#include <cmath>

namespace Demo {

namespace {

/// The air that is heard beside the tone.
struct Breath {
    double lowHz;
    double highHz;
    double level; ///< while the tone is held, as a part of its peak
    double chiff; ///< as it begins
    double chiffSeconds;
};

void addBreath(Signal &signal, const HeldTone &tone, const Breath &breath, Noise &noise)
{
    const double level = peak(signal);
    Signal air = bandNoise(noise, tone.seconds, breath.lowHz, breath.highHz);
    followLevel(air, tone);
    mixInto(signal, air, level * breath.level);
    Signal chiff = bandNoise(noise, 2.0 * breath.chiffSeconds, breath.lowHz, breath.highHz);
    fadeIn(chiff, 0.006);
    decay(chiff, breath.chiffSeconds);
    mixInto(signal, chiff, level * breath.chiff);
}

/// 0 at the bottom of the flutes' range, 1 two octaves above.
double height(int note, int bottom)
{
    return std::clamp((note - bottom) / 24.0, 0.0, 1.0);
}

} // namespace

Sound flute(int note, Noise &noise)
{
    HeldTone tone;
    tone.hz = frequencyOfNote(note);
    tone.attack = 0.07;
    tone.bloom = 0.25;
    tone.vibratoCents = 6.0;
    tone.vibratoHz = 5.1;
    tone.tremolo = 0.14;
    tone.shimmer = 0.1;
    const double high = height(note, 60);
    tone.spectrum = [high](int harmonic, double hz) {
        static constexpr double Low[] = {0.75, 1.0, 0.55, 0.3, 0.14, 0.08, 0.045, 0.025};
        static constexpr double High[] = {1.0, 0.32, 0.1, 0.05, 0.02, 0.01, 0.005, 0.002};
        if (harmonic > 8)
            return 0.0;
        const double level = Low[harmonic - 1] * (1.0 - high) + High[harmonic - 1] * high;
        return level / (1.0 + std::pow(hz / 7000.0, 2.0));
    };
    Signal signal = held(tone, noise);
    addBreath(signal, tone, {std::min(tone.hz, 2500.0), 4200.0, 0.032, 0.2, 0.07}, noise);
    return {signal, {}};
}

Sound whistle(int note, Noise &noise)
{
    HeldTone tone;
    tone.hz = frequencyOfNote(note);
    tone.attack = 0.03;
    tone.bloom = 0.1;
    tone.vibratoCents = 4.0;
    tone.vibratoHz = 5.8;
    tone.tremolo = 0.1;
    const double high = height(note, 74);
    tone.spectrum = [high](int harmonic, double) {
        static constexpr double Levels[] = {1.0, 0.3, 0.16, 0.05, 0.03};
        return harmonic > 5 ? 0.0 : Levels[harmonic - 1] * (harmonic == 1 ? 1.0 : 1.0 - 0.5 * high);
    };
    Signal signal = held(tone, noise);
    addBreath(signal, tone, {1800.0, 6500.0, 0.03, 0.25, 0.05}, noise);
    return {signal, {}};
}

Sound clarinet(int note, Noise &noise)
{
    HeldTone tone;
    tone.hz = frequencyOfNote(note);
    tone.attack = 0.05;
    tone.bloom = 0.12;
    tone.accent = 0.08;
    tone.vibratoCents = 1.5;
    tone.tremolo = 0.03;
    // A closed tube leaves the even harmonics out, less so the higher it is blown.
    const double even = 0.05 + 0.35 * height(note, 62);
    tone.spectrum = [even](int harmonic, double hz) {
        const bool weak = harmonic % 2 == 0;
        const double missing = weak ? std::min(1.0, even + 0.04 * harmonic) : 1.0;
        return missing / (std::pow(harmonic, 0.75) * (1.0 + std::pow(hz / 2300.0, 2.4)));
    };
    Signal signal = held(tone, noise);
    addBreath(signal, tone, {1000.0, 4500.0, 0.008, 0.06, 0.04}, noise);
    return {signal, {}};
}

Sound shawm(int note, Noise &noise)
{
    static const Body body(
        {{620.0, 2.0, 4.0}, {1250.0, 2.6, 12.0}, {2900.0, 2.6, 11.0}, {5200.0, 2.0, 3.0}});
    HeldTone tone;
    tone.hz = frequencyOfNote(note);
    tone.attack = 0.035;
    tone.bloom = 0.03;
    tone.accent = 0.15;
    tone.vibratoCents = 6.0;
    tone.vibratoHz = 5.9;
    tone.tremolo = 0.05;
    tone.shimmer = 0.08;
    tone.spectrum = [](int harmonic, double hz) {
        return body.gain(hz) / (std::pow(harmonic, 0.7) * (1.0 + std::pow(hz / 4200.0, 3.0)));
    };
    Signal signal = held(tone, noise);
    addBreath(signal, tone, {1800.0, 6000.0, 0.01, 0.1, 0.03}, noise);
    return {signal, {}};
}

Sound horn(int note, Noise &noise)
{
    static const Body body({{380.0, 1.6, 7.0}, {750.0, 2.0, 3.0}});
    HeldTone tone;
    tone.hz = frequencyOfNote(note);
    tone.attack = 0.085;
    tone.bloom = 0.22;
    tone.accent = 0.3;
    tone.vibratoCents = 1.5;
    tone.driftCents = 2.5;
    tone.tremolo = 0.03;
    const double fall = 650.0 + 0.8 * tone.hz;
    tone.spectrum = [fall](int harmonic, double hz) {
        return body.gain(hz) * std::exp(-hz / fall) * (harmonic == 1 ? 0.8 : 1.0);
    };
    Signal signal = held(tone, noise);
    addBreath(signal, tone, {400.0, 2000.0, 0.006, 0.07, 0.05}, noise);
    return {signal, {}};
}

Sound accordion(int note, Noise &noise)
{
    static const Body body({{900.0, 1.8, 4.0}, {2400.0, 2.0, 5.0}});
    const double hz = frequencyOfNote(note);
    const double apart = std::min(2.1, 0.008 * hz);
    Signal signal = silence(5.0);
    for (double offset : {-apart, 0.0, apart}) {
        HeldTone reed;
        reed.hz = hz + offset;
        reed.attack = 0.06;
        reed.bloom = 0.05;
        reed.driftCents = 0.4;
        reed.shimmer = 0.05;
        reed.spectrum = [](int harmonic, double at) {
            return body.gain(at) / (std::pow(harmonic, 0.85) * (1.0 + std::pow(at / 3600.0, 2.5)));
        };
        mixInto(signal, held(reed, noise), offset == 0.0 ? 1.0 : 0.42);
    }
    Signal click = bandNoise(noise, 0.03, 500.0, 2500.0);
    decay(click, 0.025);
    mixInto(signal, click, 0.05 * peak(signal));
    return {signal, {}};
}

namespace {

/// One pipe of an organ stop, sounding `ratio` times as high as the key says.
Signal pipe(int note, double ratio, double tilt, Noise &noise)
{
    HeldTone tone;
    tone.hz = frequencyOfNote(note) * ratio;
    tone.attack = 0.04;
    tone.driftCents = 0.1;
    tone.shimmer = 0.03;
    tone.accent = 0.05;
    tone.spectrum = [tilt](int harmonic, double hz) {
        return harmonic > 14
            ? 0.0
            : std::exp(-tilt * (harmonic - 1)) / (1.0 + std::pow(hz / 6000.0, 2.0));
    };
    Signal signal = held(tone, noise);
    addBreath(signal, tone, {std::min(1.5 * tone.hz, 4000.0), 7000.0, 0.006, 0.12, 0.06}, noise);
    return signal;
}

} // namespace

Sound organ(int note, Noise &noise)
{
    struct Stop {
        double ratio;
        double tilt;
        double left;
        double right;
    };
    // Principal and flute at pitch, then an octave and two above, spread over the case.
    static constexpr Stop Stops[] = {{1.0, 0.55, 0.8, 0.5},
                                     {1.0, 1.6, 0.35, 0.6},
                                     {2.0, 0.7, 0.25, 0.42},
                                     {4.0, 0.9, 0.2, 0.12}};
    Sound sound{silence(5.0), silence(5.0)};
    for (const Stop &stop : Stops) {
        const Signal rank = pipe(note, stop.ratio, stop.tilt, noise);
        mixInto(sound.left, rank, stop.left);
        mixInto(sound.right, rank, stop.right);
    }
    return sound;
}

} // namespace Demo
