#include "cli/Commands.h"
#include "cli/Console.h"
#include "demo/DemoGame.h"
#include "model/Signals.h"

namespace {

constexpr const char *SongsOption = "--songs";

const char *const Description =
    "Makes a game directory in DIR, with instruments of the program's own, for those who do not\n"
    "have the game at hand: name it with --game. It may be made again over itself. Prints\n"
    "{\"game\":...} with the member \"songs\" where songs were asked for, too.\n";

int run(const Arguments &arguments, Console &console)
{
    const QString &game = arguments.operand(0);
    const OptionValues &options = arguments.options();
    JsonWriter json;
    json.beginObject().member("game", game);
    console.progress(QStringLiteral("Making the demo game in %1").arg(game));
    const DemoGame demo;
    {
        const SignalHold hold;
        demo.write(game);
    }
    if (options.has(SongsOption)) {
        const SignalHold hold;
        writeDemoSongs(options.value(SongsOption));
        json.member("songs", options.value(SongsOption));
    }
    console.line(json.endObject());
    return Status::Success;
}

} // namespace

Command demoGameCommand()
{
    return {"demo-game",
            "DIR",
            "Make a demo game, with songs if wanted.",
            Description,
            1,
            1,
            false,
            {{SongsOption, "DIR2", "Write the demo songs to DIR2, each in a folder of its own."}},
            run};
}
