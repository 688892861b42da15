#include "Player/SampleForesight.h"

#include "Player/ThrownMessage.h"
#include "Sound/LiveAhead.h"

#include <algorithm>
#include <utility>

void SampleForesight::restart(const QString &trackId)
{
    m_next.remove(trackId);
    m_reached = 0;
}

void SampleForesight::restartAll()
{
    m_next.clear();
    m_reached = 0;
}

void SampleForesight::look(FMOD::System &system, const Tracks &tracks, const PassClock &clock)
{
    if (!LiveAhead::isPossible(system))
        return;
    const quint64 from = std::max(m_reached, clock.horizon());
    const quint64 to = std::min(DspClock::sum(from, DspClock::frames(Step, clock.rate)),
                                DspClock::sum(clock.now, DspClock::frames(Reach, clock.rate)));
    m_mayLoad = true;
    for (auto track = tracks.begin(); track != tracks.end(); ++track) {
        if (!lookAt(system, track.key(), *track, {to, clock.rate}))
            return; // the next pass goes on here
    }
    m_reached = to;
}

/// Answers whether all up to `target` was looked at.
bool SampleForesight::lookAt(FMOD::System &system, const QString &trackId, const TrackInfo &info,
                             const PassClock &target)
{
    if (info.muted || info.unplayable || info.isScheduled())
        return true;
    quint32 &next = m_next[trackId];
    next = std::max(next, info.nextEvent);
    const quint64 limit = info.tickOfDsp(target.now, target.rate);
    for (; next < static_cast<quint32>(info.track.eventCount()); ++next) {
        const TrackEvent &event = info.track.event(static_cast<int>(next));
        if (event.time() > limit)
            return true;
        const bool isToCome = event.isNote() && event.time() >= info.originTick;
        if (isToCome && !prepare(system, info, event))
            return false;
    }
    return true;
}

/// Answers false when that has to wait for the next pass.
bool SampleForesight::prepare(FMOD::System &system, const TrackInfo &info, const TrackEvent &event)
{
    const auto mapped = info.instrument.mapping().constFind(event.note());
    if (mapped == info.instrument.mapping().constEnd())
        return true;
    for (const QString &path : mapped->files()) {
        if (!prepareFile(system, path, mapped->pitch()))
            return false;
    }
    return true;
}

bool SampleForesight::prepareFile(FMOD::System &system, const QString &path, double pitch)
{
    if (!m_sounds.isKnown(path) && !std::exchange(m_mayLoad, false))
        return false;
    FMOD::Sound *sound = nullptr;
    messageThrownBy([&] { sound = m_sounds.sound(system, path); });
    if (sound)
        LiveAhead::prepare(system, *sound, pitch);
    return true;
}
