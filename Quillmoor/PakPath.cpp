#include "Quillmoor/PakPath.h"

#include "Quillmoor/PakReader.h"

namespace {

const QLatin1String Scheme("pak://");
const QLatin1String Separator("::");

} // namespace

bool PakPath::isPakPath(const QString &path)
{
    return path.startsWith(Scheme);
}

QString PakPath::prefix(const QString &package)
{
    return Scheme + package + Separator;
}

PakPath PakPath::parse(const QString &path)
{
    const int separator = path.indexOf(Separator, Scheme.size());
    if (!isPakPath(path) || separator < 0)
        throw QStringLiteral("Invalid pak:// filename");
    return {path.mid(Scheme.size(), separator - Scheme.size()),
            path.mid(separator + Separator.size())};
}

QByteArray readPakFile(const QString &pakUrl)
{
    const PakPath path = PakPath::parse(pakUrl);
    PakReader reader(path.package);
    return reader.getFile(path.inner);
}
