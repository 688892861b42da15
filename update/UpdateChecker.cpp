#include "update/UpdateChecker.h"

#include "update/LatestVersion.h"
#include "update/UpdateAddress.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace {

constexpr qint64 MoreThanAllowed = LatestVersion::SizeLimit + 1;

/// On a reply that was ended because of its size: the error that is then noted is our own doing.
constexpr char TooLong[] = "tooLong";

void stopWhenTooLong(QNetworkReply &reply)
{
    if (reply.bytesAvailable() < MoreThanAllowed)
        return;
    reply.setProperty(TooLong, true);
    reply.abort();
}

/// The network layer unpacks a compressed answer as soon as it comes, whatever its size becomes: a
/// megabyte can be a gigabyte. What the server is not to compress is left as it is.
QNetworkRequest latestVersionRequest()
{
    QNetworkRequest request(UpdateAddress::address());
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

/// The buffer's size keeps the network layer from fetching more while nobody looks.
void limitSize(QNetworkReply &reply)
{
    reply.setReadBufferSize(MoreThanAllowed);
    QObject::connect(&reply, &QNetworkReply::readyRead, &reply,
                     [&reply] { stopWhenTooLong(reply); });
}

/// The network layer's own limit counts anew with every byte.
void limitTime(QNetworkReply &reply, std::chrono::milliseconds limit)
{
    QTimer::singleShot(limit, &reply, SLOT(abort()));
}

bool hasFailed(const QNetworkReply &reply)
{
    return reply.error() != QNetworkReply::NoError && !reply.property(TooLong).toBool();
}

/// Nothing of a reply that was ended.
QByteArray bodyOf(QNetworkReply &reply)
{
    return reply.isOpen() ? reply.read(MoreThanAllowed) : QByteArray();
}

} // namespace

UpdateChecker::UpdateChecker(QObject *parent)
    : QObject(parent)
{
}

/// The network layer takes a good part of the program's start to load, and what is to be seen of
/// the window comes first.
void UpdateChecker::checkForUpdates()
{
    QMetaObject::invokeMethod(this, "request", Qt::QueuedConnection);
}

QNetworkAccessManager &UpdateChecker::network()
{
    if (m_network == nullptr) {
        m_network = new QNetworkAccessManager(this);
        connect(m_network, &QNetworkAccessManager::finished, this, &UpdateChecker::onFinished);
    }
    return *m_network;
}

void UpdateChecker::request()
{
    QNetworkReply *const reply = network().get(latestVersionRequest());
    limitSize(*reply);
    limitTime(*reply, m_timeLimit);
}

void UpdateChecker::onFinished(QNetworkReply *reply)
{
    reply->deleteLater();
    if (hasFailed(*reply))
        emit updateCheckFailed(reply->errorString());
    else
        report(*reply);
}

void UpdateChecker::report(QNetworkReply &reply)
{
    LatestVersion latest;
    try {
        latest = LatestVersion::read(bodyOf(reply));
    } catch (const QString &message) {
        emit updateCheckFailed(message);
        return;
    }
    emit updateAvailable(latest.isNewer, latest.name, latest.url);
}
