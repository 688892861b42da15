#include "Player/TrackPlayer.h"

#include "Sound/ThreadPriority.h"

#include <QThread>

#include <utility>

TrackPlayer::TrackPlayer(QObject *parent, PlayerWorker::SystemFactory createSystem)
    : QObject(parent)
    , m_thread(new QThread(this))
    , m_worker(new PlayerWorker(std::move(createSystem)))
{
    qRegisterMetaType<Track>("Track"); // both cross the threads
    qRegisterMetaType<Instrument>("Instrument");
    m_worker->moveToThread(m_thread);
    connectWorker();
    m_thread->start();
    if (m_thread->isRunning())
        QMetaObject::invokeMethod(m_worker, "initialize");
    else
        dropWorker();
}

TrackPlayer::~TrackPlayer()
{
    QMetaObject::invokeMethod(m_worker, "terminate");
    m_playingTracks.clear();
    m_thread->wait();
}

/// Calls that nobody will ever take would pile up.
void TrackPlayer::dropWorker()
{
    delete m_worker;
    m_soundProblem = QStringLiteral("Could not start a thread for the sound.");
}

void TrackPlayer::connectWorker()
{
    PlayerWorker *const from = m_worker;
    // A pass that comes too late is heard; what this thread does takes little of the machine.
    connect(m_thread, &QThread::started, from, &ThreadPriority::prefer, Qt::DirectConnection);
    // Queued, quit() would wait for the event loop of this thread, which the destructor blocks.
    connect(from, &PlayerWorker::finished, m_thread, &QThread::quit, Qt::DirectConnection);
    connect(from, &PlayerWorker::finished, from, &PlayerWorker::deleteLater);
    connect(from, &PlayerWorker::trackStarted, this, &TrackPlayer::onTrackStarted);
    connect(from, &PlayerWorker::trackStopped, this, &TrackPlayer::onTrackStopped);
    connect(from, &PlayerWorker::allTracksStopped, this, &TrackPlayer::onAllTracksStopped);
    connect(from, &PlayerWorker::trackPositionChanged, this, &TrackPlayer::trackPositionChanged);
    connect(from, &PlayerWorker::notePressed, this, &TrackPlayer::notePressed);
    connect(from, &PlayerWorker::noteReleased, this, &TrackPlayer::noteReleased);
    connect(from, &PlayerWorker::soundProblemChanged, this, &TrackPlayer::onSoundProblemChanged);
}

void TrackPlayer::playNote(const Instrument &instrument, int noteId)
{
    QMetaObject::invokeMethod(m_worker, "playNote", Q_ARG(Instrument, instrument),
                              Q_ARG(int, noteId));
}

void TrackPlayer::playTrack(const QString &trackId, const Instrument &instrument,
                            const Track &track, bool muted, float volume, float pan)
{
    QMetaObject::invokeMethod(m_worker, "playTrack", Q_ARG(QString, trackId),
                              Q_ARG(Instrument, instrument), Q_ARG(Track, track),
                              Q_ARG(bool, muted), Q_ARG(float, volume), Q_ARG(float, pan));
}

void TrackPlayer::playTrack(const QString &trackId, const QString &syncGroup,
                            const Instrument &instrument, const Track &track, bool muted,
                            float volume, float pan)
{
    QMetaObject::invokeMethod(m_worker, "playTrack", Q_ARG(QString, trackId),
                              Q_ARG(QString, syncGroup), Q_ARG(Instrument, instrument),
                              Q_ARG(Track, track), Q_ARG(bool, muted), Q_ARG(float, volume),
                              Q_ARG(float, pan));
}

void TrackPlayer::muteTrack(const QString &trackId, bool mute)
{
    QMetaObject::invokeMethod(m_worker, "muteTrack", Q_ARG(QString, trackId), Q_ARG(bool, mute));
}

void TrackPlayer::changeInstrument(const QString &trackId, const Instrument &instrument)
{
    QMetaObject::invokeMethod(m_worker, "changeInstrument", Q_ARG(QString, trackId),
                              Q_ARG(Instrument, instrument));
}

void TrackPlayer::setVolume(const QString &trackId, float volume)
{
    QMetaObject::invokeMethod(m_worker, "setVolume", Q_ARG(QString, trackId), Q_ARG(float, volume));
}

void TrackPlayer::setPan(const QString &trackId, float pan)
{
    QMetaObject::invokeMethod(m_worker, "setPan", Q_ARG(QString, trackId), Q_ARG(float, pan));
}

void TrackPlayer::seek(const QString &trackId, quint64 tickPos)
{
    QMetaObject::invokeMethod(m_worker, "seek", Q_ARG(QString, trackId), Q_ARG(quint64, tickPos));
}

void TrackPlayer::seekAll(quint64 tickPos)
{
    QMetaObject::invokeMethod(m_worker, "seekAll", Q_ARG(quint64, tickPos));
}

void TrackPlayer::stopTrack(const QString &trackId)
{
    QMetaObject::invokeMethod(m_worker, "stopTrack", Q_ARG(QString, trackId));
}

void TrackPlayer::stopAll()
{
    QMetaObject::invokeMethod(m_worker, "stopAll");
}

void TrackPlayer::onTrackStarted(const QString &trackId)
{
    m_playingTracks.insert(trackId);
    emit trackStarted(trackId);
}

void TrackPlayer::onTrackStopped(const QString &trackId)
{
    m_playingTracks.remove(trackId);
    emit trackStopped(trackId);
}

void TrackPlayer::onAllTracksStopped()
{
    m_playingTracks.clear();
    emit allTracksStopped();
}

void TrackPlayer::onSoundProblemChanged(const QString &problem)
{
    m_soundProblem = problem;
    emit soundProblemChanged(problem);
}
