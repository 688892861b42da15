#include "cli/Tunes.h"

#include "ABC/ABCParser.h"
#include "cli/Files.h"

#include <QFileInfo>

Track Tunes::read(const QString &path)
{
    const QByteArray bytes = Files::readText(path);
    Track track = ABCParser().parse(QString::fromUtf8(bytes));
    track.setFileName(path);
    return track;
}

QString Tunes::stem(const QString &path)
{
    if (path == QLatin1String("-"))
        return QStringLiteral("stdin");
    const QFileInfo info(path);
    const QString stem = info.completeBaseName();
    return stem.isEmpty() ? info.fileName() : stem; // ".abc" is all name
}
