#pragma once

#include <QGraphicsScene>
#include <QGraphicsView>

/// A view beside the grid of the piano roll, with a scene of its own. It has no scroll bars of its
/// own to be seen, and only its leader, the grid, decides where it is scrolled to.
class SideView : public QGraphicsView {
    Q_OBJECT

public:
    /// A child of `leader`.
    SideView(QGraphicsView *leader, const QRectF &sceneRect, const QColor &background);

protected:
    QGraphicsScene *ownScene() { return &m_scene; }

    void showEvent(QShowEvent *event) override;

private:
    QGraphicsScene m_scene;
};
