#pragma once

#include "model/Track.h"

#include <QMainWindow>

/// A window in which a track is edited as ABC text, transformed, saved and seen on a piano roll.
class ABCEditor : public QMainWindow {
    Q_OBJECT

public:
    /// Edits `track` in place, which belongs to the caller and must outlive the window.
    explicit ABCEditor(Track *track, QWidget *parent = nullptr);

    /// The track was changed elsewhere: shows its text as one step that can be undone.
    void reloadTrack();
    /// The track's file name was changed elsewhere.
    void updateTitle();

signals:
    void trackPlay();
    void trackStop();
    /// The edited text was applied to the track.
    void trackChanged();

public slots:
    void onTrackPlaying(bool playing);
    /// In ticks.
    void onTrackPositionChanged(quint64 pos);
    void onNotePressed(int eventIndex);
    void onNoteReleased(int eventIndex);
};
