#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Parts.h"
#include "cli/Playback.h"

namespace {

const char *const Description =
    "Plays the tunes of all files together; each track of a MIDI file is a tune. Each is played\n"
    "by an instrument of the game: the one that --instrument names, else the one that the tune\n"
    "names in a line \"I:instrument NAME\", else the first of the game. On a terminal a line "
    "shows\n"
    "the position. Prints {\"files\":...,\"seconds\":...,\"notes\":...} when the last note has "
    "faded.\n"
    "FILE may be - for standard input.\n"
    "\n"
    "A note that its instrument does not map is an error, found before anything sounds. Without\n"
    "a sound device the music goes on in silence, with a message. Ctrl-C ends it at once.\n";

void printResult(const Playback &playback, int files, const Parts &parts, Console &console)
{
    JsonWriter json;
    json.beginObject().member("files", files).member("seconds", playback.seconds());
    json.member("notes", playback.notes());
    parts.addSkipped(json);
    console.line(json.endObject());
}

int run(const Arguments &arguments, Console &console)
{
    const QVector<Operand> &files = arguments.operands();
    const Parts parts(files, arguments.options(), QStringLiteral("played"), console);
    Playback playback(parts.list(), console);
    playback.run();
    printResult(playback, files.size(), parts, console);
    return Status::Success;
}

} // namespace

Command playCommand()
{
    return {"play", "FILE...", "Play tunes to the end.", Description, 1,
            -1,     true,      Parts::options(),         run};
}
