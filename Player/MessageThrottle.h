#pragma once

#include <QHash>
#include <QString>
#include <QtGlobal>

/// Lets the same message through at most once a second, so that what goes wrong in every pass
/// does not fill the log.
class MessageThrottle {
public:
    static constexpr qint64 IntervalMs = 1000;

    /// Whether the message may be logged at `nowMs`, a time in milliseconds that never runs back.
    bool admits(const QString &message, qint64 nowMs);

private:
    static constexpr int MaxMessages = 256; // more kinds than that are not worth remembering

    QHash<QString, qint64> m_lastMs;
};
