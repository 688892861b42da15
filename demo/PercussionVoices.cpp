#include "demo/Filters.h"
#include "demo/Tones.h"
#include "demo/Voices.h"

#include <algorithm>
#include <cmath>

namespace Demo {

namespace {

/// One partial of a bar or tine, relative to its fundamental.
struct BarMode {
    double ratio;
    double level;
    double ring; ///< relative to the fundamental's
};

Signal struckBar(double hz, double ring, const std::vector<BarMode> &bar, Noise &noise)
{
    Signal signal = silence(std::clamp(0.8 * ring, 0.5, 5.0));
    std::vector<Mode> modes;
    modes.reserve(bar.size());
    for (const BarMode &mode : bar)
        modes.push_back({hz * mode.ratio, mode.level, 0.3 * noise.next(), ring * mode.ring});
    addModes(signal, modes);
    return signal;
}

void addMallet(Signal &signal, double lowHz, double highHz, double seconds, double gain,
               Noise &noise)
{
    Signal knock = bandNoise(noise, 2.0 * seconds, lowHz, highHz);
    decay(knock, seconds);
    mixInto(signal, knock, gain * peak(signal));
}

/// A sine that falls from `fromHz` to `toHz`, as a drum's skin does when it slackens.
Signal skin(double fromHz, double toHz, double fall, double ring)
{
    Signal signal = silence(1.2 * ring);
    double phase = 0.0;
    for (size_t i = 0; i < signal.size(); ++i) {
        const double time = static_cast<double>(i) / SampleRate;
        phase += 2.0 * Pi * (toHz + (fromHz - toHz) * std::exp(-time / fall)) / SampleRate;
        signal[i] = std::sin(phase);
    }
    decay(signal, ring);
    return signal;
}

Signal burst(Noise &noise, double lowHz, double highHz, double seconds)
{
    Signal signal = bandNoise(noise, 1.3 * seconds, lowHz, highHz);
    decay(signal, seconds);
    return signal;
}

/// Places a mono hit on the stage, from -1 (left) to 1 (right).
Sound placed(const Signal &signal, double side)
{
    Sound sound{signal, signal};
    scale(sound.left, std::cos(Pi / 4.0 * (1.0 + side)));
    scale(sound.right, std::sin(Pi / 4.0 * (1.0 + side)));
    return sound;
}

Sound kick(Noise &noise)
{
    const double tune = noise.between(0.98, 1.02);
    Signal signal = skin(150.0 * tune, 54.0 * tune, 0.028, 0.42);
    mixInto(signal, burst(noise, 1200.0, 5000.0, 0.025), noise.between(0.1, 0.16));
    mixInto(signal, burst(noise, 80.0, 400.0, 0.06), 0.3);
    return {signal, {}};
}

Sound snare(Noise &noise)
{
    Signal signal = silence(0.5);
    const double tune = noise.between(0.985, 1.015);
    mixInto(signal, skin(260.0 * tune, 190.0 * tune, 0.02, 0.16), 0.6);
    mixInto(signal, skin(410.0 * tune, 335.0 * tune, 0.02, 0.1), 0.3);
    mixInto(signal, burst(noise, 1500.0, 9000.0, noise.between(0.2, 0.25)), 0.75);
    mixInto(signal, burst(noise, 2500.0, 12000.0, 0.03), 0.5);
    return placed(signal, -0.1);
}

Sound sideStick(Noise &noise)
{
    Signal signal = silence(0.2);
    addModes(signal,
             {{noise.between(480.0, 490.0), 0.5, 0.2, 0.06},
              {1690.0, 0.8, 0.1, 0.05},
              {2900.0, 0.4, 0.3, 0.03}});
    mixInto(signal, burst(noise, 1000.0, 7000.0, 0.015), 0.5);
    return placed(signal, -0.15);
}

Sound clap(Noise &noise)
{
    Signal signal = silence(0.4);
    for (double at : {0.0, 0.011, 0.021})
        mixInto(signal, burst(noise, 900.0, 3500.0, 0.02), 0.7, at + noise.between(0.0, 0.003));
    mixInto(signal, burst(noise, 900.0, 4500.0, 0.22), 0.8, 0.031);
    return placed(signal, 0.2);
}

std::function<Sound(Noise &)> tom(double hz, double side)
{
    return [hz, side](Noise &noise) {
        const double tune = noise.between(0.99, 1.01);
        Signal signal = skin(1.5 * hz * tune, hz * tune, 0.05, 0.75);
        mixInto(signal, skin(2.4 * hz * tune, 1.6 * hz * tune, 0.04, 0.25), 0.35);
        mixInto(signal, burst(noise, 500.0, 4000.0, 0.03), 0.2);
        return placed(signal, side);
    };
}

/// Metal: many partials without order, different for each ear, in a wash of noise.
Signal metal(Noise &noise, double lowHz, double highHz, int partials, double ring)
{
    Signal signal = silence(1.1 * ring);
    std::vector<Mode> modes;
    for (int i = 0; i < partials; ++i) {
        const double hz = lowHz * std::pow(highHz / lowHz, noise.between(0.0, 1.0));
        modes.push_back(
            {hz, noise.between(0.2, 1.0), Pi * noise.next(), ring * noise.between(0.3, 1.0)});
    }
    addModes(signal, modes);
    const double level = peak(signal);
    mixInto(signal, burst(noise, lowHz, highHz, 0.6 * ring), 0.9 * level);
    return signal;
}

std::function<Sound(Noise &)> cymbal(double lowHz, double highHz, double ring, double build,
                                     double side)
{
    return [=](Noise &noise) {
        Sound sound = placed(Signal(), side);
        sound.left = metal(noise, lowHz, highHz, 60, ring);
        sound.right = metal(noise, lowHz, highHz, 60, ring);
        for (Signal *channel : {&sound.left, &sound.right})
            fadeIn(*channel, build);
        scale(sound.left, 1.0 - std::max(0.0, side));
        scale(sound.right, 1.0 + std::min(0.0, side));
        return sound;
    };
}

Sound cowbell(Noise &noise)
{
    Signal signal = silence(0.5);
    const double tune = noise.between(0.99, 1.01);
    addModes(signal,
             {{562.0 * tune, 1.0, 0.1, 0.35},
              {845.0 * tune, 0.9, 0.2, 0.3},
              {1690.0 * tune, 0.3, 0.2, 0.15},
              {2540.0 * tune, 0.2, 0.2, 0.1}});
    mixInto(signal, burst(noise, 1500.0, 6000.0, 0.02), 0.3);
    return placed(signal, 0.25);
}

Sound tambourine(Noise &noise)
{
    Signal signal = silence(0.5);
    for (int i = 0; i < 7; ++i)
        mixInto(signal, metal(noise, 4200.0, 13000.0, 6, noise.between(0.12, 0.3)),
                noise.between(0.3, 1.0), noise.between(0.0, 0.035));
    mixInto(signal, burst(noise, 250.0, 900.0, 0.04), 0.8);
    return placed(signal, 0.3);
}

std::function<Sound(Noise &)> handDrum(double hz, double slap, double side)
{
    return [=](Noise &noise) {
        const double tune = noise.between(0.99, 1.01);
        Signal signal = skin(1.25 * hz * tune, hz * tune, 0.03, 0.32);
        mixInto(signal, skin(1.9 * hz * tune, 1.59 * hz * tune, 0.03, 0.14), 0.4);
        mixInto(signal, burst(noise, 700.0, 5000.0, 0.03), slap);
        return placed(signal, side);
    };
}

Sound shaker(Noise &noise)
{
    Signal signal = bandNoise(noise, 0.14, 4500.0, 12000.0);
    fadeIn(signal, noise.between(0.02, 0.035));
    fadeOut(signal, 0.09);
    return placed(signal, -0.35);
}

std::function<Sound(Noise &)> wood(double hz, double ring, double side)
{
    return [=](Noise &noise) {
        Signal signal = silence(0.25);
        const double tune = noise.between(0.995, 1.005);
        addModes(signal, {{hz * tune, 1.0, 0.2, ring}, {2.57 * hz * tune, 0.35, 0.2, 0.5 * ring}});
        mixInto(signal, burst(noise, hz, 3.0 * hz, 0.012), 0.3);
        return placed(signal, side);
    };
}

Sound triangle(Noise &noise)
{
    Signal signal = silence(2.0);
    std::vector<Mode> modes;
    for (double hz : {1290.0, 2960.0, 4890.0, 5430.0, 6820.0, 8710.0, 10900.0, 12400.0})
        modes.push_back({hz * noise.between(0.999, 1.001), noise.between(0.3, 1.0), 0.3,
                         noise.between(0.8, 2.2)});
    addModes(signal, modes);
    return placed(signal, 0.4);
}

} // namespace

Sound bells(int note, Noise &noise)
{
    const double hz = frequencyOfNote(note);
    const double ring = std::clamp(5.0 * std::pow(520.0 / hz, 0.45), 1.2, 7.0);
    // Each partial has a twin close by: a cast bell is never quite round.
    Signal signal = struckBar(hz, ring,
                              {{1.0, 1.0, 1.0},
                               {1.0007, 0.35, 0.9},
                               {2.0, 0.3, 0.7},
                               {3.0, 0.42, 0.55},
                               {3.004, 0.2, 0.5},
                               {4.2, 0.12, 0.3},
                               {5.4, 0.14, 0.22},
                               {6.8, 0.08, 0.15},
                               {8.9, 0.06, 0.08}},
                              noise);
    addMallet(signal, 2500.0, 9000.0, 0.012, 0.08, noise);
    return {signal, {}};
}

Sound marimba(int note, Noise &noise)
{
    const double hz = frequencyOfNote(note);
    const double ring = std::clamp(1.9 * std::pow(220.0 / hz, 0.6), 0.35, 3.5);
    Signal signal = struckBar(
        hz, ring, {{1.0, 1.0, 1.0}, {3.98, 0.22, 0.3}, {9.6, 0.09, 0.12}, {15.8, 0.04, 0.07}},
        noise);
    addMallet(signal, 250.0, 1400.0, 0.03, 0.15, noise);
    return {signal, {}};
}

Sound musicBox(int note, Noise &noise)
{
    const double hz = frequencyOfNote(note);
    const double ring = std::clamp(2.6 * std::pow(880.0 / hz, 0.5), 0.7, 4.0);
    Signal signal = struckBar(hz, ring,
                              {{1.0, 1.0, 1.0},
                               {1.0011, 0.3, 0.8},
                               {2.0, 0.12, 0.6},
                               {6.27, 0.24, 0.25},
                               {8.2, 0.05, 0.2}},
                              noise);
    addMallet(signal, 3000.0, 10000.0, 0.008, 0.12, noise);
    return {signal, {}};
}

std::vector<Drum> drumKit()
{
    const auto drum = [](int note, const char *name, int variants, double level,
                         std::function<Sound(Noise &)> hit) {
        return Drum{note, QString::fromLatin1(name), variants, level, std::move(hit)};
    };
    return {
        drum(36, "kick", 3, -8.5, kick),
        drum(37, "sidestick", 2, -15.0, sideStick),
        drum(38, "snare", 4, -11.0, snare),
        drum(39, "clap", 3, -13.0, clap),
        drum(41, "lowtom", 2, -10.5, tom(88.0, 0.3)),
        drum(42, "closedhat", 4, -22.0, cymbal(5200.0, 14000.0, 0.09, 0.001, 0.35)),
        drum(45, "midtom", 2, -10.5, tom(118.0, 0.05)),
        drum(46, "openhat", 2, -22.0, cymbal(4800.0, 14000.0, 0.7, 0.001, 0.35)),
        drum(48, "hightom", 2, -10.5, tom(160.0, -0.25)),
        drum(49, "crash", 2, -18.0, cymbal(1800.0, 13000.0, 2.4, 0.004, -0.3)),
        drum(51, "ride", 2, -22.0, cymbal(2600.0, 11000.0, 1.6, 0.002, 0.3)),
        drum(54, "tambourine", 3, -19.0, tambourine),
        drum(56, "cowbell", 2, -17.0, cowbell),
        drum(60, "highbongo", 3, -13.0, handDrum(390.0, 0.3, -0.2)),
        drum(61, "lowbongo", 3, -13.0, handDrum(285.0, 0.25, -0.1)),
        drum(63, "conga", 3, -12.0, handDrum(215.0, 0.2, 0.15)),
        drum(64, "framedrum", 3, -10.0, handDrum(105.0, 0.12, 0.0)),
        drum(70, "shaker", 3, -21.0, shaker),
        drum(75, "claves", 2, -16.0, wood(2480.0, 0.09, 0.2)),
        drum(76, "woodblock", 2, -16.0, wood(1010.0, 0.08, -0.2)),
        drum(81, "triangle", 2, -24.0, triangle),
    };
}

} // namespace Demo
