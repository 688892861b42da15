#include "MIDI/MidiConductor.h"

#include "ABC/KeyTable.h"

namespace {

constexpr quint32 MicrosecondsPerMinute = 60000000;
constexpr quint32 LargestExponent = 16;

} // namespace

MidiConductor::MidiConductor(const MidiClock &clock, MidiBudget &budget, Tempos tempos)
    : m_clock(clock)
    , m_budget(budget)
    , m_tempos(tempos)
{
}

void MidiConductor::setTempo(quint64 tick, quint32 microseconds)
{
    if (microseconds == 0)
        return;
    const quint32 bpm = MicrosecondsPerMinute / microseconds;
    const TrackEvent tempo = TrackEvent::makeTempo(m_clock.ticks(tick), 1, 4, bpm);
    if (m_tempos == Tempos::ToMap) {
        m_budget.spend(1);
        m_tempoMap.insert(tick, tempo);
    } else if (tick == 0) {
        m_firstTempo = tempo;
    } else {
        add(tempo);
    }
}

void MidiConductor::setMeter(quint64 tick, quint32 numerator, quint32 exponent)
{
    if (numerator == 0 || exponent > LargestExponent)
        return;
    const TrackEvent meter =
        TrackEvent::makeMeter(m_clock.ticks(tick), numerator, quint32{1} << exponent);
    if (tick == 0)
        m_firstMeter = meter;
    else
        add(meter);
}

void MidiConductor::setKey(quint64 tick, int sharps, quint32 mode)
{
    if (sharps < -7 || sharps > 7 || mode > KeyTable::Minor)
        return;
    const auto row = static_cast<quint32>(static_cast<int>(KeyTable::NaturalRow) - sharps);
    const TrackEvent key = TrackEvent::makeKey(m_clock.ticks(tick), row, mode);
    if (tick == 0)
        m_firstKey = key;
    else
        add(key);
}

void MidiConductor::add(const TrackEvent &event)
{
    m_budget.spend(1);
    m_events << event;
}

void MidiConductor::addTo(Track &track, int first) const
{
    m_budget.spend(static_cast<quint64>(m_events.size() - first));
    for (int i = first; i < m_events.size(); ++i)
        track.addEvent(m_events.at(i));
}

void MidiConductor::startTrack(Track &track) const
{
    if (m_firstTempo)
        setTempo(track, *m_firstTempo);
    if (m_firstMeter) {
        const quint32 num = m_firstMeter->num();
        const quint32 den = m_firstMeter->den();
        track.setHeader(QStringLiteral("M"), QStringLiteral("%1/%2").arg(num).arg(den));
        // Divided first: the measure is as many whole beats as the file says.
        track.setMeasure(Ticks::PerWholeNote / den * num, num);
    }
    if (m_firstKey)
        track.setHeader(QStringLiteral("K"),
                        KeyTable::displayName(m_firstKey->keyIndex(), m_firstKey->mode()));
}

void MidiConductor::setTempo(Track &track, const TrackEvent &tempo)
{
    track.setHeader(QStringLiteral("Q"), QStringLiteral("1/4=%1").arg(tempo.bpm()));
    // In 64 bits, as the field is read again; the event's own figure wraps at 32.
    track.setTicksPerMinute(quint64{tempo.bpm()} * Ticks::PerQuarterNote);
}

void MidiConductor::addTempoMap(Track &track) const
{
    m_budget.spend(static_cast<quint64>(m_tempoMap.size()));
    for (auto tempo = m_tempoMap.cbegin(); tempo != m_tempoMap.cend(); ++tempo) {
        if (tempo.key() == 0)
            setTempo(track, tempo.value());
        else
            track.addEvent(tempo.value());
    }
}

void MidiConductor::startChunk()
{
    m_events.clear();
    m_firstTempo.reset();
    m_firstMeter.reset();
    m_firstKey.reset();
}
