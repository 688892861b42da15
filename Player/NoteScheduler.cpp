#include "Player/NoteScheduler.h"

#include "Player/ThrownMessage.h"
#include "Sound/PlannedFade.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

const TrackEvent &eventAt(const TrackInfo &info)
{
    return info.track.event(static_cast<int>(info.nextEvent));
}

/// What follows must not throw: half of the notes would sound twice.
void makeRoom(ActiveNotes &notes, std::size_t more)
{
    const std::size_t needed = notes.size() + more;
    if (needed > notes.capacity())
        notes.reserve(std::max(needed, 2 * notes.capacity()));
}

} // namespace

NoteScheduler::NoteScheduler(SoundCache &sounds, FmodCheck check, FileChooser chooseFile,
                             FailureHandler onFailure)
    : m_sounds(sounds)
    , m_check(std::move(check))
    , m_chooseFile(std::move(chooseFile))
    , m_onFailure(std::move(onFailure))
{
}

int NoteScheduler::schedule(FMOD::System &system, const QString &trackId, TrackInfo &info,
                            const PassClock &clock, ActiveNotes &notes)
{
    if (info.isScheduled() || eventAt(info).time() > info.tickOfDsp(clock.horizon(), clock.rate))
        return 0;
    TrackInfo next = info;
    collect(system, next, clock);
    makeRoom(notes, m_due.size());
    for (const DueNote &due : m_due)
        play(system, trackId, next, due, notes);
    next.failedEvent.reset();
    info = std::move(next);
    return static_cast<int>(m_due.size());
}

void NoteScheduler::collect(FMOD::System &system, TrackInfo &info, const PassClock &clock)
{
    m_due.clear();
    const quint64 horizonTick = info.tickOfDsp(clock.horizon(), clock.rate);
    for (; !info.isScheduled(); ++info.nextEvent) {
        const TrackEvent &event = eventAt(info);
        if (event.time() > horizonTick)
            return;
        if (event.type() == TrackEvent::Tempo)
            info.passTempo(event, clock.rate);
        else if (!event.isNote() || info.muted || info.unplayable)
            continue;
        else if (info.failedEvent)
            collectLeniently(system, info, event, clock);
        else
            collectNote(system, info, event, clock);
    }
}

void NoteScheduler::collectLeniently(FMOD::System &system, const TrackInfo &info,
                                     const TrackEvent &event, const PassClock &clock)
{
    if (info.failedEvent == info.nextEvent)
        return;
    const std::optional<QString> failure =
        messageThrownBy([&] { collectNote(system, info, event, clock); });
    if (failure)
        m_onFailure(*failure);
}

void NoteScheduler::collectNote(FMOD::System &system, const TrackInfo &info,
                                const TrackEvent &event, const PassClock &clock)
{
    const quint64 startDsp = info.dspOfTick(event.time(), clock.rate);
    if (event.time() < info.originTick || startDsp < clock.now)
        return;
    m_failedEvent = info.nextEvent;
    const InstrumentSample sample = info.instrument.sample(event.note());

    DueNote due;
    due.sound = m_sounds.sound(system, m_chooseFile(sample));
    due.pitch = sample.pitch();
    due.eventIndex = info.nextEvent;
    due.startDsp = startDsp;
    due.releaseDsp = info.dspOfTick(DspClock::sum(event.time(), event.duration()), clock.rate);
    due.fadeSamples = DspClock::frames(info.instrument.fadeout(), clock.rate);
    m_due.push_back(due);
}

void NoteScheduler::play(FMOD::System &system, const QString &trackId, const TrackInfo &info,
                         const DueNote &due, ActiveNotes &notes) const
{
    ActiveNote note;
    note.channel = openChannel(system, due.sound);
    note.releaseDsp = due.releaseDsp;
    note.fadeSamples = due.fadeSamples;
    note.fadeEndDsp = DspClock::sum(due.releaseDsp, due.fadeSamples);
    note.volume = info.volume;
    note.trackId = trackId;
    note.startDsp = due.startDsp;
    note.eventIndex = due.eventIndex;
    if (note.channel)
        prepare(*note.channel, info, due);
    notes.push_back(note);
    if (note.channel)
        m_check(note.channel->setPaused(false));
}

FMOD::Channel *NoteScheduler::openChannel(FMOD::System &system, FMOD::Sound *sound) const
{
    if (!sound)
        return nullptr;
    FMOD::Channel *channel = nullptr;
    const FMOD_RESULT result = system.playSound(FMOD_CHANNEL_FREE, sound, true, &channel);
    m_check(result);
    return result == FMOD_OK ? channel : nullptr;
}

void NoteScheduler::prepare(FMOD::Channel &channel, const TrackInfo &info, const DueNote &due) const
{
    scaleFrequency(channel, due.pitch, m_check);
    m_check(channel.setVolume(info.volume));
    m_check(channel.setPan(info.pan));
    if (info.channelGroup)
        m_check(channel.setChannelGroup(info.channelGroup));
    m_check(channel.setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, DspClock::highHalf(due.startDsp),
                             DspClock::lowHalf(due.startDsp)));
    PlannedFade::plan(channel, due.releaseDsp, due.fadeSamples);
}

void scaleFrequency(FMOD::Channel &channel, double pitch, const FmodCheck &check)
{
    float own = 0.0F;
    const FMOD_RESULT result = channel.getFrequency(&own);
    check(result);
    if (result == FMOD_OK)
        check(channel.setFrequency(static_cast<float>(static_cast<double>(own) * pitch)));
}
