#include "Sound/SilentClock.h"

#include <chrono>
#include <cstdint>
#include <system_error>

namespace {

using Clock = std::chrono::steady_clock;

/// From the start in whole frames, so that nothing is lost to rounding however long it runs.
Clock::duration timeOf(std::uint64_t frames)
{
    constexpr std::uint64_t Rate = AudioOutput::Rate;
    return std::chrono::seconds(frames / Rate)
        + std::chrono::nanoseconds(frames % Rate * 1'000'000'000 / Rate);
}

} // namespace

bool SilentClock::start()
{
    m_isStopping = false;
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error &) {
        return false;
    }
    return true;
}

void SilentClock::stop()
{
    m_isStopping = true;
    if (m_thread.joinable())
        m_thread.join();
}

void SilentClock::run()
{
    // After a halt of the whole machine time goes on from there; it is not made up for.
    constexpr auto LongestLag = std::chrono::milliseconds(200);
    Clock::time_point start = Clock::now();
    for (std::uint64_t frames = AudioOutput::BlockFrames; !m_isStopping;
         frames += AudioOutput::BlockFrames) {
        std::this_thread::sleep_until(start + timeOf(frames));
        m_gate.pullForClock(m_scratch.data(), AudioOutput::BlockFrames);
        const Clock::duration lag = Clock::now() - (start + timeOf(frames));
        if (lag > LongestLag)
            start += lag;
    }
}
