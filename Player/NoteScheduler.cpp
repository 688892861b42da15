#include "Player/NoteScheduler.h"

#include <utility>

NoteScheduler::NoteScheduler(SoundCache &sounds, FmodCheck check, FileChooser chooseFile)
    : m_sounds(sounds)
    , m_check(std::move(check))
    , m_chooseFile(std::move(chooseFile))
{
}

int NoteScheduler::schedule(FMOD::System &system, const QString &trackId, TrackInfo &info,
                            const PassClock &clock, ActiveNotes &notes,
                            const QSet<quint32> &passOver)
{
    if (info.isScheduled()
        || info.track.event(static_cast<int>(info.nextEvent)).time()
            > info.tickOfDsp(clock.horizon(), clock.rate))
        return 0;
    TrackInfo next = info;
    collect(system, next, clock, passOver);
    for (const DueNote &due : m_due)
        play(system, trackId, next, due, notes);
    info = std::move(next);
    return static_cast<int>(m_due.size());
}

void NoteScheduler::collect(FMOD::System &system, TrackInfo &info, const PassClock &clock,
                            const QSet<quint32> &passOver)
{
    m_due.clear();
    const quint64 horizonTick = info.tickOfDsp(clock.horizon(), clock.rate);
    for (; !info.isScheduled(); ++info.nextEvent) {
        const TrackEvent &event = std::as_const(info.track).event(static_cast<int>(info.nextEvent));
        if (event.time() > horizonTick)
            return;
        if (event.type() == TrackEvent::Tempo)
            info.passTempo(event, clock.rate);
        else if (event.isNote() && !info.muted && !info.unplayable
                 && !passOver.contains(info.nextEvent))
            collectNote(system, info, event, clock);
    }
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
}

void scaleFrequency(FMOD::Channel &channel, double pitch, const FmodCheck &check)
{
    float own = 0.0F;
    const FMOD_RESULT result = channel.getFrequency(&own);
    check(result);
    if (result == FMOD_OK)
        check(channel.setFrequency(static_cast<float>(static_cast<double>(own) * pitch)));
}
