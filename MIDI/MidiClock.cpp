#include "MIDI/MidiClock.h"

#include "model/Ticks.h"

#include <cmath>

MidiClock::MidiClock(quint32 division)
    : m_scale(static_cast<double>(Ticks::PerWholeNote) / (division * 4.0))
{
    Q_ASSERT(division != 0);
}

quint64 MidiClock::ticks(quint64 midiTicks) const
{
    const double ticks = std::floor(static_cast<double>(midiTicks) * m_scale + 0.5);
    return ticks < static_cast<double>(LatestTime) ? static_cast<quint64>(ticks) : LatestTime;
}
