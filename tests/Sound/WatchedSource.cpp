#include "WatchedSource.h"

#include <algorithm>

using std::chrono::nanoseconds;

void WatchedSource::fill(float *interleaved, std::size_t frames) noexcept
{
    if (m_isInside.exchange(true, std::memory_order_relaxed))
        m_wasCrowded = true;
    noteGap();
    if (m_watched != nullptr)
        m_watched->fill(interleaved, frames);
    else
        std::fill_n(interleaved, AudioOutput::Channels * frames, Level);
    m_frames += frames;
    m_isInside.store(false, std::memory_order_relaxed);
}

void WatchedSource::noteGap()
{
    const auto now = nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
    if (m_last != 0)
        m_longestGap = std::max(m_longestGap.load(), now - m_last);
    m_last = now;
}

std::chrono::milliseconds WatchedSource::longestGap() const
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(nanoseconds(m_longestGap));
}
