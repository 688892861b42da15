#include "ui/WebAddresses.h"

QUrl WebAddresses::forum()
{
    return QUrl(QStringLiteral("https://quillmoor-composer.example/forum"));
}

QUrl WebAddresses::bugTracker()
{
    return QUrl(QStringLiteral("https://quillmoor-composer.example/bugs"));
}

QUrl WebAddresses::donation()
{
    return QUrl(QStringLiteral("https://quillmoor-composer.example/donate"));
}

bool WebAddresses::isWebPage(const QUrl &url)
{
    const bool isWeb =
        url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return url.isValid() && isWeb && !url.host().isEmpty();
}
