#pragma once

#include <QObject>
#include <QString>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

/// Asks the program's web service which version is the newest, and says whether that is newer than
/// this program. Belongs to the thread of the user interface and never keeps it waiting.
///
/// Whatever the service or somebody on the way to it sends, a check ends: with an answer of more
/// than 64 KB, or when the time is over, it has failed. Redirections are not followed. A check that
/// is under way when the checker is destroyed is dropped without a signal.
class UpdateChecker : public QObject {
    Q_OBJECT

public:
    explicit UpdateChecker(QObject *parent = nullptr);

    /// Returns at once: the event loop sends the request, and the answer arrives as a signal. Calls
    /// side by side are answered one by one.
    void checkForUpdates();

    /// How long a check may take from its start to its end: half a minute unless set. It counts for
    /// the checks that start from now on.
    void setTimeLimit(std::chrono::milliseconds limit) { m_timeLimit = limit; }

signals:
    /// `newVer` is for showing, `url` the address of the download; either may be empty or anything
    /// else that a stranger sends.
    void updateAvailable(bool available, const QString &newVer, const QString &url);
    void updateCheckFailed(const QString &error);

public slots:
    /// Reads the reply, says what came of it by a signal and lets the reply be deleted.
    void onFinished(QNetworkReply *reply);

private slots:
    void request();

private:
    QNetworkAccessManager &network();
    void report(QNetworkReply &reply);

    QNetworkAccessManager *m_network = nullptr; // a child, from the first request on
    std::chrono::milliseconds m_timeLimit = std::chrono::seconds(30);
};
