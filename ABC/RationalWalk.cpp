#include "ABC/RationalWalk.h"

#include <algorithm>

namespace {

using RationalWalk::Fraction;

/// The number walked to, in 0..1 (1 excluded). With denominators of fractions up to 2^17 and of
/// the target up to 2^32, no product exceeds 64 bits.
struct Target {
    quint64 num;
    quint64 den;

    bool isBelow(Fraction f) const { return num * f.den < f.num * den; }
    bool isAbove(Fraction f) const { return num * f.den > f.num * den; }
    bool isExactly(Fraction f) const { return num * f.den == f.num * den; }

    quint64 distance(Fraction f) const
    {
        const quint64 a = num * f.den;
        const quint64 b = f.num * den;
        return a > b ? a - b : b - a;
    }
    /// Less than 1e-5 away.
    bool isNear(Fraction f) const { return distance(f) <= (den * f.den - 1) / 100000; }
    /// Integer division gives the target back.
    bool isGivenBy(Fraction f) const { return !isAbove(f) && f.num * den / f.den == num; }
};

Fraction stepped(Fraction from, Fraction towards, quint64 steps)
{
    return {from.num + steps * towards.num, from.den + steps * towards.den};
}

/// The first of 1..last for which `holds`, which then holds for all above; last + 1 if none.
template <typename Condition> quint64 firstStep(quint64 last, Condition holds)
{
    quint64 low = 1;
    quint64 high = 1;
    while (high <= last && !holds(high)) {
        low = high + 1;
        high *= 2;
    }
    high = std::min(high, last + 1);
    while (low < high) {
        const quint64 middle = (low + high) / 2;
        if (holds(middle))
            high = middle;
        else
            low = middle + 1;
    }
    return low;
}

struct Walk {
    Target target;
    quint64 maxDen;
    Fraction low{0, 1};
    Fraction high{1, 1};

    /// The first accepted fraction. Among the fractions of a run on one side of the target,
    /// those behind an accepted one must be acceptable, too.
    template <typename Accept> std::optional<Fraction> find(Accept accept)
    {
        if (accept(low))
            return low;
        if (accept(high))
            return high;
        while (low.den + high.den <= maxDen) {
            const bool fromAbove = target.isBelow(stepped(high, low, 1));
            const auto found = fromAbove ? run(high, low, accept, &Target::isBelow)
                                         : run(low, high, accept, &Target::isAbove);
            if (found)
                return found;
        }
        return std::nullopt;
    }

private:
    template <typename Accept>
    std::optional<Fraction> run(Fraction &moving, Fraction &fixed, Accept accept,
                                bool (Target::*staysAside)(Fraction) const)
    {
        const quint64 last = (maxDen - moving.den) / fixed.den;
        const quint64 steps = firstStep(last, [&](quint64 k) {
            const Fraction f = stepped(moving, fixed, k);
            return accept(f) || !(target.*staysAside)(f);
        });
        const Fraction reached = stepped(moving, fixed, steps);
        if (steps <= last && accept(reached))
            return reached;
        moving = stepped(moving, fixed, steps - 1);
        if (steps <= last)
            fixed = reached;
        return std::nullopt;
    }
};

} // namespace

Fraction RationalWalk::nearest(quint32 num, quint32 den)
{
    Walk walk{{num % den, den}, MaxDenominator};
    const auto found = walk.find([&](Fraction f) { return walk.target.isNear(f); });
    const Fraction f = found.value_or(walk.low);
    return {f.num + num / den * f.den, f.den};
}

std::optional<Fraction> RationalWalk::firstExact(quint32 num, quint32 den)
{
    Walk walk{{num, den}, MaxDenominator};
    return walk.find([&](Fraction f) { return walk.target.isGivenBy(f) && walk.target.isNear(f); });
}

Fraction RationalWalk::greatestBelow(quint32 num, quint32 den, quint32 maxDen)
{
    Walk walk{{num, den}, maxDen};
    return walk.find([&](Fraction f) { return walk.target.isExactly(f); }).value_or(walk.low);
}
