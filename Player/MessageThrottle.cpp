#include "Player/MessageThrottle.h"

#include <iterator>
#include <utility>

bool MessageThrottle::admits(const QString &message, qint64 nowMs)
{
    if (m_lastMs.size() >= MaxMessages)
        forgetBefore(nowMs - IntervalMs);
    const auto last = std::as_const(m_lastMs).constFind(message);
    const bool isKnown = last != m_lastMs.constEnd();
    if (isKnown ? nowMs - *last < IntervalMs : m_lastMs.size() >= MaxMessages)
        return false;
    m_lastMs.insert(message, nowMs);
    return true;
}

void MessageThrottle::forgetBefore(qint64 ms)
{
    for (auto entry = m_lastMs.begin(); entry != m_lastMs.end();)
        entry = *entry <= ms ? m_lastMs.erase(entry) : std::next(entry);
}
