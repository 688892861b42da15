#include "TestSupport/ResourceWatch.h"

#include <sys/resource.h>

namespace {

constexpr qint64 TimeLimitMs = 2000;
constexpr qint64 MemoryLimitKb = 262144;

qint64 peakMemoryKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

ResourceWatch::ResourceWatch()
    : m_peakBefore(peakMemoryKb())
{
    m_timer.start();
}

bool ResourceWatch::isWithinLimits() const
{
    return m_timer.elapsed() < TimeLimitMs && peakMemoryKb() - m_peakBefore < MemoryLimitKb;
}
