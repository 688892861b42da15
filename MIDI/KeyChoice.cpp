#include "MIDI/KeyChoice.h"

QString KeyChoice::text() const
{
    return {};
}

std::optional<KeyChoice> KeyChoice::fromText(const QString &)
{
    return std::nullopt;
}
