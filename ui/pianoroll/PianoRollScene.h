#pragma once

#include "model/Track.h"

#include <QGraphicsScene>

/// The notes of a track as rectangles.
class PianoRollScene : public QGraphicsScene {
    Q_OBJECT

public:
    explicit PianoRollScene(QObject *parent = nullptr);

    void setTrack(const Track &track);

    void pressNote(uint eventIndex);
    void releaseNote(uint eventIndex);
    void releaseAll();

public slots:
    void populate();
};
