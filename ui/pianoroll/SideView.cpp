#include "ui/pianoroll/SideView.h"

// Without a frame its pixels stand beside those of the grid, and without an anchor it is not moved
// when it is scaled.
SideView::SideView(QGraphicsView *leader, const QRectF &sceneRect, const QColor &background)
    : QGraphicsView(leader)
    , m_scene(sceneRect)
{
    setScene(&m_scene);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setAlignment(Qt::AlignTop | Qt::AlignLeft);
    setTransformationAnchor(NoAnchor);
    setBackgroundBrush(background);
}

// The graphics view's would move it, and the leader with it.
void SideView::showEvent(QShowEvent *) { }
