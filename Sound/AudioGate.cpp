#include "Sound/AudioGate.h"

#include <algorithm>

namespace {

// Read from a page that the kernel shares with the process, so no system call.
std::int64_t steadyNanoseconds()
{
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

} // namespace

void AudioGate::open()
{
    m_deviceFrames.store(0, std::memory_order_relaxed);
    m_lastPull.store(0, std::memory_order_relaxed);
    m_isOpen.store(true, std::memory_order_release);
}

void AudioGate::close()
{
    m_isOpen.store(false, std::memory_order_release);
    m_lastPull.store(0, std::memory_order_relaxed);
}

void AudioGate::fillForDevice(float *interleaved, std::size_t frames) noexcept
{
    if (m_isOpen.load(std::memory_order_acquire) && enter()) {
        fillLocked(interleaved, frames);
        leave();
        return;
    }
    std::fill_n(interleaved, frames * AudioOutput::Channels, 0.0F);
}

void AudioGate::fillLocked(float *interleaved, std::size_t frames) noexcept
{
    m_source.fill(interleaved, frames);
    m_deviceFrames.fetch_add(frames, std::memory_order_relaxed);
    m_lastPull.store(steadyNanoseconds(), std::memory_order_relaxed);
}

void AudioGate::pullForClock(float *scratch, std::size_t frames) noexcept
{
    if (isDevicePulling() || !enter())
        return;
    m_source.fill(scratch, frames);
    leave();
}

bool AudioGate::isDevicePulling() const
{
    const std::int64_t last = m_lastPull.load(std::memory_order_relaxed);
    const std::chrono::nanoseconds silence(steadyNanoseconds() - last);
    return last != 0 && m_isOpen.load(std::memory_order_acquire) && silence < Patience;
}
