#pragma once

#include <QGraphicsView>

class PianoRollKeyboard;
class PianoRollScene;

/// A track's notes on a grid of time and pitch, with keyboard, ruler and the play position.
/// To show a track, give it to the scene and call trackChanged().
class PianoRollView : public QGraphicsView {
    Q_OBJECT

public:
    explicit PianoRollView(PianoRollScene *scene, QWidget *parent = nullptr);

    PianoRollKeyboard *keyboard() const { return m_keyboard; }

    /// Shows or hides the line at the play position.
    void setPlaying(bool playing);
    /// In ticks.
    void setPosition(quint64 position);
    /// Scrolls to where the play position is seen.
    void showPosition();

public slots:
    void trackChanged();
    void onVZoomIn();
    void onVZoomDefault();
    void onVZoomOut();
    void onHZoomIn();
    void onHZoomDefault();
    void onHZoomOut();

private:
    PianoRollKeyboard *m_keyboard; // a child
};
