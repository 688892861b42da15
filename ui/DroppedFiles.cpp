#include "ui/DroppedFiles.h"

#include "model/FileNameCodec.h"

#include <algorithm>

DroppedFiles::Kind DroppedFiles::kind(const QUrl &url)
{
    const QString name = url.fileName(QUrl::FullyDecoded);
    if (!url.isLocalFile())
        return Other;
    if (name.endsWith(QLatin1String(".abc"), Qt::CaseInsensitive))
        return Abc;
    return name.endsWith(QLatin1String(".mid"), Qt::CaseInsensitive) ? Midi : Other;
}

bool DroppedFiles::areSuitable(const QList<QUrl> &urls)
{
    return !urls.isEmpty() && std::all_of(urls.begin(), urls.end(), [](const QUrl &url) {
        return kind(url) != Other;
    });
}

QString DroppedFiles::path(const QUrl &url)
{
    // QUrl::toLocalFile() keeps the "%FF" of a byte that is no UTF-8.
    const QByteArray encoded = url.path(QUrl::FullyEncoded).toLatin1();
    return FileNameCodec::decode(QByteArray::fromPercentEncoding(encoded));
}
