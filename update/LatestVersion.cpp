#include "update/LatestVersion.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

/// What the web service counts this release as.
constexpr quint64 ThisVersion = packedVersion(0, 8, 5, 0);

[[noreturn]] void throwUnreadable()
{
    throw QStringLiteral("Could not read update information");
}

QJsonObject rootOf(const QByteArray &reply)
{
    const QJsonDocument document =
        reply.size() > LatestVersion::SizeLimit ? QJsonDocument() : QJsonDocument::fromJson(reply);
    if (!document.isObject())
        throwUnreadable();
    return document.object();
}

quint64 packed(const QJsonArray &version)
{
    if (version.size() != 4)
        throwUnreadable();
    return packedVersion(version[0].toInt(), version[1].toInt(), version[2].toInt(),
                         version[3].toInt());
}

} // namespace

LatestVersion LatestVersion::read(const QByteArray &reply)
{
    const QJsonObject root = rootOf(reply);
    LatestVersion latest;
    latest.isNewer = packed(root[QLatin1String("version")].toArray()) > ThisVersion;
    latest.name = root[QLatin1String("versionString")].toString();
    latest.url = root[QLatin1String("url")].toString();
    return latest;
}
