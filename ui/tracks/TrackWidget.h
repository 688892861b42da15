#pragma once

#include "Quillmoor/Instrument.h"
#include "model/Track.h"

#include <QFrame>
#include <QPointer>
#include <QString>

#include <memory>

class ABCEditor;
class InstrumentSetModel;

namespace Ui {
class TrackWidget;
}

/// One track of the song as a row of the main window. It owns the track, and reports what the user
/// does by signals; it never talks to the player.
class TrackWidget : public QFrame {
    Q_OBJECT

public:
    TrackWidget(const QString &trackId, const Track &track, InstrumentSetModel *model,
                QWidget *parent);
    /// Also closes the row's editor, without a question.
    ~TrackWidget() override;

    QString trackId() const { return m_trackId; }
    Track &track() { return *m_track; }
    Instrument instrument() const;
    void setInstrumentIndex(int index);

    bool isSelected() const;
    /// Without a signal.
    void setSelected(bool selected);
    bool isMuted() const;
    /// Emits trackMuteChanged() only when `notify`.
    void setMuted(bool muted, bool notify);
    /// 0 to 1.
    float volume() const;
    void setVolume(float volume);
    /// -1, left, to 1, right.
    float pan() const;
    void setPan(float pan);

    /// The time that the strip's width stands for, in ticks.
    void setMaxLength(quint64 ticks);
    void setPlaying(bool playing);
    /// In ticks.
    void setPosition(quint64 ticks);
    /// Shown by an open editor alone.
    void setNoteState(uint eventIndex, bool pressed);
    void setMoveEnabled(bool up, bool down);

    /// Keeps the wheel from the instrument box: it belongs to the list of rows.
    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void trackRemoved();
    void trackChanged();
    void trackSelected(bool selected);
    void trackMuteChanged();
    void trackSolo();
    void trackInstrumentChanged();
    void trackVolumeChanged();
    void trackPanChanged();
    void trackMoveUp();
    void trackMoveDown();
    void trackSeek(quint64 ticks);
    void trackPlay();
    void trackStop();

public slots:
    void onSave();
    void onSaveAs();
    void onSelectChanged();
    void onMuteClicked();
    void onRemoveClicked();
    void onEditABCClicked();
    void onTrackChanged();
    void onTransposeUp();
    void onTransposeDown();

private:
    void setUpLooks();
    void makeEditMenu();
    void makeMuteMenu();
    void connectControls();
    void showSelection();
    void showTrack();
    QString title() const;
    void save();
    void replaceTrack(const Track &track);
    void openEditor();
    void dismissEditor();

    std::unique_ptr<Ui::TrackWidget> m_ui;
    const QString m_trackId;
    QPointer<ABCEditor> m_editor;
    // The editor has a pointer to it, and shares it for as long as it lives: it may be in the
    // middle of a call when the row goes.
    std::shared_ptr<Track> m_track;
};
