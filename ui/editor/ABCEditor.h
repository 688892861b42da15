#pragma once

#include "model/Track.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

class FindReplaceDialog;
class PianoRollScene;
class PianoRollView;
class QLabel;

namespace Ui {
class ABCEditor;
}

/// A window in which a track is edited as ABC text, transformed, saved and seen on a piano roll.
/// It deletes itself when it is closed.
class ABCEditor : public QMainWindow {
    Q_OBJECT

public:
    /// Edits `track` in place, which belongs to the caller and must outlive the window.
    explicit ABCEditor(Track *track, QWidget *parent = nullptr);
    ~ABCEditor() override;

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
    /// Writes the text to the track's file, then applies it.
    void onSave();
    void onSaveAs();
    /// Makes the text the track. False when the text cannot be understood, as the user was told.
    bool onApply();

    // Each asks what to do with changes that are not applied, makes a changed track, and shows and
    // applies its text.
    void onTranspose();
    void onChangeKey();
    void onChangeUnitLength();
    void onRealignNotes();
    void onQuickRealign();

    void onCursorChanged();
    void onContentChanged();
    void onPianoRollVisible(bool visible);
    void onPlayPressed();
    void onFindReplace();

    void onTrackPlaying(bool playing);
    /// In ticks.
    void onTrackPositionChanged(quint64 pos);
    void onNotePressed(int eventIndex);
    void onNoteReleased(int eventIndex);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    using Change = std::function<std::optional<Track>()>;

    void fitOnScreen();
    void setUpText();
    void setUpStatusBar();
    void setUpPianoRoll();
    void connectActions();

    bool hasUnappliedChanges() const;
    bool offerToApply(const QString &question);
    std::optional<Track> parsedText();
    void transform(const Change &change);
    bool writeFile();

    void showText(const QString &text);
    void showTrackText();
    void refreshPianoRoll();
    bool isEvent(int eventIndex) const;

    std::unique_ptr<Ui::ABCEditor> m_ui;
    QLabel *m_positionLabel; // these and the next two are children
    QLabel *m_cursorLabel;
    QLabel *m_lengthLabel;
    Track *m_track;
    PianoRollScene *m_scene;
    PianoRollView *m_pianoRoll;
    bool m_isPianoRollLoaded = false;
    QPointer<FindReplaceDialog> m_findReplace;
};
