#include "MIDI/MidiChannel.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr quint32 DataEntry = 6;
constexpr quint32 ParameterLow = 100;
constexpr quint32 ParameterHigh = 101;
constexpr quint32 BendRangeParameter = 0;

bool isOnPiano(quint32 pitch)
{
    return pitch >= Ticks::LowestPitch && pitch <= Ticks::HighestPitch;
}

int bendSemitones(quint32 value, quint32 range)
{
    const double fraction = value / 16384.0 - 0.5;
    return static_cast<int>(std::lround(range * (2.0 * fraction)));
}

QString printable(QString text)
{
    const auto isControl = [](QChar c) { return c.category() == QChar::Other_Control; };
    std::replace_if(text.begin(), text.end(), isControl, QLatin1Char(' '));
    return text;
}

} // namespace

MidiChannel::MidiChannel(const MidiClock &clock, MidiBudget &budget, const MidiConductor &conductor)
    : m_clock(clock)
    , m_budget(budget)
    , m_conductor(conductor)
{
}

void MidiChannel::startTrack()
{
    m_track = Track();
    m_conducted = 0;
    m_program = 0;
    m_bendOffset = 0;
}

quint32 MidiChannel::bentPitch(quint32 key) const
{
    return (key + static_cast<quint32>(m_bendOffset)) & 0xFFU;
}

MidiChannel::SoundingNotes::iterator MidiChannel::place(quint32 pitch)
{
    return std::lower_bound(m_sounding.begin(), m_sounding.end(), pitch,
                            [](const Sounding &note, quint32 p) { return note.pitch < p; });
}

void MidiChannel::startNote(quint32 key, quint64 tick)
{
    const quint32 pitch = bentPitch(key);
    const auto at = place(pitch);
    if (at != m_sounding.end() && at->pitch == pitch)
        at->start = tick;
    else
        m_sounding.insert(at, {pitch, tick});
}

void MidiChannel::endNote(quint32 key, quint64 tick)
{
    const quint32 pitch = bentPitch(key);
    const auto at = place(pitch);
    if (at == m_sounding.end() || at->pitch != pitch)
        return;
    if (isOnPiano(pitch))
        addNote(pitch, at->start, tick);
    m_sounding.erase(at);
}

void MidiChannel::bend(quint32 value, quint64 tick)
{
    const int offset = bendSemitones(value, m_bendRange);
    if (offset == m_bendOffset)
        return;
    const auto end = m_sounding.cend();
    for (auto note = place(Ticks::LowestPitch); note != end && isOnPiano(note->pitch); ++note) {
        if (note->start != tick)
            addNote(note->pitch, note->start, tick);
    }
    moveSounding(static_cast<quint32>(offset - m_bendOffset), tick);
    m_bendOffset = offset;
}

void MidiChannel::moveSounding(quint32 semitones, quint64 tick)
{
    for (Sounding &note : m_sounding)
        note = {note.pitch + semitones, tick};
    // All have moved alike, so that those that wrapped are one run, and stand at the wrong end.
    if (m_sounding.empty() || m_sounding.front().pitch <= m_sounding.back().pitch)
        return;
    const auto isBelow = [](const Sounding &a, const Sounding &b) { return a.pitch < b.pitch; };
    const auto secondRun = std::is_sorted_until(m_sounding.begin(), m_sounding.end(), isBelow);
    std::rotate(m_sounding.begin(), secondRun, m_sounding.end());
}

int MidiChannel::endAll(quint64 tick)
{
    const int count = static_cast<int>(m_sounding.size());
    for (const Sounding &note : m_sounding)
        addNote(note.pitch & 0xFFU, note.start, tick);
    m_sounding.clear();
    return count;
}

void MidiChannel::control(quint32 controller, quint32 value)
{
    if (controller == ParameterHigh)
        m_parameter = (value & 0x7FU) << 8U | (m_parameter & 0xFFU);
    else if (controller == ParameterLow)
        m_parameter = (m_parameter & 0xFF00U) | (value & 0x7FU);
    else if (controller == DataEntry && m_parameter == BendRangeParameter)
        m_bendRange = value;
}

void MidiChannel::addTitle(const QString &title)
{
    m_budget.spend(MidiBudget::EventsPerTitle);
    m_track.addHeader(QStringLiteral("T"), printable(title));
}

void MidiChannel::addNote(quint32 pitch, quint64 start, quint64 end)
{
    addConductor();
    m_budget.spend(1);
    m_track.addEvent(
        TrackEvent::makeNote(pitch, m_clock.ticks(start), m_clock.ticksBetween(start, end)));
}

/// Called before each note: sorting keeps the order of a control event and a note of no length at
/// one time, which is that of the file.
void MidiChannel::addConductor()
{
    if (m_conducted == m_conductor.eventCount())
        return;
    m_conductor.addTo(m_track, m_conducted);
    m_conducted = m_conductor.eventCount();
}

Track MidiChannel::takeTrack()
{
    m_budget.spend(MidiBudget::EventsPerTrack);
    addConductor();
    m_conductor.startTrack(m_track);
    return std::move(m_track);
}
