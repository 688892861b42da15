#include "Player/PlayerWorker.h"

#include "Player/DspClock.h"
#include "Sound/BuiltinSystem.h"
#include "Sound/LiveStatus.h"
#include "model/MessageLog.h"

#include <QEvent>
#include <QTimer>

#include <exception>
#include <utility>

namespace {

const char *const Source = "Player/PlayerWorker";

constexpr int Channels = 2048;
constexpr int PassIntervalMs = 1;
constexpr int ReportIntervalMs = 25;

FMOD_RESULT createBuiltin(FMOD::System **system)
{
    return createBuiltinSystem(system);
}

void setInstrument(TrackInfo &info, const Instrument &instrument)
{
    info.instrument = instrument;
    info.unplayable = instrument.mapping().isEmpty();
}

TrackInfo trackInfo(const Instrument &instrument, const Track &track, bool muted, float volume,
                    float pan)
{
    TrackInfo info;
    info.track = track;
    setInstrument(info, instrument);
    info.ticksPerMinute = track.ticksPerMinute();
    info.muted = muted;
    info.volume = volume;
    info.pan = pan;
    return info;
}

} // namespace

PlayerWorker::PlayerWorker(SystemFactory createSystem)
    : m_createSystem(std::move(createSystem))
    , m_timer(new QTimer(this))
    , m_sounds(check())
    , m_scheduler(m_sounds, check())
{
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
    bool handled = true;
    guard([&] { handled = QObject::event(event); });
    return handled;
}

void PlayerWorker::onTimeout()
{
    guard([this] { update(); });
}

template <typename Action> void PlayerWorker::guard(Action action)
{
    try {
        action();
    } catch (const QString &message) {
        onThrown(message);
    } catch (const std::exception &exception) {
        onThrown(QString::fromLocal8Bit(exception.what()));
    } catch (...) {
        onThrown(QStringLiteral("Unknown error."));
    }
}

void PlayerWorker::onThrown(const QString &message)
{
    if (!m_scheduling.isNull())
        m_passOver[std::exchange(m_scheduling, QString())].insert(m_scheduler.failedEvent());
    if (m_throttle.admits(message, m_sinceStart.elapsed()))
        MessageLog::critical(Source, "void PlayerWorker::onThrown(const QString &)", message);
}

void PlayerWorker::initialize()
{
    if (m_system || (!openSystem(m_createSystem) && !openSystem(&createBuiltin)))
        return;
    reportProblem(QString::fromStdString(LiveStatus::problem(*m_system)));
    m_timer->start(PassIntervalMs);
}

bool PlayerWorker::openSystem(const SystemFactory &create)
{
    FMOD_RESULT result = create(&m_system);
    checkErrors(result);
    if (result != FMOD_OK || !m_system) {
        m_system = nullptr;
        reportProblem(QString::fromLatin1(FMOD::errorString(result)));
        return false;
    }
    checkErrors(m_system->setSoftwareChannels(Channels));
    result = m_system->init(Channels, FMOD_INIT_NORMAL, nullptr);
    checkErrors(result);
    if (result == FMOD_OK)
        return true;
    reportProblem(QString::fromLatin1(FMOD::errorString(result)));
    closeSystem();
    return false;
}

void PlayerWorker::closeSystem()
{
    m_tracks.clear();
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
    const bool isReporting = takeReportTime();
    const QStringList trackIds = m_tracks.keys(); // a receiver of our signals may change the tracks
    for (const QString &trackId : trackIds) {
        if (isReporting && m_tracks.contains(trackId))
            emit trackPositionChanged(trackId, m_tracks[trackId].tickOfDsp(clock.now, clock.rate));
        passTrack(trackId, clock);
    }
    fadeAndStop(m_notes, clock.now, check(), this);
    checkErrors(m_system->update());
    if (isReporting)
        reportProblem(QString::fromStdString(LiveStatus::problem(*m_system)));
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
        emit trackStopped(trackId);
        m_tracks.remove(trackId);
    }
}

void PlayerWorker::scheduleTrack(const QString &trackId, TrackInfo &info, const PassClock &clock)
{
    m_scheduling = trackId;
    m_scheduler.schedule(*m_system, trackId, info, clock, m_notes, m_passOver.value(trackId));
    m_scheduling = QString();
    m_passOver.remove(trackId); // they are behind us
}

void PlayerWorker::playNote(const Instrument &instrument, int noteId)
{
    if (!m_system)
        return;
    const InstrumentSample sample = instrument.sample(static_cast<uint>(noteId));
    FMOD::Sound *const sound = m_sounds.sound(*m_system, sample.randomFile());
    if (!sound)
        return;
    FMOD::Channel *channel = nullptr;
    const FMOD_RESULT result = m_system->playSound(FMOD_CHANNEL_FREE, sound, true, &channel);
    checkErrors(result);
    if (result != FMOD_OK || !channel)
        return;
    scaleFrequency(*channel, sample.pitch(), check());
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
    m_passOver.remove(trackId);
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
    if (TrackInfo *const info = findTrack(trackId))
        setInstrument(*info, instrument);
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
        seekTrack(trackId, *info, tickPos);
}

void PlayerWorker::seekAll(quint64 tickPos)
{
    for (auto info = m_tracks.begin(); info != m_tracks.end(); ++info)
        seekTrack(info.key(), *info, tickPos);
}

void PlayerWorker::seekTrack(const QString &trackId, TrackInfo &info, quint64 tickPos)
{
    info.originDsp = DspClock::now(*m_system, check());
    info.originTick = tickPos;
    info.ticksPerMinute = info.track.ticksPerMinute();
    info.nextEvent = 0;
    m_passOver.remove(trackId);
}

void PlayerWorker::stopTrack(const QString &trackId)
{
    if (m_tracks.remove(trackId) == 0)
        return;
    m_passOver.remove(trackId);
    emit trackStopped(trackId);
}

void PlayerWorker::stopAll()
{
    for (const ActiveNote &note : m_notes) {
        if (note.channel)
            checkErrors(note.channel->stop());
    }
    m_notes.clear();
    m_tracks.clear();
    m_passOver.clear();
    m_syncGroups.clear();
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
