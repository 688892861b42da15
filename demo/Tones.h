#pragma once

#include "demo/Signal.h"

#include <functional>
#include <vector>

/// The two kinds of vibration that all instruments here are made of. Both build a tone from its
/// partials, so nothing aliases and every pitch is exact.
namespace Demo {

/// One decaying vibration of a struck or plucked thing.
struct Mode {
    double hz;
    double amplitude;
    double phase; ///< radians
    double decay; ///< seconds to fall by 60 dB
};

/// Adds the modes from the signal's start. Modes that the sample rate cannot hold are left out.
void addModes(Signal &signal, const std::vector<Mode> &modes);

/// A tone that is kept up by breath, bow or bellows.
struct HeldTone {
    /// The amplitude of a harmonic (from 1) that at this moment lies at `hz`.
    using Spectrum = std::function<double(int harmonic, double hz)>;

    double hz = 440.0;
    double seconds = 5.0;
    Spectrum spectrum;
    double attack = 0.05; ///< seconds until the tone is full
    double bloom = 0.0;   ///< how much later the upper harmonics come, 0 for all at once
    double accent = 0.0;  ///< extra level just after the attack, as a factor to add
    double vibratoCents = 0.0;
    double vibratoHz = 5.3;
    double tremolo = 0.0; ///< change of level with the vibrato, 0..1
    double driftCents = 1.5;
    double shimmer = 0.05; ///< slow change of each harmonic's level, 0..1
};

/// Gives noise of breath or bow the tone's own rise and fall.
void followLevel(Signal &noise, const HeldTone &tone);

Signal held(const HeldTone &tone, Noise &noise);

} // namespace Demo
