#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Game.h"

#include <QIcon>

namespace {

const char *const Description =
    "Prints each instrument of the game as a JSON object on a line of its own, in the order of\n"
    "their names: the name shown to players, the kind, the fadeout in seconds, whether there is\n"
    "an icon, and for each note the sample files, the factor on their rate and the frequency.\n";

bool hasPicture(const QIcon &icon)
{
    return !icon.availableSizes().isEmpty();
}

void writeSample(JsonWriter &json, const InstrumentSample &sample)
{
    json.beginObject().key("files").beginArray();
    for (const QString &file : sample.files())
        json.value(file);
    json.endArray();
    json.member("pitch", sample.pitch()).member("frequency", sample.frequency()).endObject();
}

void writeNotes(JsonWriter &json, const Instrument::Mapping &mapping)
{
    json.key("notes").beginObject();
    for (auto it = mapping.begin(); it != mapping.end(); ++it) {
        json.key(QString::number(it.key()));
        writeSample(json, it.value());
    }
    json.endObject();
}

JsonWriter instrumentObject(const QString &name, const Instrument &instrument, const QIcon &icon)
{
    JsonWriter json;
    json.beginObject().member("name", name).member("kind", instrument.name());
    json.member("fadeout", instrument.fadeout()).member("icon", hasPicture(icon));
    writeNotes(json, instrument.mapping());
    return json.endObject();
}

int run(const Arguments &arguments, Console &console)
{
    const QuillmoorInstrumentSet set = Game::instruments(arguments.options());
    for (const QString &name : set.names())
        console.line(instrumentObject(name, set.instrument(name), set.icon(name)));
    return Status::Success;
}

} // namespace

Command instrumentsCommand()
{
    return {"instruments",   "", "List the game's instruments.", Description, 0, 0, true,
            Game::options(), run};
}
