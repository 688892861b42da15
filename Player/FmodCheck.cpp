#include "Player/FmodCheck.h"

#include "model/MessageLog.h"

void logFmodError(const char *source, const char *function, FMOD_RESULT result)
{
    if (result == FMOD_OK)
        return;
    const QString reason = QString::fromLatin1(FMOD::errorString(result));
    MessageLog::critical(source, function, QStringLiteral("FMOD Error: %1\n").arg(reason));
}
