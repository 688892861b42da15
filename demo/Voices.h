#pragma once

#include "demo/Signal.h"

#include <QString>

#include <functional>
#include <vector>

/// The instruments' sounds. Each function builds one note (a MIDI number, 21 to 108) as raw
/// sound at no particular level; the same note and noise give the same sound.
namespace Demo {

Sound lute(int note, Noise &noise);
Sound harp(int note, Noise &noise);
Sound piano(int note, Noise &noise);
Sound bass(int note, Noise &noise);
Sound fiddle(int note, Noise &noise);
Sound cello(int note, Noise &noise);

Sound flute(int note, Noise &noise);
Sound whistle(int note, Noise &noise);
Sound clarinet(int note, Noise &noise);
Sound shawm(int note, Noise &noise);
Sound horn(int note, Noise &noise);
Sound accordion(int note, Noise &noise);
Sound organ(int note, Noise &noise);

Sound bells(int note, Noise &noise);
Sound marimba(int note, Noise &noise);
Sound musicBox(int note, Noise &noise);

/// One drum of the kit.
struct Drum {
    int note;         ///< where General MIDI has it
    QString fileName; ///< without number and suffix
    int variants;     ///< how many hits that differ slightly
    double peak;      ///< dBFS
    std::function<Sound(Noise &)> hit;
};

std::vector<Drum> drumKit();

} // namespace Demo
