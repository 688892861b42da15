#pragma once

#include <QString>

/// The text with one character at each line's end, "\n". Only such ends make lines of their own in
/// an editor, with a number each; it would show a line separator as a break within a line.
QString withSimpleLineEnds(QString text);
