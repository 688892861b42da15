#pragma once

#include "model/Ticks.h"

#include <QGraphicsView>

class PianoRollKeyboard;
class PianoRollMeasureBar;
class PianoRollScene;
class Track;
class ZoomButtons;

/// A track's notes on a grid of time and pitch, with keyboard, ruler and the play position.
/// To show a track, give it to the scene and call trackChanged().
class PianoRollView : public QGraphicsView {
    Q_OBJECT

public:
    /// `scene` may be null.
    explicit PianoRollView(PianoRollScene *scene, QWidget *parent = nullptr);

    PianoRollKeyboard *keyboard() const { return m_keyboard; }
    PianoRollMeasureBar *measureBar() const { return m_measureBar; }

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

protected:
    void drawBackground(QPainter *painter, const QRectF &rect) override;
    void drawForeground(QPainter *painter, const QRectF &rect) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void setUpView();
    void setUpCorner();
    void connectZoom();
    void placeSides();

    void setHZoom(int index);
    void setVZoom(int index);
    void applyZoom();
    void scaleViews();
    void storeZoom() const;
    void onWheelTurned(Qt::Orientation orientation, int notches, const QPoint &place);
    void moveTo(const QPointF &scenePlace, const QPoint &place);

    /// That of the scene, else one by default.
    Track shownTrack() const;
    void centreNotes();

    /// In pixels of the viewport.
    qreal lineColumn() const;
    QRect lineArea() const;

    PianoRollKeyboard *m_keyboard;     // a child
    PianoRollMeasureBar *m_measureBar; // a child
    bool m_playing = false;
    quint64 m_position = 0;
    quint32 m_ticksPerBeat = Ticks::PerQuarterNote;
    quint32 m_beatsPerMeasure = 4;
    int m_hZoom;
    int m_vZoom;
    ZoomButtons *m_hButtons; // a child
    ZoomButtons *m_vButtons; // a child
    QWidget *m_corner;       // a child
    bool m_hasShownNotes = false;
};
