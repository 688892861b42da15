#include "ui/editor/ABCEditor.h"

ABCEditor::ABCEditor(Track *, QWidget *parent)
    : QMainWindow(parent)
{
}

void ABCEditor::reloadTrack() { }
void ABCEditor::updateTitle() { }
void ABCEditor::onTrackPlaying(bool) { }
void ABCEditor::onTrackPositionChanged(quint64) { }
void ABCEditor::onNotePressed(int) { }
void ABCEditor::onNoteReleased(int) { }
