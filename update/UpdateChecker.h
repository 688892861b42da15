#pragma once

#include <QObject>
#include <QString>

/// Asks the program's web service which version is the newest.
class UpdateChecker : public QObject {
    Q_OBJECT

public:
    explicit UpdateChecker(QObject *parent = nullptr);

    /// Returns at once; the answer arrives as a signal. Calls side by side are answered one by one.
    void checkForUpdates();

signals:
    /// `newVer` is for showing, `url` the address of the download; either may be empty or anything
    /// else that a stranger sends.
    void updateAvailable(bool available, const QString &newVer, const QString &url);
    void updateCheckFailed(const QString &error);
};
