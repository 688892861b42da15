#include "cli/Tunes.h"

#include "ABC/ABCFile.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace {

const QLatin1String StandardInput("-");

Track readStandardInput()
{
    QFile file;
    if (!file.open(stdin, QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw QStringLiteral("Could not open file.");
    return readABC(file);
}

} // namespace

Track Tunes::read(const QString &path)
{
    if (path.isEmpty()) // which Qt would add a warning of its own to
        throw QStringLiteral("Could not open file.");
    return path == StandardInput ? readStandardInput() : loadABCFile(path);
}

QString Tunes::stem(const QString &path)
{
    if (path == StandardInput)
        return QStringLiteral("stdin");
    const QFileInfo info(path);
    const QString stem = info.completeBaseName();
    return stem.isEmpty() ? info.fileName() : stem; // ".abc" is all name
}
