#include "cli/Commands.h"

const QVector<Command> &commands()
{
    static const QVector<Command> table = {
        eventsCommand(),  abcCommand(),    renderCommand(), playCommand(),    instrumentsCommand(),
        pakListCommand(), pakGetCommand(), pakHasCommand(), pakPackCommand(), demoGameCommand(),
    };
    return table;
}
