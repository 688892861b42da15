#include "Sound/SilentClock.h"

#include <chrono>
#include <cstdint>

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

SilentClock::~SilentClock()
{
    m_isStopping = true;
    if (m_thread.joinable())
        m_thread.join();
}

void SilentClock::start()
{
    m_thread = std::thread([this] { run(); });
}

void SilentClock::run()
{
    // A busy machine's delay is made up for. After a halt of the whole process, music goes on from
    // where it was.
    constexpr auto LongestLag = std::chrono::seconds(1);
    Clock::time_point start = Clock::now();
    for (std::uint64_t frames = AudioOutput::BlockFrames; !m_isStopping;
         frames += AudioOutput::BlockFrames) {
        std::this_thread::sleep_until(start + timeOf(frames));
        const Clock::duration lag = Clock::now() - (start + timeOf(frames));
        if (lag > LongestLag)
            start += lag;
        m_gate.pullForClock(m_scratch.data(), AudioOutput::BlockFrames);
    }
}
