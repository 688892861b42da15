#pragma once

#include "Player/FmodCheck.h"

#include <QtGlobal>

/// The output clock, counted in frames, as player and renderer use it: 64-bit numbers that stop at
/// their limits instead of wrapping.
namespace DspClock {

/// How far ahead of the clock notes are scheduled, in seconds.
constexpr double LookAhead = 0.1;

/// The clock's two halves as one number; 0 when the call fails.
quint64 now(FMOD::System &system, const FmodCheck &check);
/// Output frames per second; 0 when the call fails.
int rate(FMOD::System &system, const FmodCheck &check);

constexpr unsigned int highHalf(quint64 clock)
{
    return static_cast<unsigned int>(clock >> 32);
}
constexpr unsigned int lowHalf(quint64 clock)
{
    return static_cast<unsigned int>(clock);
}

/// `value` without its fraction; 0 for what is negative or no number, the largest number for what
/// lies beyond it.
quint64 truncated(double value);
/// The sum, or the largest number where it lies beyond.
quint64 sum(quint64 a, quint64 b);
/// rate * seconds, truncated.
quint64 frames(double seconds, int rate);

} // namespace DspClock

/// The instant of one scheduling pass.
struct PassClock {
    quint64 now = 0; ///< the output clock
    int rate = 0;    ///< output frames per second

    static PassClock of(FMOD::System &system, const FmodCheck &check);

    /// The clock up to which this pass schedules: 100 ms from now.
    quint64 horizon() const;
};
