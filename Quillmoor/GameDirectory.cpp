#include "Quillmoor/GameDirectory.h"

bool isGameDirectory(const QDir &directory)
{
    QDir assets(directory);
    QDir program(directory);
    return assets.cd(QStringLiteral("assets")) && program.cd(QStringLiteral("win32"))
        && program.exists(QStringLiteral("quillmoor.exe"));
}
