#include "demo/Tones.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Demo {

namespace {

constexpr double HighestHz = 17500.0;
constexpr double NaturalLogOf60Decibels = 6.90775527898213705205;

/// Neighbouring samples of one mode turn side by side, so that the compiler can use vectors.
constexpr size_t Lanes = 8;

/// A decaying rotation: `turn` steps it by whole groups of lanes.
class Rotor {
public:
    explicit Rotor(const Mode &mode)
    {
        const double angle = 2.0 * Pi * mode.hz / SampleRate;
        const double damping = NaturalLogOf60Decibels / (mode.decay * SampleRate);
        for (size_t lane = 0; lane < Lanes; ++lane) {
            const auto time = static_cast<double>(lane);
            const double radius = mode.amplitude * std::exp(-damping * time);
            m_sine[lane] = radius * std::sin(mode.phase + angle * time);
            m_cosine[lane] = radius * std::cos(mode.phase + angle * time);
        }
        const double radius = std::exp(-damping * Lanes);
        m_stepSine = radius * std::sin(angle * Lanes);
        m_stepCosine = radius * std::cos(angle * Lanes);
    }

    void addTo(double *samples)
    {
        for (size_t lane = 0; lane < Lanes; ++lane) {
            samples[lane] += m_sine[lane];
            const double sine = m_sine[lane] * m_stepCosine + m_cosine[lane] * m_stepSine;
            m_cosine[lane] = m_cosine[lane] * m_stepCosine - m_sine[lane] * m_stepSine;
            m_sine[lane] = sine;
        }
    }

private:
    std::array<double, Lanes> m_sine{};
    std::array<double, Lanes> m_cosine{};
    double m_stepSine = 0.0;
    double m_stepCosine = 0.0;
};

void addMode(Signal &padded, const Mode &mode)
{
    if (mode.hz >= HighestHz || mode.amplitude == 0.0)
        return;
    // 1.6 times the 60 dB are 96: nothing is left that 16 bits could show.
    const auto audible = static_cast<size_t>(1.6 * mode.decay * SampleRate);
    const size_t end = std::min(padded.size(), audible / Lanes * Lanes);
    Rotor rotor(mode);
    for (size_t i = 0; i < end; i += Lanes)
        rotor.addTo(padded.data() + i);
}

/// Harmonics are computed in stretches this long, with levels that go straight from end to end.
constexpr size_t Stretch = 192;

/// The level of the tone over time, from 0 to about 1.
double levelAt(const HeldTone &tone, double seconds)
{
    const double part = std::clamp(seconds / tone.attack, 0.0, 1.0);
    const double rise = part * part * (3.0 - 2.0 * part);
    const double accent = 1.0 + tone.accent * std::exp(-seconds / 0.18);
    const double tired = 1.0 - 0.2 * seconds / tone.seconds;
    return rise * accent * tired;
}

class HeldVoice {
public:
    HeldVoice(const HeldTone &tone, Noise &noise);

    Signal sound();

private:
    using Buffer = std::array<double, Stretch>;

    struct Harmonic {
        double sinePart;
        double cosinePart;
        double level;
        Wander shimmer;
    };

    /// What all harmonics share at the end of a stretch.
    struct Moment {
        double seconds;
        double hz;
        double breath;
        double vibrato;
    };

    double vibratoAt(double seconds) const;
    Moment momentAt(double seconds) const;
    double levelOf(size_t index, const Moment &moment) const;
    void turn(double hz);
    void addStretch(double *samples, const Moment &end);

    const HeldTone &m_tone;
    Wander m_drift;
    Wander m_vibratoSpeed;
    std::vector<Harmonic> m_harmonics;
    double m_sine = 0.0;
    double m_cosine = 1.0;
    Buffer m_baseSine{};
    Buffer m_baseCosine{};
};

HeldVoice::HeldVoice(const HeldTone &tone, Noise &noise)
    : m_tone(tone)
    , m_drift(noise, tone.seconds, 0.35)
    , m_vibratoSpeed(noise, tone.seconds, 0.8)
{
    const int count = std::clamp(static_cast<int>(HighestHz / (tone.hz * 1.03)), 1, 70);
    for (int i = 0; i < count; ++i) {
        const double phase = Pi * noise.next();
        m_harmonics.push_back(
            {std::cos(phase), std::sin(phase), 0.0, Wander(noise, tone.seconds, 0.18)});
    }
}

double HeldVoice::vibratoAt(double seconds) const
{
    const double grown = std::clamp((seconds - 0.25) / 0.5, 0.0, 1.0);
    const double wobble = 0.6 * m_vibratoSpeed.at(seconds);
    return grown * std::sin(2.0 * Pi * m_tone.vibratoHz * seconds + wobble);
}

HeldVoice::Moment HeldVoice::momentAt(double seconds) const
{
    const double vibrato = vibratoAt(seconds);
    const double cents = m_tone.vibratoCents * vibrato + m_tone.driftCents * m_drift.at(seconds);
    return {seconds, m_tone.hz * std::exp2(cents / 1200.0), levelAt(m_tone, seconds), vibrato};
}

double HeldVoice::levelOf(size_t index, const Moment &moment) const
{
    const auto harmonic = static_cast<double>(index + 1);
    const double late =
        moment.breath < 1.0 ? std::pow(moment.breath, m_tone.bloom * (harmonic - 1.0)) : 1.0;
    const double tremolo =
        1.0 + m_tone.tremolo * moment.vibrato * std::min(1.0, 0.5 + 0.2 * harmonic);
    const double shimmer = 1.0 + m_tone.shimmer * m_harmonics[index].shimmer.at(moment.seconds);
    const double spectrum = m_tone.spectrum(static_cast<int>(index) + 1, harmonic * moment.hz);
    return spectrum * moment.breath * late * tremolo * shimmer;
}

/// Fills the fundamental's stretch and moves on; the division undoes the rounding of many turns.
void HeldVoice::turn(double hz)
{
    const double angle = 2.0 * Pi * hz / SampleRate;
    const double stepSine = std::sin(angle);
    const double stepCosine = std::cos(angle);
    for (size_t i = 0; i < Stretch; ++i) {
        m_baseSine[i] = m_sine;
        m_baseCosine[i] = m_cosine;
        const double sine = m_sine * stepCosine + m_cosine * stepSine;
        m_cosine = m_cosine * stepCosine - m_sine * stepSine;
        m_sine = sine;
    }
    const double radius = std::hypot(m_sine, m_cosine);
    m_sine /= radius;
    m_cosine /= radius;
}

void HeldVoice::addStretch(double *samples, const Moment &end)
{
    turn(end.hz);
    Buffer sine = m_baseSine;
    Buffer cosine = m_baseCosine;
    for (size_t index = 0; index < m_harmonics.size(); ++index) {
        Harmonic &harmonic = m_harmonics[index];
        const double target = levelOf(index, end);
        const double slope = (target - harmonic.level) / Stretch;
        const double start = harmonic.level;
        for (size_t i = 0; i < Stretch; ++i) {
            const double level = start + slope * static_cast<double>(static_cast<int>(i));
            samples[i] += level * (harmonic.sinePart * sine[i] + harmonic.cosinePart * cosine[i]);
            const double next = sine[i] * m_baseCosine[i] + cosine[i] * m_baseSine[i];
            cosine[i] = cosine[i] * m_baseCosine[i] - sine[i] * m_baseSine[i];
            sine[i] = next;
        }
        harmonic.level = target;
    }
}

Signal HeldVoice::sound()
{
    const Signal wanted = silence(m_tone.seconds);
    Signal padded((wanted.size() / Stretch + 1) * Stretch, 0.0);
    for (size_t i = 0; i < padded.size(); i += Stretch) {
        const double end = static_cast<double>(i + Stretch) / SampleRate;
        addStretch(padded.data() + i, momentAt(end));
    }
    padded.resize(wanted.size());
    return padded;
}

} // namespace

void addModes(Signal &signal, const std::vector<Mode> &modes)
{
    const size_t wanted = signal.size();
    signal.resize((wanted / Lanes + 1) * Lanes, 0.0);
    for (const Mode &mode : modes)
        addMode(signal, mode);
    signal.resize(wanted);
}

void followLevel(Signal &noise, const HeldTone &tone)
{
    double level = 0.0;
    for (size_t begin = 0; begin < noise.size(); begin += Stretch) {
        const double target = levelAt(tone, static_cast<double>(begin + Stretch) / SampleRate);
        const double slope = (target - level) / Stretch;
        const size_t end = std::min(begin + Stretch, noise.size());
        for (size_t i = begin; i < end; ++i, level += slope)
            noise[i] *= level;
    }
}

Signal held(const HeldTone &tone, Noise &noise)
{
    return HeldVoice(tone, noise).sound();
}

} // namespace Demo
