#pragma once

#include <QByteArray>

/// A MIDI file of one track: these events and its end.
QByteArray midiFile(const QByteArray &events);

/// Events for it: so many notes on all 16 channels in turn, off the grid, each of which ends where
/// the next of its channel begins.
QByteArray manyNotes(int count);
