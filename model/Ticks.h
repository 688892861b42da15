#pragma once

#include <QtGlobal>

/// The time unit of the whole program and its arithmetic.
///
/// A tick is 1/120960 of a whole note, a number that the common tuplets (3, 5, 7, 9) and
/// the binary note lengths down to 1/128 divide without a rest.
namespace Ticks {

constexpr quint32 PerWholeNote = 120960;
constexpr quint32 PerQuarterNote = PerWholeNote / 4;

/// A quarter note at 120 beats per minute.
constexpr quint64 DefaultPerMinute = 3628800;

/// The notes of the 88 piano keys (MIDI numbers): what the game's instruments can play.
constexpr quint32 LowestPitch = 21;
constexpr quint32 HighestPitch = 108;

/// Ticks per minute of `bpm` beats of `num`/`den` of a whole note each: num * 120960 / den *
/// bpm, in that order, in unsigned 32-bit arithmetic that wraps. Answers 0 for a `den` of 0.
constexpr quint32 perMinute(quint32 num, quint32 den, quint32 bpm)
{
    return den == 0 ? 0 : num * PerWholeNote / den * bpm;
}

/// The ticks of `num`/`den` of a whole note, computed in 64 bits; 0 for a `den` of 0.
constexpr quint64 ofFraction(quint32 num, quint32 den)
{
    return den == 0 ? 0 : quint64{num} * PerWholeNote / den;
}

} // namespace Ticks
