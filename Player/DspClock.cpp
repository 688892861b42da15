#include "Player/DspClock.h"

#include <limits>

namespace DspClock {

namespace {

constexpr quint64 Largest = std::numeric_limits<quint64>::max();
constexpr double Beyond = 18446744073709551616.0; // 2^64

} // namespace

quint64 now(FMOD::System &system, const FmodCheck &check)
{
    unsigned int high = 0;
    unsigned int low = 0;
    const FMOD_RESULT result = system.getDSPClock(&high, &low);
    check(result);
    return result == FMOD_OK ? quint64{high} << 32 | low : 0;
}

int rate(FMOD::System &system, const FmodCheck &check)
{
    int sampleRate = 0;
    const FMOD_RESULT result =
        system.getSoftwareFormat(&sampleRate, nullptr, nullptr, nullptr, nullptr, nullptr);
    check(result);
    return result == FMOD_OK ? sampleRate : 0;
}

quint64 truncated(double value)
{
    if (!(value > 0.0))
        return 0;
    return value < Beyond ? static_cast<quint64>(value) : Largest;
}

quint64 sum(quint64 a, quint64 b)
{
    return b > Largest - a ? Largest : a + b;
}

quint64 frames(double seconds, int rate)
{
    return truncated(rate * seconds);
}

} // namespace DspClock

PassClock PassClock::of(FMOD::System &system, const FmodCheck &check)
{
    PassClock clock;
    clock.now = DspClock::now(system, check);
    clock.rate = DspClock::rate(system, check);
    return clock;
}

quint64 PassClock::horizon() const
{
    return DspClock::sum(now, DspClock::frames(DspClock::LookAhead, rate));
}
