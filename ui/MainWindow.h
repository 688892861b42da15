#pragma once

#include "Quillmoor/QuillmoorInstrumentSet.h"
#include "model/Track.h"

#include <QDir>
#include <QList>
#include <QMainWindow>
#include <QUrl>

#include <memory>

class TrackListModel;

namespace Ui {
class MainWindow;
}

/// The program's one top-level window: the tracks of the song, and what brings them in.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// `game` is the game's directory. Throws what the instrument set throws.
    explicit MainWindow(const QDir &game, QWidget *parent = nullptr);
    ~MainWindow() override;

public slots:
    /// Opens ABC and MIDI files, each with a box for what cannot be read.
    void openFiles(const QStringList &paths);

    void onLoadABC();
    void onImportMidi();
    void onClearTracks();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void addTrack(const Track &track);
    void addTracks(const QList<Track> &tracks);
    void loadABCFile(const QString &path);
    void loadMidiFile(const QString &path);
    QList<Track> readMidiFile(const QString &path);
    void openDroppedFiles(const QList<QUrl> &urls);
    void offerToClear(const QString &title);
    void showTracksOrHint();

    std::unique_ptr<Ui::MainWindow> m_ui;
    std::unique_ptr<QuillmoorInstrumentSet> m_instruments;
    TrackListModel *m_tracks; // a child
};
