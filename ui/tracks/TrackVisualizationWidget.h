#pragma once

#include "model/Settings.h"
#include "model/Track.h"
#include "ui/tracks/NoteBlocks.h"

#include <QWidget>

class StripScale;

/// The strip of a row: the track's notes small, the play position, and a place to seek by a click.
class TrackVisualizationWidget : public QWidget {
    Q_OBJECT

public:
    explicit TrackVisualizationWidget(QWidget *parent);

    void setTrack(const Track &track);
    /// The time that the full width stands for, in ticks.
    void setMaxLength(quint64 ticks);
    /// Whether the notes are grey.
    void setMuted(bool muted);
    /// Whether the position is shown.
    void setPlaying(bool playing);
    bool isPlaying() const { return m_playing; }
    /// In ticks.
    void setPosition(quint64 ticks);
    quint64 position() const { return m_position; }

signals:
    /// The user points at a time.
    void seek(quint64 ticks);

public slots:
    /// Repaints. Comes while the settings are locked, so they are read later.
    void onSettingChanged(Settings::Setting setting);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QSize pixelSize() const;
    void drawPart(QPainter &painter, const QRect &part) const;
    StripScale scale() const;
    QColor noteColor() const;
    void placeMarker();

    QWidget *m_marker;
    quint64 m_maxLength = 0;
    bool m_muted = false;
    bool m_playing = false;
    quint64 m_position = 0;
    Track m_track;
    NoteBlocks m_blocks;
};
