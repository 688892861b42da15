#include "Player/MessageThrottle.h"

bool MessageThrottle::admits(const QString &message, qint64 nowMs)
{
    const auto last = m_lastMs.constFind(message);
    if (last != m_lastMs.constEnd() && nowMs - *last < IntervalMs)
        return false;
    if (m_lastMs.size() >= MaxMessages)
        m_lastMs.clear();
    m_lastMs.insert(message, nowMs);
    return true;
}
