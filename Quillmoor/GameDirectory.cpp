#include "Quillmoor/GameDirectory.h"

#include <QFileInfo>
#include <QStandardPaths>

bool isGameDirectory(const QDir &directory)
{
    QDir assets(directory);
    QDir program(directory);
    return assets.cd(QStringLiteral("assets")) && program.cd(QStringLiteral("win32"))
        && program.exists(QStringLiteral("quillmoor.exe"));
}

QString usualGameDirectory()
{
    for (const QString &home : QStandardPaths::standardLocations(QStandardPaths::HomeLocation)) {
        const QFileInfo candidate(home + QStringLiteral("/.steam/root/SteamApps/common/Quillmoor"));
        if (candidate.isDir() && isGameDirectory(QDir(candidate.filePath())))
            return candidate.canonicalFilePath();
    }
    return {};
}
