#include "demo/Songs.h"

#include <QDir>
#include <QFile>

// Outside of any namespace, as the macro asks.
static void loadSongs()
{
    Q_INIT_RESOURCE(demo);
}

namespace Demo {

namespace {

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw QStringLiteral("The demo songs are missing from the program.");
    return file.readAll();
}

void addParts(const QDir &folder, std::vector<SongPart> &parts)
{
    for (const QString &fileName : folder.entryList(QDir::Files, QDir::Name))
        parts.push_back({folder.dirName(), fileName, contentsOf(folder.filePath(fileName))});
}

} // namespace

std::vector<SongPart> songParts()
{
    loadSongs();
    std::vector<SongPart> parts;
    const QDir songs(QStringLiteral(":/songs"));
    for (const QString &song : songs.entryList(QDir::Dirs, QDir::Name))
        addParts(QDir(songs.filePath(song)), parts);
    return parts;
}

} // namespace Demo
