#include "Player/PlayerWorker.h"

#include "Player/DspClock.h"
#include "Player/ThrownMessage.h"
#include "Sound/BuiltinSystem.h"
#include "Sound/LiveStatus.h"
#include "model/MessageLog.h"

#include <QEvent>
#include <QTimer>

#include <optional>
#include <utility>

namespace {

const char *const Source = "Player/PlayerWorker";

constexpr int Channels = 2048;
constexpr int PassIntervalMs = 1;
constexpr int ReportIntervalMs = 25;

QString textOf(FMOD_RESULT result)
{
    return QString::fromLatin1(FMOD::errorString(result));
}

QString problemOf(FMOD::System &system)
{
    return QString::fromStdString(LiveStatus::problem(system));
}

bool mapsNothing(const Instrument &instrument)
{
    return instrument.mapping().isEmpty();
}

TrackInfo trackInfo(const Instrument &instrument, const Track &track, bool muted, float volume,
                    float pan)
{
    TrackInfo info;
    info.track = track;
    info.instrument = instrument;
    info.ticksPerMinute = track.ticksPerMinute();
    info.muted = muted;
    info.volume = volume;
    info.pan = pan;
    return info;
}

} // namespace

FMOD_RESULT PlayerWorker::createBuiltin(FMOD::System **system)
{
    return createBuiltinSystem(system);
}

PlayerWorker::PlayerWorker(SystemFactory createSystem, SystemFactory createFallback)
    : m_createSystem(std::move(createSystem))
    , m_createFallback(std::move(createFallback))
    , m_sounds(check())
    , m_scheduler(m_sounds, check(), &InstrumentSample::randomFile,
                  [this](const QString &message) { logFailure(message); })
    , m_foresight(m_sounds)
{
    m_timer = new QTimer(this); // only now: event() hears of it
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &PlayerWorker::onTimeout);
    m_positionClock.start();
    m_sinceStart.start();
}

PlayerWorker::~PlayerWorker()
{
    if (!m_system)
        return;
    MessageLog::critical(
        Source, "virtual PlayerWorker::~PlayerWorker()",
        QStringLiteral("PlayerWorker::terminate() was not invoked before destruction!"));
    closeSystem();
}

bool PlayerWorker::event(QEvent *event)
{
    bool isHandled = true;
    guard([&] { isHandled = QObject::event(event); });
    return isHandled;
}

void PlayerWorker::onTimeout()
{
    // The next pass goes on behind what failed. It does not wait a millisecond for that: with
    // hundreds of failing tracks the others would come too late. Each round is another track's.
    int rounds = m_tracks.size() + 1;
    while (rounds > 0 && guard([this] { update(); }) == Outcome::TrackFailed)
        --rounds;
}

template <typename Action> PlayerWorker::Outcome PlayerWorker::guard(Action action)
{
    m_attempt = {};
    const std::optional<QString> failure = messageThrownBy(action);
    return failure ? takeFailure(*failure) : Outcome::Done;
}

PlayerWorker::Outcome PlayerWorker::takeFailure(const QString &message)
{
    const Attempt attempt = std::exchange(m_attempt, {});
    if (!attempt.mapsNothing)
        logFailure(message);
    TrackInfo *const info = attempt.trackId ? findTrack(*attempt.trackId) : nullptr;
    if (!info)
        return Outcome::Failed;
    if (attempt.mapsNothing)
        info->unplayable = true;
    else
        info->failedEvent = m_scheduler.failedEvent();
    return Outcome::TrackFailed;
}

void PlayerWorker::logFailure(const QString &message)
{
    if (m_throttle.admits(message, m_sinceStart.elapsed()))
        MessageLog::critical(Source, "void PlayerWorker::logFailure(const QString &)", message);
}

void PlayerWorker::initialize()
{
    if (m_system || m_isTerminated)
        return;
    QString problem = openSystem(m_createSystem);
    if (!m_system)
        problem = openSystem(m_createFallback);
    reportProblem(problem);
    if (m_system)
        m_timer->start(PassIntervalMs);
}

/// Answers why no sound comes out.
QString PlayerWorker::openSystem(const SystemFactory &create)
{
    FMOD_RESULT result = create(&m_system);
    checkErrors(result);
    if (result != FMOD_OK)
        m_system = nullptr;
    if (!m_system)
        return textOf(result == FMOD_OK ? FMOD_ERR_INTERNAL : result);
    checkErrors(m_system->setSoftwareChannels(Channels));
    result = m_system->init(Channels, FMOD_INIT_NORMAL, nullptr);
    checkErrors(result);
    QString problem = problemOf(*m_system);
    if (result == FMOD_OK)
        return problem;
    closeSystem();
    return problem.isEmpty() ? textOf(result) : problem;
}

void PlayerWorker::closeSystem()
{
    m_tracks.clear();
    m_syncGroups.clear();
    m_notes.clear();
    m_sounds.releaseAll();
    checkErrors(m_system->release());
    m_system = nullptr;
}

void PlayerWorker::reportProblem(const QString &problem)
{
    if (problem == m_problem)
        return;
    m_problem = problem;
    emit soundProblemChanged(problem);
}

void PlayerWorker::terminate()
{
    if (std::exchange(m_isTerminated, true))
        return;
    m_timer->stop();
    if (m_system)
        closeSystem();
    deleteLater();
    emit finished();
}

void PlayerWorker::update()
{
    if (!m_system)
        return;
    const PassClock clock = PassClock::of(*m_system, check());
    if (takeReportTime())
        report(clock);
    const QStringList trackIds = m_tracks.keys(); // who hears our signals may change the tracks
    for (const QString &trackId : trackIds)
        passTrack(trackId, clock);
    fadeAndStop(m_notes, clock.now, check(), this);
    if (!m_system)
        return;
    checkErrors(m_system->update());
    m_foresight.look(*m_system, m_tracks, clock);
}

/// Before any track has its pass: one that fails ends the whole pass.
void PlayerWorker::report(const PassClock &clock)
{
    const QStringList trackIds = m_tracks.keys();
    for (const QString &trackId : trackIds) {
        if (const TrackInfo *const info = findTrack(trackId))
            emit trackPositionChanged(trackId, info->tickOfDsp(clock.now, clock.rate));
    }
    if (m_system)
        reportProblem(problemOf(*m_system));
}

bool PlayerWorker::takeReportTime()
{
    if (m_positionClock.elapsed() <= ReportIntervalMs)
        return false;
    m_positionClock.restart();
    return true;
}

void PlayerWorker::passTrack(const QString &trackId, const PassClock &clock)
{
    TrackInfo *const info = findTrack(trackId);
    if (!info)
        return;
    if (!info->isScheduled()) {
        scheduleTrack(trackId, *info, clock);
    } else if (info->tickOfDsp(clock.now, clock.rate) >= info->track.length()) {
        stopTrack(trackId);
    }
}

void PlayerWorker::scheduleTrack(const QString &trackId, TrackInfo &info, const PassClock &clock)
{
    m_attempt = {trackId, mapsNothing(info.instrument)};
    m_scheduler.schedule(*m_system, trackId, info, clock, m_notes);
    m_attempt = {};
}

void PlayerWorker::playNote(const Instrument &instrument, int noteId)
{
    if (!m_system)
        return;
    m_attempt = {std::nullopt, mapsNothing(instrument)};
    const InstrumentSample sample = instrument.sample(static_cast<uint>(noteId));
    m_sounds.forgetFailures();
    if (FMOD::Sound *const sound = m_sounds.sound(*m_system, sample.randomFile()))
        playSound(sound, sample.pitch());
}

void PlayerWorker::playSound(FMOD::Sound *sound, double pitch)
{
    FMOD::Channel *channel = nullptr;
    const FMOD_RESULT result = m_system->playSound(FMOD_CHANNEL_FREE, sound, true, &channel);
    checkErrors(result);
    if (result != FMOD_OK || !channel)
        return;
    scaleFrequency(*channel, pitch, check());
    checkErrors(channel->setPaused(false));
}

void PlayerWorker::playTrack(const QString &trackId, const Instrument &instrument,
                             const Track &track, bool muted, float volume, float pan)
{
    if (m_system)
        startTrack(trackId, trackInfo(instrument, track, muted, volume, pan), startInstant());
}

void PlayerWorker::playTrack(const QString &trackId, const QString &syncGroup,
                             const Instrument &instrument, const Track &track, bool muted,
                             float volume, float pan)
{
    if (m_system)
        startTrack(trackId, trackInfo(instrument, track, muted, volume, pan),
                   groupInstant(syncGroup));
}

quint64 PlayerWorker::startInstant() const
{
    return PassClock::of(*m_system, check()).horizon();
}

quint64 PlayerWorker::groupInstant(const QString &syncGroup)
{
    auto instant = m_syncGroups.find(syncGroup);
    if (instant == m_syncGroups.end())
        instant = m_syncGroups.insert(syncGroup, startInstant());
    return *instant;
}

void PlayerWorker::startTrack(const QString &trackId, const TrackInfo &prepared, quint64 originDsp)
{
    TrackInfo info = prepared;
    info.originDsp = originDsp;
    info.channelGroup = makeGroup(trackId);
    m_tracks.insert(trackId, info);
    m_foresight.restart(trackId);
    m_sounds.forgetFailures();
    emit trackStarted(trackId);
}

FMOD::ChannelGroup *PlayerWorker::makeGroup(const QString &trackId)
{
    FMOD::ChannelGroup *group = nullptr;
    const FMOD_RESULT result =
        m_system->createChannelGroup(trackId.toLocal8Bit().constData(), &group);
    checkErrors(result);
    return result == FMOD_OK ? group : nullptr;
}

void PlayerWorker::muteTrack(const QString &trackId, bool mute)
{
    if (TrackInfo *const info = findTrack(trackId))
        info->muted = mute;
}

void PlayerWorker::changeInstrument(const QString &trackId, const Instrument &instrument)
{
    TrackInfo *const info = findTrack(trackId);
    if (!info)
        return;
    m_foresight.restart(trackId);
    info->instrument = instrument;
    info->unplayable = false;
    info->failedEvent.reset();
}

void PlayerWorker::setVolume(const QString &trackId, float volume)
{
    if (TrackInfo *const info = findTrack(trackId))
        info->volume = volume;
}

void PlayerWorker::setPan(const QString &trackId, float pan)
{
    if (TrackInfo *const info = findTrack(trackId))
        info->pan = pan;
}

void PlayerWorker::seek(const QString &trackId, quint64 tickPos)
{
    if (TrackInfo *const info = findTrack(trackId))
        seekTrack(trackId, *info, tickPos, DspClock::now(*m_system, check()));
}

/// All from one reading of the clock, or they would not stay together.
void PlayerWorker::seekAll(quint64 tickPos)
{
    if (m_tracks.isEmpty())
        return;
    const quint64 now = DspClock::now(*m_system, check());
    for (auto info = m_tracks.begin(); info != m_tracks.end(); ++info)
        seekTrack(info.key(), *info, tickPos, now);
}

void PlayerWorker::seekTrack(const QString &trackId, TrackInfo &info, quint64 tickPos, quint64 now)
{
    m_foresight.restart(trackId);
    info.originDsp = now;
    info.originTick = tickPos;
    info.ticksPerMinute = info.track.ticksPerMinute();
    info.nextEvent = 0;
    info.failedEvent.reset();
}

void PlayerWorker::stopTrack(const QString &trackId)
{
    if (m_tracks.remove(trackId) > 0)
        emit trackStopped(trackId);
}

void PlayerWorker::stopAll()
{
    if (m_isTerminated)
        return;
    for (const ActiveNote &note : m_notes) {
        if (note.channel)
            checkErrors(note.channel->stop());
    }
    m_notes.clear();
    m_tracks.clear();
    m_syncGroups.clear();
    m_foresight.restartAll();
    emit allTracksStopped();
}

TrackInfo *PlayerWorker::findTrack(const QString &trackId)
{
    const auto info = m_tracks.find(trackId);
    return info == m_tracks.end() ? nullptr : &*info;
}

FmodCheck PlayerWorker::check() const
{
    return [this](FMOD_RESULT result) { checkErrors(result); };
}

void PlayerWorker::checkErrors(FMOD_RESULT result) const
{
    logFmodError(Source, "void PlayerWorker::checkErrors(FMOD_RESULT) const", result);
}
