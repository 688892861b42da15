#pragma once

#include "Player/PlayerWorker.h"

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

class QThread;

/// Plays music for the user interface without ever making it wait.
///
/// Lives on the interface thread. Each call is carried out later, by a PlayerWorker on a thread of
/// the player's own, whose slot of the same name says what it does; what came of it arrives as
/// signals.
///
/// Destroying it ends all sound and waits until the worker has closed the sound system.
class TrackPlayer : public QObject {
    Q_OBJECT

public:
    explicit TrackPlayer(QObject *parent = nullptr,
                         PlayerWorker::SystemFactory createSystem = &FMOD::System_Create);
    ~TrackPlayer() override;

    void playNote(const Instrument &instrument, int noteId);
    void playTrack(const QString &trackId, const Instrument &instrument, const Track &track,
                   bool muted, float volume, float pan);
    void playTrack(const QString &trackId, const QString &syncGroup, const Instrument &instrument,
                   const Track &track, bool muted, float volume, float pan);
    void muteTrack(const QString &trackId, bool mute);
    void changeInstrument(const QString &trackId, const Instrument &instrument);
    void setVolume(const QString &trackId, float volume);
    void setPan(const QString &trackId, float pan);
    void seek(const QString &trackId, quint64 tickPos);
    void seekAll(quint64 tickPos);
    void stopTrack(const QString &trackId);
    void stopAll();

    /// Between trackStarted() and trackStopped() or allTracksStopped(). The answer changes just
    /// before the signal comes.
    bool isPlaying(const QString &trackId) const { return m_playingTracks.contains(trackId); }

    /// Why no sound comes out, ready to be shown; empty while it does.
    QString soundProblem() const { return m_soundProblem; }

signals:
    void trackStarted(const QString &trackId);
    void trackStopped(const QString &trackId);
    void allTracksStopped();
    /// In ticks, at most once in 25 ms.
    void trackPositionChanged(const QString &trackId, quint64 position);
    void notePressed(const QString &trackId, uint eventIndex);
    void noteReleased(const QString &trackId, uint eventIndex);
    void soundProblemChanged(const QString &problem);

private slots:
    void onTrackStarted(const QString &trackId);
    void onTrackStopped(const QString &trackId);
    void onAllTracksStopped();
    void onSoundProblemChanged(const QString &problem);

private:
    void connectWorker();
    void dropWorker();

    QThread *m_thread;               // a child
    QPointer<PlayerWorker> m_worker; // deletes itself on the thread after terminate(); null
                                     // without a thread, and calls do nothing then
    QSet<QString> m_playingTracks;
    QString m_soundProblem;
};
