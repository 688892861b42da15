#pragma once

#include "model/Track.h"
#include "ui/pianoroll/NotePainter.h"

#include <QGraphicsScene>
#include <QSet>
#include <QTimer>
#include <QVector>

class NoteItem;

/// The notes of a track as rectangles: ticks are its horizontal axis, pitches the vertical one.
class PianoRollScene : public QGraphicsScene {
    Q_OBJECT

public:
    explicit PianoRollScene(QObject *parent = nullptr);

    const Track &track() const { return m_track; }
    /// Shows this track in place of the last one. The notes of a long track appear by and by.
    void setTrack(const Track &track);

    /// Highlights the note that is this event of the track. Events that are no notes, or are not
    /// shown yet, are ignored.
    void pressNote(uint eventIndex);
    void releaseNote(uint eventIndex);
    void releaseAll();

public slots:
    /// Adds the next notes that are still missing, and goes on by itself.
    void populate();

private:
    void forgetTrack();
    void setUpIndex();
    bool addNote(int eventIndex);
    NoteItem *item(uint eventIndex) const;
    void setPressed(uint eventIndex, bool isPressed);
    void setNoteColor(const QColor &color);
    void followSettings();

    Track m_track;
    QTimer m_refreshTimer;
    int m_nextIndex = 0;
    QVector<NoteItem *> m_items; // one for each event, null for those that are no notes
    QSet<uint> m_pressed;
    NotePainter m_painter;
};
