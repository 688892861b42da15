#pragma once

#include "model/Ticks.h"

#include <QString>
#include <QStringView>

/// What the values of the ABC fields "K", "L", "M" and "Q" mean. Numbers that do not fit in 32
/// bits are read as 0.
namespace FieldValues {

/// The decimal number that `digits` (ASCII digits only) spell; 0 for none, or when it does not
/// fit in 32 bits.
quint32 number(QStringView digits);

constexpr quint32 DefaultUnitTicks = Ticks::PerQuarterNote;

/// Ticks of a unit note length of `num`/`den`: num * 120960 / den, cut to 32 bits. A unit that
/// would last 0 ticks counts as a quarter note.
quint32 unitTicks(quint32 num, quint32 den);

/// "L". A value without a number, with a denominator of 0 or with a unit of 0 ticks is 1/4.
struct UnitLength {
    quint32 num = 1;
    quint32 den = 4;
    quint32 ticks = DefaultUnitTicks;
};
UnitLength unitLength(const QString &value);

/// "M". No meter is 0/0: the value "none", one that is no meter, and one whose measure would
/// last 0 ticks. "C|" is 2/4.
struct Meter {
    quint32 num = 0;
    quint32 den = 0;
    quint64 measureTicks = 0;

    bool isCompound() const { return den == 8 && (num == 6 || num == 9 || num == 12); }
};
Meter meter(const QString &value);

/// "Q". `num` and `den` are both 0 when the value names no beat (or one of 0); `bpm` is 0 when
/// it names no tempo.
struct Tempo {
    quint32 num = 0;
    quint32 den = 0;
    quint32 bpm = 0;

    bool hasBeat() const { return num != 0; }
};
Tempo tempo(const QString &value);

/// "K". A problem leaves `row` and `mode` at C major.
struct Key {
    enum Problem { None, NoKey, InvalidTonic };

    quint32 row = 7;
    quint32 mode = 0;
    Problem problem = None;
    QString tonic;    // in upper case
    QString modeName; // in upper case; empty when the value names none
};
/// As the parser reads it: the first key anywhere in the value.
Key key(const QString &value);
/// As the generator reads it: the key must start the value, and a mode is taken for minor as
/// soon as it begins with "m", be it "maj" or "mix". Songs for the game rely on it.
Key keyForGenerator(const QString &value);

} // namespace FieldValues
