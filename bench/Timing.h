#pragma once

#include <algorithm>
#include <ctime>

/// How long work takes.
namespace Bench {

constexpr int Rounds = 5;

/// Processor time of this process so far.
inline double ownSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// Of this thread alone.
inline double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The least time of some rounds, in seconds.
template <typename Clock, typename Work> double timed(Clock clock, Work work)
{
    double best = 1e9;
    for (int round = 0; round < Rounds; ++round) {
        const double start = clock();
        work();
        best = std::min(best, clock() - start);
    }
    return best;
}

} // namespace Bench
