#include "ui/RenderSteps.h"

#include <limits>

RenderSteps RenderSteps::of(quint64 progress, quint64 total)
{
    constexpr quint64 largest = std::numeric_limits<int>::max();
    quint64 value = qMin(progress, total);
    quint64 maximum = total;
    while (maximum > largest) {
        maximum /= 2;
        value /= 2;
    }
    return {static_cast<int>(value), static_cast<int>(maximum)};
}
