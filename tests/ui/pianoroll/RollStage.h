#pragma once

#include "ui/pianoroll/PianoRollScene.h"
#include "ui/pianoroll/PianoRollView.h"

#include <QApplication>
#include <QImage>

/// A piano roll on the screen, with a viewport of a known size.
struct RollStage {
    explicit RollStage(const QSize &viewportSize = {800, 400})
    {
        view.show();
        view.resize(view.size() + viewportSize - view.viewport()->size());
        QApplication::processEvents();
    }

    void setTrack(const Track &track)
    {
        scene.setTrack(track);
        view.trackChanged();
    }

    QRgb pixel(const QPoint &place) { return view.viewport()->grab().toImage().pixel(place); }

    /// The pixel that has the place of the scene at its top left.
    QRgb at(qreal ticks, qreal pitch) { return pixel(view.mapFromScene(ticks, pitch)); }

    PianoRollScene scene;
    PianoRollView view{&scene};
};

/// Quarter notes one after the other.
inline Track trackOf(std::initializer_list<quint32> pitches)
{
    Track track;
    quint64 time = 0;
    for (const quint32 pitch : pitches) {
        track.addEvent(TrackEvent::makeNote(pitch, time, 30240));
        time += 30240;
    }
    track.sortEvents();
    return track;
}
