#pragma once

#include "demo/Signal.h"

namespace Demo {

/// Highest loudness of any 400 ms of the signal (shorter ones are counted as if silence
/// followed), in decibels below a full-scale square wave, weighted for the ear as broadcasters
/// do it. -100 for silence.
double loudness(const Signal &signal);

/// Makes the sample fit to be played beside others: no DC, brought to `targetLoudness` unless
/// that lifts a peak above -6.5 dBFS, silent at both ends.
void finishTone(Sound &sound, double targetLoudness);

/// The same for drums, whose level is better judged by their peak, in dBFS.
void finishDrum(Sound &sound, double targetPeak);

} // namespace Demo
