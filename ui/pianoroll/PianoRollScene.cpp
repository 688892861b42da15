#include "ui/pianoroll/PianoRollScene.h"

PianoRollScene::PianoRollScene(QObject *parent)
    : QGraphicsScene(parent)
{
}

void PianoRollScene::setTrack(const Track &) { }
void PianoRollScene::pressNote(uint) { }
void PianoRollScene::releaseNote(uint) { }
void PianoRollScene::releaseAll() { }
void PianoRollScene::populate() { }
