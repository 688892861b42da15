#pragma once

#include <QtGlobal>

#include <optional>

/// Fractions near a number, found by the mediant method: between a lower and an upper bound, at
/// first the whole numbers around the number, lies the mediant (sum of numerators over sum of
/// denominators), which becomes the new bound on its side, and so on. Runs of steps on one side
/// are taken at once, so that every walk is short.
namespace RationalWalk {

constexpr quint32 MaxDenominator = 120960;

struct Fraction {
    quint64 num = 0;
    quint64 den = 1;
};

/// The first fraction of the walk that is less than 1e-5 away from `num`/`den` (`den` at most
/// 120960 and not 0, or the answer may be the nearest whole number instead).
Fraction nearest(quint32 num, quint32 den);

/// The first fraction of the walk that is less than 1e-5 away from `num`/`den` and gives `num`
/// when `den` is multiplied by its numerator and then divided by its denominator, all in
/// integers. `num` must be less than `den`. None when that takes a denominator above 120960.
std::optional<Fraction> firstExact(quint32 num, quint32 den);

/// The greatest fraction up to `num`/`den` with a denominator up to `maxDen` (itself at most
/// 120960). `num` must be less than `den`.
Fraction greatestBelow(quint32 num, quint32 den, quint32 maxDen);

} // namespace RationalWalk
