#include "MIDI/MidiFile.h"

#include "MIDI/MidiParser.h"

#include <QDataStream>
#include <QFile>
#include <QFileInfo>

namespace {

bool hasMidiName(const QString &path)
{
    for (const char *suffix : {".mid", ".midi", ".kar"}) {
        if (path.endsWith(QLatin1String(suffix), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

/// Asked of regular files alone: what is read of a pipe is gone.
bool startsLikeMidi(const QString &path)
{
    QFile file(path);
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) && file.read(4) == "MThd";
}

} // namespace

QList<Track> loadMidiFile(const QString &path, const MidiOptions &options)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) // refuses directories too
        throw QStringLiteral("Could not open file.");
    return readMidi(file, options);
}

QList<Track> readMidi(QFile &file, const MidiOptions &options)
{
    QDataStream stream(&file);
    return MidiParser(options).parse(stream);
}

bool isMidiFile(const QString &path)
{
    return hasMidiName(path) || startsLikeMidi(path);
}
