#pragma once

#include <QHash>
#include <QString>
#include <QtGlobal>

/// Lets the same message through at most once a second, and no more than some hundred different
/// ones, so that what goes wrong in every pass does not fill the log.
class MessageThrottle {
public:
    static constexpr qint64 IntervalMs = 1000;
    static constexpr int MaxMessages = 256; ///< different ones within the interval

    /// Whether the message may be logged at `nowMs`, a time in milliseconds that never runs back.
    bool admits(const QString &message, qint64 nowMs);

private:
    void forgetBefore(qint64 ms);

    QHash<QString, qint64> m_lastMs; // of what was let through
};
