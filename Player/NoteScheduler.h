#pragma once

#include "Player/ActiveNote.h"
#include "Player/DspClock.h"
#include "Player/SoundCache.h"
#include "Player/TrackInfo.h"

#include <QString>

#include <functional>
#include <vector>

/// Hands the notes of tracks to the sound system shortly before they are due.
///
/// Lives on the thread of its worker. What it knows of a track is all in TrackInfo. A note whose
/// sample or channel the sound system refused is silent, but listed among the notes all the same.
class NoteScheduler {
public:
    /// Chooses one of a sample's files; may answer an empty path.
    using FileChooser = std::function<QString(const InstrumentSample &)>;
    /// Hears why an event that was passed over could not be scheduled.
    using FailureHandler = std::function<void(const QString &message)>;

    /// `sounds` must outlive the scheduler.
    NoteScheduler(
        SoundCache &sounds, FmodCheck check, FileChooser chooseFile = &InstrumentSample::randomFile,
        FailureHandler onFailure = [](const QString &) {});

    /// Schedules the events of one track that are due up to the clock's horizon, appends its notes
    /// to `notes` and moves `info` on behind them. Notes of a muted or unplayable track, before the
    /// track's origin or too late to start make no sound. Returns the number of notes appended.
    ///
    /// Throws "Invalid note index" for a note that the instrument does not map, and what loading
    /// its sample throws. All samples are loaded before the first note is handed over: after a
    /// throw, nothing of this pass sounds, and `info` and `notes` are as they were.
    ///
    /// With info.failedEvent set, it does not throw: that event is passed over, and so is every
    /// other that cannot be scheduled, of which the failure handler hears. The next call is
    /// strict again.
    int schedule(FMOD::System &system, const QString &trackId, TrackInfo &info,
                 const PassClock &clock, ActiveNotes &notes);

    /// After schedule() threw: the index of the event that it could not schedule.
    quint32 failedEvent() const { return m_failedEvent; }

private:
    struct DueNote {
        FMOD::Sound *sound = nullptr;
        double pitch = 1.0;
        quint32 eventIndex = 0;
        quint64 startDsp = 0;
        quint64 releaseDsp = 0;
        quint64 fadeSamples = 0;
    };

    void collect(FMOD::System &system, TrackInfo &info, const PassClock &clock);
    void collectNote(FMOD::System &system, const TrackInfo &info, const TrackEvent &event,
                     const PassClock &clock);
    void collectLeniently(FMOD::System &system, const TrackInfo &info, const TrackEvent &event,
                          const PassClock &clock);
    void play(FMOD::System &system, const QString &trackId, const TrackInfo &info,
              const DueNote &due, ActiveNotes &notes) const;
    FMOD::Channel *openChannel(FMOD::System &system, FMOD::Sound *sound) const;
    void prepare(FMOD::Channel &channel, const TrackInfo &info, const DueNote &due) const;

    SoundCache &m_sounds;
    FmodCheck m_check;
    FileChooser m_chooseFile;
    FailureHandler m_onFailure;
    std::vector<DueNote> m_due; // kept to save its memory from pass to pass
    quint32 m_failedEvent = 0;
};

/// Sets the playback rate of a channel to its sound's own rate times `pitch`.
void scaleFrequency(FMOD::Channel &channel, double pitch, const FmodCheck &check);
