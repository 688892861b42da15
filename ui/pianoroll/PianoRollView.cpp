#include "ui/pianoroll/PianoRollView.h"

#include "ui/pianoroll/PianoRollKeyboard.h"
#include "ui/pianoroll/PianoRollScene.h"

PianoRollView::PianoRollView(PianoRollScene *scene, QWidget *parent)
    : QGraphicsView(scene, parent)
    , m_keyboard(new PianoRollKeyboard(this))
{
}

void PianoRollView::setPlaying(bool) { }
void PianoRollView::setPosition(quint64) { }
void PianoRollView::showPosition() { }
void PianoRollView::trackChanged() { }
void PianoRollView::onVZoomIn() { }
void PianoRollView::onVZoomDefault() { }
void PianoRollView::onVZoomOut() { }
void PianoRollView::onHZoomIn() { }
void PianoRollView::onHZoomDefault() { }
void PianoRollView::onHZoomOut() { }
