#pragma once

#include "Player/ActiveNote.h"
#include "Player/NoteScheduler.h"
#include "Player/SoundCache.h"
#include "Player/TrackInfo.h"
#include "Render/RenderResult.h"

#include <QObject>
#include <QString>

#include <random>
#include <vector>

/// Writes tracks, each with its instrument, into one wave file as fast as it goes.
///
/// Renders one file and then deletes itself. The same tracks give the same bytes every time: where
/// a note has several sample files to choose from, a generator of the worker's own chooses, which
/// starts from the same seed in every worker. (The process's generator would be disturbed by
/// whatever else plays meanwhile.)
///
/// Errors of the sound system are logged and the render goes on, except where it could not end or
/// would leave no good file: when there is no system or no output, when the output's clock stands
/// still across an update, or when the file cannot be completed.
class RenderWorker : public QObject {
    Q_OBJECT

public:
    /// A song may sound this long; a longer one fails before anything is written. It guards the
    /// disk against absurdly slow tempos.
    static constexpr int MaximumHours = 24;

    explicit RenderWorker(const QString &fileName);

    /// `volume` is 0 to 1, `pan` -1 to 1. Before render().
    void addTrack(const Track &track, const Instrument &instrument, float volume, float pan);

public slots:
    /// Writes the file from start to end. Stops early when the thread it runs on is asked to
    /// (QThread::requestInterruption). Emits exactly one of finished() and renderFailed(), after
    /// it has scheduled the worker's deletion; nothing is thrown.
    void render();

signals:
    /// Once per step and track that still has events: the smallest tick scheduled up to among the
    /// tracks seen so far in this step, and the length of the longest track.
    void progress(quint64 currentTick, quint64 totalTicks);
    /// The file is complete; comes before finished().
    void measured(const RenderResult &result);
    void finished();
    /// There is no file of this render. Where the sound system allows it, a file that stood under
    /// the name before still does.
    void renderFailed(const QString &message);

private:
    RenderResult renderFile();
    void createSystem();
    void openOutput();
    int mixTracks();
    void requireEnd(const PassClock &clock) const;
    void scheduleTracks(const PassClock &clock);
    PassClock advance(const PassClock &clock);
    RenderResult closeOutput(int rate);
    RenderResult measureFile() const;
    void dropOutput();
    FMOD_RESULT releaseSystem();
    void removeFile() const;
    QString chooseFile(const InstrumentSample &sample);
    QString failure(const QString &reason) const;
    QString failure(FMOD_RESULT result) const;
    FmodCheck check() const;
    void checkErrors(FMOD_RESULT result) const;

    FMOD::System *m_system = nullptr; // only during render()
    QString m_fileName;
    SoundCache m_sounds;
    NoteScheduler m_scheduler;
    std::vector<TrackInfo> m_tracks;
    ActiveNotes m_notes;
    std::minstd_rand m_random; // in its initial state
    quint64 m_totalTicks = 0;
    quint64 m_noteCount = 0;
    bool m_touchesFile = false;    // what is at m_fileName is ours
    bool m_keepsOlderFile = false; // the system puts the file in place only when it is complete
};
