#pragma once

#include <QElapsedTimer>

/// Watches that hostile input costs no more than 2 seconds and 256 MB.
class ResourceWatch {
public:
    ResourceWatch();

    bool isWithinLimits() const;

private:
    QElapsedTimer m_timer;
    qint64 m_peakBefore;
};
