#include "support/ResourceWatch.h"

#include "support/Sanitizer.h"

namespace {

constexpr qint64 TimeLimitMs = qint64(2000) * SanitizerFactor;
constexpr qint64 MemoryLimitKb = qint64(262144) * SanitizerFactor;

qint64 milliseconds(const timeval &time)
{
    return qint64{time.tv_sec} * 1000 + time.tv_usec / 1000;
}

} // namespace

ResourceWatch::Usage ResourceWatch::used()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return {milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime), usage.ru_maxrss};
}

bool ResourceWatch::isWithinLimits() const
{
    const Usage now = used();
    return now.timeMs - m_before.timeMs < TimeLimitMs
        && now.peakKb - m_before.peakKb < MemoryLimitKb;
}
