#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Tunes.h"

#include <utility>
#include <vector>

namespace {

const char *const Description =
    "Prints the music of each file, as the program understands it, as a JSON object on a line\n"
    "of its own; a MIDI file gives one for each of its tracks that has notes. A file that cannot\n"
    "be read gives {\"file\":...,\"error\":...} and makes the exit status 1. FILE may be - for\n"
    "standard input. Times are ticks of 1/120960 of a whole note.\n";

void writeHeaders(JsonWriter &json, const Track &track)
{
    json.key("headers").beginObject();
    for (const QString &key : track.allHeaders().uniqueKeys()) {
        json.key(key).beginArray();
        for (const QString &value : track.headers(key))
            json.value(value);
        json.endArray();
    }
    json.endObject();
}

const char *typeName(TrackEvent::EventType type)
{
    switch (type) {
    case TrackEvent::Note:
        return "Note";
    case TrackEvent::Tempo:
        return "Tempo";
    case TrackEvent::Key:
        return "Key";
    case TrackEvent::UnitLength:
        return "UnitLength";
    case TrackEvent::Meter:
        return "Meter";
    case TrackEvent::None:
        break;
    }
    return "None";
}

void writePayload(JsonWriter &json, const TrackEvent &event)
{
    switch (event.type()) {
    case TrackEvent::Note:
        json.member("note", event.note()).member("duration", event.duration());
        break;
    case TrackEvent::Tempo:
        json.member("num", event.num()).member("den", event.den()).member("bpm", event.bpm());
        json.member("ticksPerMinute", event.ticksPerMinute());
        break;
    case TrackEvent::Key:
        json.member("key", event.keyIndex()).member("mode", event.mode());
        break;
    case TrackEvent::UnitLength:
    case TrackEvent::Meter:
        json.member("num", event.num()).member("den", event.den());
        break;
    case TrackEvent::None:
        break;
    }
}

void writeEvents(JsonWriter &json, const Track &track)
{
    json.key("events").beginArray();
    for (const TrackEvent &event : track.events()) {
        json.beginObject();
        json.member("type", QString::fromLatin1(typeName(event.type())));
        json.member("time", event.time());
        writePayload(json, event);
        json.endObject();
    }
    json.endArray();
}

JsonWriter trackObject(const QString &file, int number, const Track &track)
{
    JsonWriter json;
    json.beginObject().member("file", file).member("track", number);
    writeHeaders(json, track);
    json.member("ticksPerMinute", track.ticksPerMinute());
    json.member("measureLength", track.measureLength());
    json.member("beatsPerMeasure", track.beatsPerMeasure());
    json.member("length", track.length());
    json.member("noteCount", track.noteCount());
    writeEvents(json, track);
    return json.endObject();
}

JsonWriter errorObject(const QString &file, const QString &error)
{
    JsonWriter json;
    return json.beginObject().member("file", file).member("error", error).endObject();
}

QByteArray trackLines(const QString &file, const QList<Track> &tracks)
{
    QByteArray lines;
    for (int i = 0; i < tracks.size(); ++i)
        lines += trackObject(file, i + 1, tracks.at(i)).text() + '\n';
    return lines;
}

int run(const Arguments &arguments, Console &console)
{
    const QStringList files = texts(arguments.operands());
    std::vector<QByteArray> lines(static_cast<size_t>(files.size()));
    int status = Status::Success;
    const auto make = [&](int number, const Tunes::Music &music) {
        lines.at(static_cast<size_t>(number)) = trackLines(files.at(number), music.tracks);
    };
    const auto take = [&](int number, const std::optional<QString> &error) {
        console.write(std::exchange(lines.at(static_cast<size_t>(number)), {}));
        if (!error)
            return;
        console.line(errorObject(files.at(number), *error));
        status = Status::Failure;
    };
    Tunes::forEach(files, Tunes::midiOptions(arguments.options()), QStringLiteral("Reading"), make,
                   take, console);
    return status;
}

} // namespace

Command eventsCommand()
{
    return {"events",
            "FILE...",
            "Print the notes and other events of tunes.",
            Description,
            1,
            -1,
            false,
            Tunes::options(),
            run};
}
