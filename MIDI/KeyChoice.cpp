#include "MIDI/KeyChoice.h"

#include "ABC/FieldValues.h"
#include "ABC/KeyTable.h"

namespace {

/// The key table takes "AEO", as every name that it does not have, for major, and the parser with
/// it. Who chooses a key means what the name says.
quint32 modeOf(const QString &name)
{
    return name == QLatin1String("AEO") ? KeyTable::Minor : KeyTable::mode(name);
}

} // namespace

QString KeyChoice::text() const
{
    const QString tonic = KeyTable::displayTonic(row, mode);
    if (mode == KeyTable::Major && hasMajorQualifier)
        return tonic + QLatin1String("maj");
    return tonic + KeyTable::modeSuffix(mode);
}

std::optional<KeyChoice> KeyChoice::fromText(const QString &text)
{
    const FieldValues::Key key = FieldValues::key(text);
    const quint32 mode = modeOf(key.modeName);
    const std::optional<quint32> row = KeyTable::row(key.tonic, mode);
    if (!row)
        return std::nullopt;
    return KeyChoice{mode, *row, mode == KeyTable::Major && !key.modeName.isEmpty()};
}
