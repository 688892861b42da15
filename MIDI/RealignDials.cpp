#include "MIDI/RealignDials.h"

namespace RealignDials {

const std::array<Dial, Count> &dials()
{
    static const std::array<Dial, Count> table = {{
        {Settings::RealignRegular, 7, 1},
        {Settings::RealignTriplets, 6, 3},
        {Settings::RealignQuintuplets, 5, 5},
        {Settings::RealignSeptuplets, 5, 7},
        {Settings::RealignNonuplets, 4, 9},
    }};
    return table;
}

int division(int, int)
{
    return 0;
}

QString label(int, int)
{
    return {};
}

QVector<int> divisions(const Positions &)
{
    return {};
}

QString fractionName(int)
{
    return {};
}

} // namespace RealignDials
