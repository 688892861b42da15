#include "ABC/ABCFile.h"

#include "ABC/ABCParser.h"
#include "model/DocumentFile.h"

#include <QFile>
#include <QFileInfo>

namespace {

constexpr qint64 BlockBytes = 65536;
constexpr int LargestText = 256 * 1024 * 1024;

/// Block by block, so that what lies behind the NUL, be it endless, is left alone.
QByteArray readUpToNul(QFile &file)
{
    QByteArray bytes;
    for (;;) {
        const QByteArray block = file.read(BlockBytes);
        if (file.error() != QFileDevice::NoError)
            throw QStringLiteral("Could not open file.");
        const int nul = block.indexOf('\0');
        bytes += nul < 0 ? block : block.left(nul);
        if (bytes.size() > LargestText)
            throw QStringLiteral("The file is too large.");
        if (block.isEmpty() || nul >= 0)
            return bytes;
    }
}

} // namespace

Track loadABCFile(const QString &path)
{
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly))
        throw QStringLiteral("Could not open file.");
    Track track = readABC(file);
    track.setFileName(path);
    return track;
}

Track readABC(QFile &file)
{
    return ABCParser().parse(QString::fromUtf8(readUpToNul(file)));
}

void saveABCFile(const QString &path, const QString &text)
{
    DocumentFile::save(path, text.toUtf8());
}
