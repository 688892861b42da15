#include "ui/editor/PositionText.h"

#include <algorithm>
#include <limits>

namespace {

quint32 beatLength(const Track &track)
{
    return track.beatsPerMeasure() == 0 ? 0 : track.measureLength() / track.beatsPerMeasure();
}

/// Counted from 1, where there is a number for it.
quint64 ordinal(quint64 index)
{
    return std::min(index, std::numeric_limits<quint64>::max() - 1) + 1;
}

QString twoDigits(quint64 number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

QString text(quint64 measure, quint64 beat, quint64 hundredths)
{
    return QStringLiteral("Pos: %1:%2:%3")
        .arg(QString::number(ordinal(measure)), twoDigits(ordinal(beat)), twoDigits(hundredths));
}

} // namespace

QString positionText(quint64 position, const Track &track)
{
    const quint64 beat = beatLength(track);
    if (beat == 0)
        return text(0, 0, 0);
    const quint64 inMeasure = position % track.measureLength();
    return text(position / track.measureLength(), inMeasure / beat, inMeasure % beat * 100 / beat);
}
