#include "ABC/LengthText.h"

#include "ABC/RationalWalk.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>

namespace {

using RationalWalk::Fraction;

constexpr quint64 MaxNumber = std::numeric_limits<quint32>::max(); // that the parser reads

std::string format(Fraction f)
{
    if (f.den == 1)
        return f.num == 1 ? std::string() : std::to_string(f.num);
    const std::string num = f.num == 1 ? std::string() : std::to_string(f.num);
    return f.den == 2 ? num + '/' : num + '/' + std::to_string(f.den);
}

/// A length split at its whole units.
struct Split {
    quint64 whole;
    quint32 part;
    quint32 unit;

    std::optional<Fraction> plusWhole(Fraction f) const
    {
        if (whole > (MaxNumber - f.num) / f.den)
            return std::nullopt;
        return Fraction{whole * f.den + f.num, f.den};
    }
    quint64 ticks(Fraction f) const { return f.num * unit / f.den; }

    Fraction exactPart() const
    {
        if (const auto found = RationalWalk::firstExact(part, unit))
            return *found;
        const quint32 divisor = std::gcd(part, unit);
        return {part / divisor, unit / divisor};
    }
};

std::optional<LengthText> fitting(const Split &split, std::optional<Fraction> f, int maxChars)
{
    if (!f)
        return std::nullopt;
    std::string text = format(*f);
    if (text.size() > static_cast<size_t>(maxChars))
        return std::nullopt;
    return LengthText{std::move(text), split.ticks(*f)};
}

LengthText wholeUnits(const Split &split, int maxChars)
{
    quint64 largest = 9;
    for (int digits = 1; digits < maxChars && largest < MaxNumber; ++digits)
        largest = largest * 10 + 9;
    const quint64 units = std::min({split.whole, largest, MaxNumber});
    return {format({units, 1}), units * split.unit};
}

LengthText greatestFitting(const Split &split, int maxChars)
{
    LengthText best = wholeUnits(split, maxChars);
    for (const quint32 maxDen : {9U, 99U, 999U, 9999U, 99999U, RationalWalk::MaxDenominator}) {
        const Fraction part = RationalWalk::greatestBelow(split.part, split.unit, maxDen);
        const auto candidate = fitting(split, split.plusWhole(part), maxChars);
        if (candidate && candidate->ticks > best.ticks)
            best = *candidate;
    }
    return best;
}

} // namespace

LengthText lengthText(quint64 ticks, quint32 unit, int maxChars)
{
    const Split split{ticks / unit, static_cast<quint32>(ticks % unit), unit};
    const auto exact = fitting(split, split.plusWhole(split.exactPart()), maxChars);
    return exact ? *exact : greatestFitting(split, maxChars);
}
