#pragma once

#include "MIDI/MidiFile.h"

#include <QDir>
#include <QDirIterator>
#include <QStringList>

#include <optional>

/// MIDI files by many authors, kept outside of the repository.
namespace MidiCorpus {

inline QDir directory()
{
    return QDir(QStringLiteral(QUILLMOOR_CORPUS "/midi"));
}

/// Paths in directory(), sorted.
inline QStringList files()
{
    QStringList paths;
    QDirIterator found(directory().path(), {QStringLiteral("*.mid"), QStringLiteral("*.kar")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (found.hasNext())
        paths << directory().relativeFilePath(found.next());
    paths.sort();
    return paths;
}

inline QString fullPath(const QString &file)
{
    return directory().filePath(file);
}

/// Nothing for a file that cannot be imported.
inline std::optional<QList<Track>> import(const QString &file, const MidiOptions &options)
{
    try {
        return loadMidiFile(fullPath(file), options);
    } catch (const QString &) {
        return std::nullopt;
    }
}

} // namespace MidiCorpus
