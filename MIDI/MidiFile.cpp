#include "MIDI/MidiFile.h"

QList<Track> loadMidiFile(const QString &, const MidiOptions &)
{
    return {};
}

QList<Track> readMidi(QFile &, const MidiOptions &)
{
    return {};
}

bool isMidiFile(const QString &path)
{
    return path.endsWith(QLatin1String(".mid"), Qt::CaseInsensitive);
}
