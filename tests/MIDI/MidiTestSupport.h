#pragma once

#include "MIDI/MidiParser.h"

#include <QByteArray>
#include <QDataStream>
#include <QString>
#include <QStringList>

inline QString operator""_s(const char *text, size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

/// The bytes that the hexadecimal digits spell.
inline QByteArray operator""_hex(const char *text, size_t size)
{
    return QByteArray::fromHex(QByteArray(text, static_cast<int>(size)));
}

/// Imports of bytes, and music as text.
namespace MidiTest {

// Times as they come from the file, that is without realignment.
constexpr MidiOptions Merged = {true, false, true};
constexpr MidiOptions PerChunk = {false, false, true};

inline QList<Track> parse(const QByteArray &bytes, const MidiOptions &options = Merged)
{
    QDataStream stream(bytes);
    return MidiParser(options).parse(stream);
}

/// A note as "60@0+30240": pitch, start and duration.
inline QString text(const TrackEvent &event)
{
    const QString time = QString::number(event.time());
    const QString fraction = QStringLiteral("%1/%2").arg(event.num()).arg(event.den());
    switch (event.type()) {
    case TrackEvent::Note:
        return QStringLiteral("%1@%2+%3").arg(event.note()).arg(event.time()).arg(event.duration());
    case TrackEvent::Tempo:
        return QStringLiteral("Tempo@%1 %2=%3").arg(time, fraction).arg(event.bpm());
    case TrackEvent::Key:
        return QStringLiteral("Key@%1 %2 %3").arg(time).arg(event.keyIndex()).arg(event.mode());
    case TrackEvent::Meter:
        return QStringLiteral("Meter@%1 %2").arg(time, fraction);
    default:
        return QStringLiteral("?");
    }
}

/// The notes alone: "60@0+30240 62@30240+30240".
inline QString notes(const Track &track)
{
    QStringList texts;
    for (const TrackEvent &event : track.events()) {
        if (event.isNote())
            texts << text(event);
    }
    return texts.join(QLatin1Char(' '));
}

/// All events: "Tempo@0 1/4=90; Meter@0 3/4; Key@0 7 1; 60@0+30240".
inline QString events(const Track &track)
{
    QStringList texts;
    for (const TrackEvent &event : track.events())
        texts << text(event);
    return texts.join(QLatin1String("; "));
}

/// The title, then the notes, of each track.
inline QStringList songs(const QList<Track> &tracks)
{
    QStringList texts;
    for (const Track &track : tracks)
        texts << track.header(QStringLiteral("T")) + QLatin1String(": ") + notes(track);
    return texts;
}

} // namespace MidiTest
