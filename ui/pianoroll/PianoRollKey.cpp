#include "ui/pianoroll/PianoRollKey.h"

PianoRollKey::PianoRollKey(int) { }
void PianoRollKey::press() { }
void PianoRollKey::release() { }
void PianoRollKey::reset() { }
