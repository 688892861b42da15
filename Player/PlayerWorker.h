#pragma once

#include "Player/ActiveNote.h"
#include "Player/MessageThrottle.h"
#include "Player/NoteScheduler.h"
#include "Player/SampleForesight.h"
#include "Player/SoundCache.h"
#include "Player/TrackInfo.h"

#include <QElapsedTimer>
#include <QHash>
#include <QMap>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

class QTimer;

/// Plays tracks and single notes in real time, on a thread of its own.
///
/// Every millisecond it hands over the notes that begin within the next 100 ms, each with its
/// exact place on the output clock, fades out those that have ended, and reports what happens.
/// Commands come as queued calls of its slots; those that name a track which is not playing do
/// nothing. Volume, pan, muting and a change of instrument act on the notes that are scheduled
/// from then on. Ticks are those of the track, clocks are output frames.
///
/// What a slot throws (a note that the instrument does not map, a package that cannot be read)
/// leaves the slot with nothing of the failing track's pass handed over. Of a queued call and of
/// the timer it is caught at the edge of the thread, which logs it, the same message at most once
/// a second, and lets the next pass pass over the event that failed, and with it over all others of
/// the track that would. An instrument that maps no note at all is silent there, without a word.
class PlayerWorker : public QObject, private NoteObserver {
    Q_OBJECT

public:
    /// Makes the sound system, as FMOD::System_Create() does.
    using SystemFactory = std::function<FMOD_RESULT(FMOD::System **)>;

    /// `createFallback` is asked when the first one makes nothing that starts.
    explicit PlayerWorker(SystemFactory createSystem = &FMOD::System_Create,
                          SystemFactory createFallback = &createBuiltin);
    /// Logs a critical message when terminate() was not called.
    ~PlayerWorker() override;

    /// What throws in a queued call ends here.
    bool event(QEvent *event) override;

public slots:
    /// Opens the sound system and begins to work. Where the sound system in force cannot be
    /// started, the built-in engine takes its place.
    void initialize();
    /// Closes the sound system and schedules the worker's deletion; then emits finished(). From
    /// then on no slot does anything.
    void terminate();
    /// One pass; comes by itself every millisecond. Throws what playNote() does, with the next
    /// event of the failing track still to come.
    void update();
    /// Plays one note now, for the whole length of its sample. Throws "Invalid note index", and
    /// what loading the sample throws.
    void playNote(const Instrument &instrument, int noteId);
    /// Starts a track 100 ms from now, in place of one of the same id. `volume` is 0 to 1, `pan`
    /// -1 to 1.
    void playTrack(const QString &trackId, const Instrument &instrument, const Track &track,
                   bool muted, float volume, float pan);
    /// The same at the instant at which the first track of the group starts. A group is forgotten
    /// by stopAll().
    void playTrack(const QString &trackId, const QString &syncGroup, const Instrument &instrument,
                   const Track &track, bool muted, float volume, float pan);
    void muteTrack(const QString &trackId, bool mute);
    void changeInstrument(const QString &trackId, const Instrument &instrument);
    void setVolume(const QString &trackId, float volume);
    void setPan(const QString &trackId, float pan);
    /// Goes on at `tickPos` at once, in the tempo that the track has there. What was handed over
    /// already is left to end.
    void seek(const QString &trackId, quint64 tickPos);
    void seekAll(quint64 tickPos);
    /// Forgets the track; its notes that were handed over sound to their end.
    void stopTrack(const QString &trackId);
    /// Silences and forgets everything.
    void stopAll();

signals:
    void finished();
    void trackStarted(const QString &trackId);
    void trackStopped(const QString &trackId);
    void allTracksStopped();
    /// In ticks, at most once in 25 ms.
    void trackPositionChanged(const QString &trackId, quint64 position);
    // These two are at the same time what the passes over the notes call: a receiver on the
    // worker's own thread must not call its slots there and then.
    void notePressed(const QString &trackId, uint eventIndex) override;
    void noteReleased(const QString &trackId, uint eventIndex) override;
    /// Why no sound comes out, ready to be shown; empty as soon as it does again.
    void soundProblemChanged(const QString &problem);

private:
    enum class Outcome { Done, Failed, TrackFailed };

    /// What is being tried, for the case that it throws.
    struct Attempt {
        std::optional<QString> trackId; // none for a single note
        bool mapsNothing = false;       // the instrument cannot but throw
    };

    static FMOD_RESULT createBuiltin(FMOD::System **system);

    void onTimeout();
    template <typename Action> Outcome guard(Action action);
    Outcome takeFailure(const QString &message);
    void logFailure(const QString &message);

    QString openSystem(const SystemFactory &create);
    void closeSystem();
    void reportProblem(const QString &problem);

    bool takeReportTime();
    void report(const PassClock &clock);
    void passTrack(const QString &trackId, const PassClock &clock);
    void scheduleTrack(const QString &trackId, TrackInfo &info, const PassClock &clock);
    void playSound(FMOD::Sound *sound, double pitch);
    quint64 startInstant() const;
    quint64 groupInstant(const QString &syncGroup);
    void startTrack(const QString &trackId, const TrackInfo &prepared, quint64 originDsp);
    FMOD::ChannelGroup *makeGroup(const QString &trackId);
    void seekTrack(const QString &trackId, TrackInfo &info, quint64 tickPos, quint64 now);
    TrackInfo *findTrack(const QString &trackId);

    FmodCheck check() const;
    void checkErrors(FMOD_RESULT result) const;

    SystemFactory m_createSystem;
    SystemFactory m_createFallback;
    QTimer *m_timer = nullptr;        // a child
    FMOD::System *m_system = nullptr; // from initialize() to terminate()
    bool m_isTerminated = false;
    SoundCache m_sounds;
    NoteScheduler m_scheduler;
    SampleForesight m_foresight;
    QMap<QString, TrackInfo> m_tracks; // played in the order of their ids, as they are rendered
    QHash<QString, quint64> m_syncGroups;
    ActiveNotes m_notes;
    QElapsedTimer m_positionClock;

    Attempt m_attempt;
    MessageThrottle m_throttle;
    QElapsedTimer m_sinceStart;
    QString m_problem;
};
