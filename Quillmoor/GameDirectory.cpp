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

bool isGameDirectory(const QString &path)
{
    return QFileInfo(path).isDir() && isGameDirectory(QDir(path));
}

QString usualGameDirectory()
{
    for (const QString &home : QStandardPaths::standardLocations(QStandardPaths::HomeLocation)) {
        const QString candidate = home + QStringLiteral("/.steam/root/SteamApps/common/Quillmoor");
        if (isGameDirectory(candidate))
            return QFileInfo(candidate).canonicalFilePath();
    }
    return {};
}

std::optional<QString> namedGameDirectory(const std::optional<QString> &option)
{
    const QString variable = qEnvironmentVariable("QUILLMOOR_GAME");
    if (option || variable.isEmpty())
        return option;
    return variable;
}
