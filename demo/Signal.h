#pragma once

#include <QtGlobal>

#include <vector>

/// Blocks of sound and what the instruments' synthesis does with them.
namespace Demo {

constexpr int SampleRate = 48000;
constexpr double Pi = 3.14159265358979323846;

/// One channel at SampleRate; full scale is 1.
using Signal = std::vector<double>;

/// A finished sample. `right` is empty for a mono one, else as long as `left`.
struct Sound {
    Signal left;
    Signal right;
};

Signal silence(double seconds);

/// Adds `from` times `gain`, beginning `atSeconds`; what runs past the end of `to` is dropped.
void mixInto(Signal &to, const Signal &from, double gain = 1.0, double atSeconds = 0.0);

void scale(Signal &signal, double gain);
double peak(const Signal &signal);

/// Raised-cosine ramps at the ends; a ramp longer than the signal is cut to its length.
void fadeIn(Signal &signal, double seconds);
void fadeOut(Signal &signal, double seconds);

/// The equal-tempered frequency of a MIDI note, A4 (69) being 440 Hz.
double frequencyOfNote(int note);

double fromDecibels(double decibels);

/// Pseudo-random numbers of our own, so that every machine makes the same sounds.
class Noise {
public:
    explicit Noise(quint64 seed);

    /// Uniform in [-1, 1).
    double next();
    /// Uniform in [low, high).
    double between(double low, double high);

private:
    quint64 m_state;
};

/// A number that wanders smoothly between -1 and 1.
class Wander {
public:
    /// A new target every `step` seconds, for times from 0 to `seconds`.
    Wander(Noise &noise, double seconds, double step);

    double at(double seconds) const;

private:
    double m_step;
    std::vector<double> m_targets;
};

} // namespace Demo
