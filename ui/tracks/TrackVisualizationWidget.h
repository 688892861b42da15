#pragma once

#include "model/Settings.h"
#include "model/Track.h"

#include <QWidget>

/// The strip of a row: the track's notes small, the play position, and a place to seek by a click.
class TrackVisualizationWidget : public QWidget {
    Q_OBJECT

public:
    explicit TrackVisualizationWidget(QWidget *parent);

    void setTrack(const Track &track);
    /// The time that the full width stands for, in ticks.
    void setMaxLength(quint64 ticks);
    void setMuted(bool muted);
    void setPlaying(bool playing);
    bool isPlaying() const;
    /// In ticks.
    void setPosition(quint64 ticks);
    quint64 position() const;

signals:
    void seek(quint64 ticks);

public slots:
    void onSettingChanged(Settings::Setting setting);
};
