#include "Player/TrackInfo.h"

#include "Player/DspClock.h"

#include <algorithm>

namespace {

double difference(quint64 a, quint64 b)
{
    return a >= b ? static_cast<double>(a - b) : -static_cast<double>(b - a);
}

} // namespace

double TrackInfo::samplesPerTick(int rate) const
{
    const quint64 tempo = ticksPerMinute == 0 ? Ticks::DefaultPerMinute : ticksPerMinute;
    return rate * 60.0 / static_cast<double>(tempo);
}

quint64 TrackInfo::dspOfTick(quint64 tick, int rate) const
{
    return DspClock::truncated(static_cast<double>(originDsp)
                               + difference(tick, originTick) * samplesPerTick(rate));
}

quint64 TrackInfo::tickOfDsp(quint64 dsp, int rate) const
{
    if (rate <= 0)
        return originTick;
    return DspClock::truncated(static_cast<double>(originTick)
                               + difference(dsp, originDsp) / samplesPerTick(rate));
}

void TrackInfo::passTempo(const TrackEvent &event, int rate)
{
    if (event.ticksPerMinute() == 0)
        return;
    if (event.time() >= originTick) {
        originDsp = dspOfTick(event.time(), rate);
        originTick = event.time();
    }
    ticksPerMinute = event.ticksPerMinute();
}

quint64 TrackInfo::endDsp(int rate) const
{
    quint64 end = originDsp;
    TrackInfo info = *this;
    for (const TrackEvent &event : track.events()) {
        end = std::max(end, info.dspOfTick(DspClock::sum(event.time(), event.duration()), rate));
        if (event.type() == TrackEvent::Tempo)
            info.passTempo(event, rate);
    }
    return DspClock::sum(end, DspClock::frames(instrument.fadeout(), rate));
}

bool TrackInfo::isScheduled() const
{
    return nextEvent >= static_cast<quint32>(track.eventCount());
}
