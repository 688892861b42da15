#include "TimedOutput.h"

#include "Sound/ThreadPriority.h"

#include <algorithm>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr double BlockSeconds = static_cast<double>(AudioOutput::BlockFrames) / AudioOutput::Rate;

} // namespace

bool TimedOutput::start(AudioSource &source)
{
    m_isStopping = false;
    m_thread = std::thread([this, &source] { run(source); });
    return true;
}

void TimedOutput::run(AudioSource &source)
{
    ThreadPriority::prefer();
    Clock::time_point start = Clock::now();
    for (double due = BlockSeconds; !m_isStopping; due += BlockSeconds) {
        std::this_thread::sleep_until(start
                                      + std::chrono::duration_cast<Clock::duration>(Seconds(due)));
        source.fill(m_block.data(), BlockFrames);
        const double delay = Seconds(Clock::now() - start).count() - due;
        if (isGap(delay))
            start += std::chrono::duration_cast<Clock::duration>(Seconds(delay));
    }
}

bool TimedOutput::isGap(double delay)
{
    m_delays->longest = std::max(m_delays->longest.load(), delay);
    if (delay < 2 * BlockSeconds)
        return false;
    ++m_delays->gaps;
    return true;
}

void TimedOutput::end()
{
    m_isStopping = true;
    if (m_thread.joinable())
        m_thread.join();
}
