#pragma once

#include "cli/Command.h"

/// All commands, in the order of the help.
const QVector<Command> &commands();

Command eventsCommand();
Command abcCommand();
Command renderCommand();
Command playCommand();
Command instrumentsCommand();
Command pakListCommand();
Command pakGetCommand();
Command pakHasCommand();
Command pakPackCommand();
Command demoGameCommand();
