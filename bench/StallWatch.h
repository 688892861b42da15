#pragma once

#include "Timing.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <chrono>

namespace Bench {

/// How long the thread of the event loop is kept from its next turn, by the turns of the loop and
/// by work that is handed over as one. Processor time is what counts: others may be running here.
class StallWatch {
public:
    /// One piece of work, during which nothing else is answered.
    template <typename Work> void take(Work work)
    {
        const double processor = threadSeconds();
        const Clock::time_point start = Clock::now();
        work();
        note((threadSeconds() - processor) * 1e3, since(start));
    }

    /// One turn of the loop.
    void turn()
    {
        take([] { QCoreApplication::processEvents(); });
    }

    /// Turns until none has done much for a while.
    void untilIdle()
    {
        constexpr double busy = 2;
        constexpr double idle = 300;
        for (Clock::time_point last = Clock::now(); since(last) < idle;) {
            turn();
            if (m_last > busy)
                last = Clock::now();
        }
    }

    /// Turns for so many milliseconds, with rests between them.
    void forMilliseconds(double duration)
    {
        for (const Clock::time_point start = Clock::now(); since(start) < duration;) {
            turn();
            QThread::usleep(500);
        }
    }

    // In milliseconds.
    double worst() const { return m_worst; } ///< processor time
    double worstByWall() const { return m_worstByWall; }
    double sum() const { return m_sum; }             ///< processor time
    double sumByWall() const { return m_sumByWall; } ///< without rests

private:
    using Clock = std::chrono::steady_clock;

    static double since(Clock::time_point start)
    {
        return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    }

    void note(double processor, double wall)
    {
        m_last = processor;
        m_worst = std::max(m_worst, processor);
        m_worstByWall = std::max(m_worstByWall, wall);
        m_sum += processor;
        m_sumByWall += wall;
    }

    double m_last = 0;
    double m_worst = 0;
    double m_worstByWall = 0;
    double m_sum = 0;
    double m_sumByWall = 0;
};

} // namespace Bench
