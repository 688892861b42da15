#pragma once

#include <QtGlobal>

#include <string>

/// A note or rest length as ABC text ("3/2"), and the ticks that the parser makes of it.
struct LengthText {
    std::string text;
    quint64 ticks = 0;
};

/// The text, of at most `maxChars` characters, for a length of `ticks` where the unit length is
/// `unit` ticks (not 0). Where no such text gives exactly `ticks`, it is the greatest fraction
/// below that does fit.
LengthText lengthText(quint64 ticks, quint32 unit, int maxChars);
