#include "ui/pianoroll/PianoRollMeasureBar.h"

PianoRollMeasureBar::PianoRollMeasureBar(QGraphicsView *view)
    : QGraphicsView(view)
{
}

void PianoRollMeasureBar::setMeasureLength(quint32) { }
