#pragma once

#include "model/Ticks.h"

#include <QRectF>
#include <QString>

/// The 88 keys of a piano, by the pitch that they sound.
namespace PianoKeys {

constexpr int Lowest = Ticks::LowestPitch;
constexpr int Highest = Ticks::HighestPitch;
constexpr int Count = Highest - Lowest + 1;

constexpr bool isKey(int pitch)
{
    return pitch >= Lowest && pitch <= Highest;
}

/// 0 for C to 11 for B, of any pitch, also below zero.
int pitchClass(int pitch);
bool isBlack(int pitch);

/// "C5" for 60.
QString name(int pitch);

/// Where the key lies on a keyboard that is 1 wide, with the pitches as the vertical axis. White
/// keys are as wide as on a real keyboard, so they stand beside their pitch only roughly.
QRectF outline(int pitch);

} // namespace PianoKeys
