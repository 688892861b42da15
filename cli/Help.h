#pragma once

#include "cli/Command.h"

/// The texts of --help.
namespace Help {

QString overview(const QVector<Command> &commands);
QString forCommand(const Command &command);

/// "quillmoor-cli render [OPTION]... OUT.wav FILE..."
QString usage(const Command &command);

} // namespace Help
