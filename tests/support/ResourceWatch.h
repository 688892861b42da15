#pragma once

#include <QtGlobal>

#include <sys/resource.h>

/// Watches that hostile input costs no more than 2 seconds of processor time and 256 MB; sixteen
/// times that under a sanitizer, which is slow and keeps freed memory. (Time on the wall would
/// fail on a busy machine; what waits for ever is ended by ctest.)
class ResourceWatch {
public:
    bool isWithinLimits() const;

private:
    struct Usage {
        qint64 timeMs;
        qint64 peakKb;
    };
    static Usage used();

    Usage m_before = used();
};
