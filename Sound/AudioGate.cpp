#include "Sound/AudioGate.h"

#include <algorithm>
#include <thread>

namespace {

using std::chrono::nanoseconds;

// Read from a page that the kernel shares with the process, so no system call.
std::int64_t steadyNanoseconds()
{
    return nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// A device's own clock is never off by as much as this allows.
bool isTooMany(std::uint64_t frames, nanoseconds elapsed)
{
    constexpr double Tolerance = 1.2;
    const double seconds = std::chrono::duration<double>(elapsed * Tolerance).count()
        + std::chrono::duration<double>(AudioGate::Head).count();
    return static_cast<double>(frames) > seconds * AudioOutput::Rate;
}

} // namespace

void AudioGate::open()
{
    m_isRacing.store(false, std::memory_order_relaxed);
    m_deviceFrames.store(0, std::memory_order_relaxed);
    m_lastPull.store(0, std::memory_order_relaxed);
    m_lastLongPause.store(0, std::memory_order_relaxed);
    m_patience.store(nanoseconds(Patience).count(), std::memory_order_relaxed);
    m_opened.store(steadyNanoseconds(), std::memory_order_relaxed);
    m_isOpen.store(true, std::memory_order_release);
}

void AudioGate::close()
{
    m_isOpen.store(false, std::memory_order_release);
}

void AudioGate::shut()
{
    close();
    while (!enter()) // for good
        std::this_thread::sleep_for(std::chrono::microseconds(100));
}

void AudioGate::fillForDevice(float *interleaved, std::size_t frames) noexcept
{
    bool isFilled = false;
    if (enter()) {
        isFilled = mayDevicePull();
        if (isFilled) {
            m_source.fill(interleaved, frames);
            m_deviceFrames.fetch_add(frames, std::memory_order_relaxed);
            m_lastPull.store(steadyNanoseconds(), std::memory_order_relaxed);
        }
        leave();
    }
    if (!isFilled)
        std::fill_n(interleaved, frames * AudioOutput::Channels, 0.0F);
}

bool AudioGate::mayDevicePull() noexcept
{
    if (!m_isOpen.load(std::memory_order_acquire))
        return false;
    const std::int64_t now = steadyNanoseconds();
    const nanoseconds elapsed(now - m_opened.load(std::memory_order_relaxed));
    if (isTooMany(m_deviceFrames.load(std::memory_order_relaxed), elapsed))
        m_isRacing.store(true, std::memory_order_relaxed);
    if (const std::int64_t last = m_lastPull.load(std::memory_order_relaxed); last != 0)
        learnFrom(nanoseconds(now - last), now);
    return !isDeviceRacing();
}

/// A single long pause may be a busy machine's. It must not cost the promise of a quick change to
/// the clock when the device is gone.
void AudioGate::learnFrom(nanoseconds pause, std::int64_t now) noexcept
{
    const nanoseconds sinceLong(now - m_lastLongPause.load(std::memory_order_relaxed));
    nanoseconds patience(m_patience.load(std::memory_order_relaxed));
    if (pause > Patience) {
        const bool isHabit = sinceLong < Memory && pause <= LongestPatience;
        patience = isHabit ? std::min<nanoseconds>(pause + pause / 2, LongestPatience) : Patience;
        m_lastLongPause.store(now, std::memory_order_relaxed);
    } else if (sinceLong > Memory) {
        patience = Patience;
    }
    m_patience.store(patience.count(), std::memory_order_relaxed);
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
    const nanoseconds silence(steadyNanoseconds() - last);
    const nanoseconds patience(m_patience.load(std::memory_order_relaxed));
    return last != 0 && m_isOpen.load(std::memory_order_acquire) && silence < patience;
}
