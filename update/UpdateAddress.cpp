#include "update/UpdateAddress.h"

#include <QtGlobal>

QString UpdateAddress::configuredHost()
{
    const QString named = qEnvironmentVariable("QUILLMOOR_UPDATE_HOST");
    return named.isEmpty() ? QStringLiteral(QUILLMOOR_UPDATE_HOST) : named;
}

QUrl UpdateAddress::onHost(const QString &host)
{
    return QUrl(QStringLiteral("http://%1/api/lastversion.php").arg(host), QUrl::TolerantMode);
}

const QUrl &UpdateAddress::address()
{
    static const QUrl address = onHost(configuredHost());
    return address;
}
