#pragma once

#include "Quillmoor/InstrumentSetModel.h"
#include "Quillmoor/QuillmoorInstrumentSet.h"
#include "model/Track.h"
#include "ui/TrackColumn.h"

#include <QDir>
#include <QList>
#include <QMainWindow>
#include <QMap>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <memory>

class ProblemLabel;
class EmptyHint;
class QProgressDialog;
class TrackPlayer;
class TrackRenderer;
class TrackWidget;
class UpdateChecker;

namespace Ui {
class MainWindow;
}

/// The program's one top-level window: a row for each track of the song, and all that makes,
/// combines, plays and saves them. It owns the catalogue of instruments, the player, the renderer
/// and the update checker.
///
/// What is done to all rows is done in the order of their ids as texts ("T1", "T10", "T2"),
/// whatever the order they are shown in. Signals of the player name rows by their ids and may come
/// when the row is gone; they do nothing then. No row goes while a modal dialog is in front.
///
/// The slots are in four files: MainWindow.cpp, MainWindowFiles.cpp, MainWindowTracks.cpp and
/// MainWindowPlayback.cpp.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// `game` is the game's directory. Throws what the instrument set throws.
    explicit MainWindow(const QDir &game, QWidget *parent = nullptr);
    ~MainWindow() override;

    /// Opens ABC and MIDI files, each with a box for what cannot be read.
    void openFiles(const QStringList &paths);

public slots:
    void onLoadABC();
    void onPlay();
    void onStopAll();
    void onImportMidi();
    void onImportClipboard();
    void onExportWav();
    void onSaveSelected();
    void onSaveAll();
    void onNewTrack();
    void onMergeTracks();
    void onDuplicateTracks();
    void onRemoveSelectedTracks();
    void onMuteSelected();
    void onSelectAll();
    void onDeselectAll();
    void onInvertSelection();
    void onClearTracks();
    void onPreferences();
    void onGoToForum();
    void onGoToTracker();
    void onAbout();
    void onDefaultInstrumentChanged(const QString &name);
    void onApplyInstrument();
    void onTrackStarted(const QString &trackId);
    void onTrackStopped(const QString &trackId);
    void onAllTracksStopped();
    void onTrackPositionChanged(const QString &trackId, quint64 position);
    void onNotePressed(const QString &trackId, uint eventIndex);
    void onNoteReleased(const QString &trackId, uint eventIndex);
    // Of the row that sends the signal.
    void onTrackMuteChanged();
    void onTrackSolo();
    void onTrackInstrumentChanged();
    void onTrackVolumeChanged();
    void onTrackPanChanged();
    void onTrackRemoved();
    void onTrackChanged();
    void onTrackSeek(quint64 pos);
    void onMoveTrackUp();
    void onMoveTrackDown();
    void onTrackSelectionChanged();
    void onRenderStarted();
    void onRenderProgress(quint64 progress, quint64 total);
    void onRenderFinished();
    void onUpdateAvailable(bool available, const QString &newVer, const QString &url);
    void onUpdateFailed(const QString &error);
    void onCheckUpdates();
    void onDonate();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    enum class Scope { Selected, All };

    void setUpForm();
    void setUpInstruments(const QDir &game);
    void connectTimer();
    void connectServices();
    int defaultInstrument() const;

    QList<TrackWidget *> rows(Scope scope) const;
    QList<Track> selectedTracks() const;
    TrackWidget *senderRow() const;
    void addTrack(const Track &track);
    void addTracks(const QList<Track> &tracks);
    int chosenInstrument(const Track &track) const;
    void connectRow(TrackWidget *row);
    void discard(TrackWidget *row);
    bool isRemovalBarred(const char *removal);
    void updateActions();
    void updateTrackLengths();
    void updateHint();
    void scrollToBottom();

    // Of the event loops that run: 1 for the program's own, more in dialogs and menus.
    static int eventLoops();
    static constexpr std::chrono::milliseconds RetryAfter{50};
    void openDropped();
    void openUrls(const QList<QUrl> &urls);
    void loadABCFile(const QString &path);
    void loadABCText(const QString &text);
    void loadMidiFile(const QString &path);
    QList<Track> readMidiFile(const QString &path);
    void offerToClear(const QString &title);
    void startRender(const QString &fileName);
    void endRender();
    void onRenderFailed(const QString &message);

    bool isPlaying(const TrackWidget *row) const;
    void play(TrackWidget *row);
    static void showPlaying(TrackWidget *row, bool playing);
    void showSoundProblem(const QString &problem);
    void offerUpdate(const QString &version, const QString &url);

    std::unique_ptr<Ui::MainWindow> m_ui;
    QProgressDialog *m_progressDialog = nullptr; // a child; while a render runs
    std::unique_ptr<TrackPlayer> m_player;
    std::unique_ptr<TrackRenderer> m_renderer; // one at most, from the first export on
    std::unique_ptr<QuillmoorInstrumentSet> m_instruments;
    std::unique_ptr<InstrumentSetModel> m_instrumentModel;
    QMap<QString, TrackWidget *> m_tracks; // children, by their ids
    std::unique_ptr<UpdateChecker> m_updateChecker;
    bool m_silentUpdateCheck = true;

    TrackColumn m_column;
    QList<QUrl> m_dropped;                  // not opened yet
    int m_loopsAtDrop = 0;                  // 1 for the program's own event loop, 0 before it
    QTimer m_openTimer;                     // when the drop is over
    EmptyHint *m_hint = nullptr;            // a child
    ProblemLabel *m_soundProblem = nullptr; // a child
};
