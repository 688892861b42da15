#include "Render/UnmappedNotes.h"

#include <QStringList>

namespace {

constexpr quint32 HighestMidiPitch = 127;
constexpr quint32 PitchesPerOctave = 12;

/// Counts bars along a track whose events are visited in order of time.
class BarCounter {
public:
    explicit BarCounter(quint64 length)
        : m_length(length)
    {
    }

    void changeMeter(quint64 time, quint64 length)
    {
        m_before += fullBars(time) + (endsInsideBar(time) ? 1 : 0);
        m_start = time;
        m_length = length;
    }

    quint64 barAt(quint64 time) const { return m_before + fullBars(time) + 1; }

private:
    quint64 elapsed(quint64 time) const { return time > m_start ? time - m_start : 0; }
    quint64 fullBars(quint64 time) const { return m_length == 0 ? 0 : elapsed(time) / m_length; }
    bool endsInsideBar(quint64 time) const
    {
        return m_length == 0 ? elapsed(time) > 0 : elapsed(time) % m_length > 0;
    }

    quint64 m_before = 0; // bars that ended before m_start
    quint64 m_start = 0;
    quint64 m_length;
};

bool isUnmapped(const TrackEvent &event, const Instrument &instrument)
{
    return event.isNote() && !instrument.mapping().contains(event.note());
}

QString octaveMarks(int octave)
{
    if (octave < 0)
        return QString(-octave, QLatin1Char(','));
    return QString(octave > 1 ? octave - 1 : 0, QLatin1Char('\''));
}

QString letterOf(quint32 pitch)
{
    static const QStringList letters =
        QStringLiteral("C C# D D# E F F# G G# A A# B").split(QLatin1Char(' '));
    return letters.at(static_cast<int>(pitch % PitchesPerOctave));
}

void copyHeaders(const Track &from, Track &to)
{
    const QStringList keys = from.allHeaders().uniqueKeys();
    for (const QString &key : keys) {
        const QStringList values = from.headers(key);
        for (auto value = values.crbegin(); value != values.crend(); ++value)
            to.addHeader(key, *value);
    }
}

} // namespace

namespace UnmappedNotes {

bool Note::operator==(const Note &other) const
{
    return eventIndex == other.eventIndex && pitch == other.pitch && time == other.time
        && bar == other.bar;
}

QVector<Note> findUnmapped(const Track &track, const Instrument &instrument)
{
    QVector<Note> found;
    BarCounter bars(track.measureLength());
    for (int i = 0; i < track.eventCount(); ++i) {
        const TrackEvent &event = track.event(i);
        if (event.type() == TrackEvent::Meter)
            bars.changeMeter(event.time(), Ticks::ofFraction(event.num(), event.den()));
        else if (isUnmapped(event, instrument))
            found.append({i, event.note(), event.time(), bars.barAt(event.time())});
    }
    return found;
}

Track withoutUnmapped(const Track &track, const Instrument &instrument)
{
    if (findUnmapped(track, instrument).isEmpty())
        return track;
    Track kept;
    kept.setTicksPerMinute(track.ticksPerMinute());
    kept.setMeasure(track.measureLength(), track.beatsPerMeasure());
    kept.setFileName(track.fileName());
    copyHeaders(track, kept);
    for (const TrackEvent &event : track.events()) {
        if (!isUnmapped(event, instrument))
            kept.addEvent(event);
    }
    kept.sortEvents();
    return kept;
}

QString pitchName(quint32 pitch)
{
    if (pitch > HighestMidiPitch)
        return QString::number(pitch);
    return letterOf(pitch) + QString::number(static_cast<int>(pitch / PitchesPerOctave) - 1);
}

QString abcName(quint32 pitch)
{
    if (pitch > HighestMidiPitch)
        return QString::number(pitch);
    const QString letter = letterOf(pitch);
    const int octave = static_cast<int>(pitch / PitchesPerOctave) - 5;
    const QString accidental = letter.size() > 1 ? QStringLiteral("^") : QString();
    const QString base = octave > 0 ? letter.left(1).toLower() : letter.left(1);
    return accidental + base + octaveMarks(octave);
}

} // namespace UnmappedNotes
