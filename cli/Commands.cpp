#include "cli/Commands.h"

const QVector<Command> &commands()
{
    static const QVector<Command> table = {
        eventsCommand(), abcCommand(),    renderCommand(),  instrumentsCommand(), pakListCommand(),
        pakGetCommand(), pakHasCommand(), pakPackCommand(), demoGameCommand(),
    };
    return table;
}
