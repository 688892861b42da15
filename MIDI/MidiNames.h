#pragma once

#include <QLatin1String>
#include <QString>

/// How the tracks of a MIDI file are named.
namespace MidiNames {

/// The General MIDI name of program 0..127; one above is taken modulo 128.
QLatin1String program(quint32 program);

/// "Track 1 - Violin". Channels count from 0; the tenth is "Percussion" whatever its program.
QString title(int number, int channel, quint32 program);

} // namespace MidiNames
