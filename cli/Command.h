#pragma once

#include "cli/Arguments.h"

#include <QVector>

class Console;

/// The exit statuses.
namespace Status {
constexpr int Success = 0;
constexpr int Failure = 1;
constexpr int BadUsage = 2;
} // namespace Status

/// One command of the program: what its arguments are and the function that carries it out.
struct Command {
    /// Answers the exit status. Throws a QString or a UsageError for what ends the whole command.
    using Function = int (*)(const Arguments &arguments, Console &console);

    const char *name;        ///< one word, or two for a command of a group: "pak list"
    const char *operands;    ///< for the help: "FILE..."
    const char *summary;     ///< one line
    const char *description; ///< whole lines, ending with a line feed
    int minOperands;
    int maxOperands; ///< -1 for any number
    bool needsGui;   ///< works on pictures, for which Qt wants its graphical application object
    QVector<Option> options;
    Function run;
};
