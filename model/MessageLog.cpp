#include "model/MessageLog.h"

#include <QDebug>
#include <QMessageLogger>

namespace MessageLog {

void warning(const char *source, const char *function, const QString &text)
{
    QMessageLogger(source, 0, function).warning().noquote() << text;
}

void critical(const char *source, const char *function, const QString &text)
{
    QMessageLogger(source, 0, function).critical().noquote() << text;
}

void quotedWarning(const char *source, const char *function, const QString &text)
{
    QMessageLogger(source, 0, function).warning() << text;
}

} // namespace MessageLog
