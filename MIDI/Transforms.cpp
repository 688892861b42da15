#include "MIDI/Transforms.h"

#include "ABC/ABCGenerator.h"
#include "ABC/ABCParser.h"

namespace {

constexpr int Octave = 12;

/// A fresh track with the header fields of `source`.
Track withHeadersOf(const Track &source)
{
    Track track;
    track.setAllHeaders(source.allHeaders());
    return track;
}

bool isWithin(qint64 pitch, quint32 lowest, quint32 highest)
{
    return pitch >= lowest && pitch <= highest;
}

TrackEvent withPitch(const TrackEvent &note, qint64 pitch)
{
    return TrackEvent::makeNote(static_cast<quint32>(pitch), note.time(), note.duration());
}

Track withHeader(const Track &track, const QString &key, const QString &value)
{
    Track copy = track;
    copy.setHeader(key, value);
    copy.setAbc(QString());
    return copy;
}

Track withOctave(const Track &track, int semitones, quint32 lowest, quint32 highest)
{
    Track result = withHeadersOf(track);
    result.setTicksPerMinute(track.ticksPerMinute());
    for (const TrackEvent &event : track.events()) {
        const bool isMoved = event.isNote() && isWithin(event.note(), lowest, highest);
        result.addEvent(isMoved ? withPitch(event, qint64{event.note()} + semitones) : event);
    }
    result.sortEvents();
    return result;
}

} // namespace

namespace Transforms {

Track transposeTrack(const Track &track, int semitones)
{
    Track result = withHeadersOf(track);
    for (const TrackEvent &event : track.events()) {
        const qint64 pitch = qint64{event.note()} + semitones;
        if (!event.isNote())
            result.addEvent(event);
        else if (isWithin(pitch, Ticks::LowestPitch, Ticks::HighestPitch))
            result.addEvent(withPitch(event, pitch));
    }
    // Sorting drops a tempo that is in force already. A change back to the default one would
    // be lost if the sort began there, while the text begins with the tempo of the fields.
    result.setTicksPerMinute(track.ticksPerMinute());
    result.sortEvents();
    result.setTicksPerMinute(Ticks::DefaultPerMinute);
    return result;
}

Track withUnitLength(const Track &track, const QString &unitLength)
{
    return withHeader(track, QStringLiteral("L"), unitLength);
}

Track withKey(const Track &track, const QString &key)
{
    return withHeader(track, QStringLiteral("K"), key);
}

Track octaveUp(const Track &track)
{
    return withOctave(track, Octave, 9, 96);
}

Track octaveDown(const Track &track)
{
    return withOctave(track, -Octave, 33, 120);
}

Track reread(const Track &track)
{
    Track copy = track;
    Track result = ABCParser().parse(ABCGenerator().generate(copy));
    result.setFileName(track.fileName());
    return result;
}

} // namespace Transforms
