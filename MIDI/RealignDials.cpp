#include "MIDI/RealignDials.h"

namespace {

constexpr int RegularDial = 0;

const char *pluralOrdinalSuffix(int number)
{
    const int lastTwo = number % 100;
    if (lastTwo >= 11 && lastTwo <= 13)
        return "ths";
    switch (number % 10) {
    case 1:
        return "sts";
    case 2:
        return "nds";
    case 3:
        return "rds";
    default:
        return "ths";
    }
}

} // namespace

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

int division(int dial, int position)
{
    const Dial &row = dials()[static_cast<size_t>(dial)];
    const int steps = qBound(0, position, row.maximum);
    if (dial == RegularDial)
        return row.base << steps;
    return steps == 0 ? 0 : row.base << (steps - 1);
}

QString label(int dial, int position)
{
    switch (division(dial, position)) {
    case 0:
        return QStringLiteral("None");
    case 1:
        return QStringLiteral("Whole");
    default:
        return fractionName(division(dial, position));
    }
}

QVector<int> divisions(const Positions &positions)
{
    QVector<int> result;
    for (int dial = 0; dial < Count; ++dial) {
        const int grid = division(dial, positions[static_cast<size_t>(dial)]);
        if (grid != 0)
            result << grid;
    }
    return result;
}

QString fractionName(int number)
{
    return QString::number(number) + QLatin1String(pluralOrdinalSuffix(number));
}

} // namespace RealignDials
