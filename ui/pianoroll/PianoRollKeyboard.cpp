#include "ui/pianoroll/PianoRollKeyboard.h"

PianoRollKeyboard::PianoRollKeyboard(QGraphicsView *view)
    : QGraphicsView(view)
{
}

void PianoRollKeyboard::pressKey(int) { }
void PianoRollKeyboard::releaseKey(int) { }
void PianoRollKeyboard::releaseAll() { }
