#include "Quillmoor/InstrumentChoice.h"
#include "Render/TrackRenderer.h"
#include "Render/UnmappedNotes.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Files.h"
#include "cli/Game.h"
#include "cli/Signals.h"
#include "cli/Tunes.h"

#include <QEventLoop>
#include <QFileInfo>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

constexpr const char *InstrumentOption = "--instrument";
constexpr const char *VolumeOption = "--volume";
constexpr const char *PanOption = "--pan";
constexpr const char *SkipOption = "--skip-unmapped";

const char *const Description =
    "Renders the tunes of all files together into the wave file OUT.wav; each track of a MIDI\n"
    "file is a tune. Each is played by an instrument of the game: the one that --instrument\n"
    "names, else the one that the tune names in a line \"I:instrument NAME\", else the first of\n"
    "the game. Prints {\"file\":...,\"seconds\":...,\"frames\":...,\"notes\":...,\"peak\":...,\n"
    "\"clipped\":...}; peak is the largest sample before clamping, 1.0 being full scale. FILE may\n"
    "be - for standard input.\n"
    "\n"
    "A note that its instrument does not map is an error, found before anything is written.\n"
    "OUT.wav appears when it is complete; Ctrl-C leaves nothing behind.\n";

/// One track of the mix.
struct Part {
    QString file;
    int number; ///< of the track in its file, from 1
    Track track;
    Instrument instrument;
    QString instrumentName;
    float volume = 1.0F;
    float pan = 0.0F;
};

QString checkVolume(const QString &value)
{
    return checkNumber(value, 0.0, 1.0);
}

QString checkPan(const QString &value)
{
    return checkNumber(value, -1.0, 1.0);
}

void checkOutput(const QString &output, const QVector<Operand> &files)
{
    if (output == QLatin1String("-"))
        throw UsageError{QStringLiteral("A wave file cannot go to standard output.")};
    if (QFileInfo(output).isDir() || Files::isSpecial(output))
        throw QStringLiteral("%1 is not a regular file.").arg(output);
    for (const Operand &file : files) {
        if (Files::areSame(file.text, output))
            throw QStringLiteral("%1 is an input file.").arg(output);
    }
}

QString instrumentName(const Operand &operand, const Track &track, const QStringList &names)
{
    if (operand.options.has(InstrumentOption))
        return operand.options.value(InstrumentOption);
    return names.at(chooseInstrument(track.headers(QStringLiteral("I")), names, 0));
}

Part makePart(const Operand &operand, int number, const Track &track,
              const QuillmoorInstrumentSet &set)
{
    const QString name = instrumentName(operand, track, set.names());
    Part part{operand.text, number, track, set.instrument(name), name};
    part.volume = static_cast<float>(operand.options.number(VolumeOption, 1.0));
    part.pan = static_cast<float>(operand.options.number(PanOption, 0.0));
    return part;
}

QString unmappedMessage(const Part &part, const QVector<UnmappedNotes::Note> &notes)
{
    const UnmappedNotes::Note &first = notes.first();
    const QString others =
        notes.size() == 1 ? QString() : QStringLiteral(" (and %1 more)").arg(notes.size() - 1);
    return QStringLiteral("%1: track %2, bar %3: the instrument '%4' has no note %5 (%6 in ABC)%7.")
        .arg(part.file, QString::number(part.number), QString::number(first.bar),
             part.instrumentName, UnmappedNotes::pitchName(first.pitch),
             UnmappedNotes::abcName(first.pitch), others);
}

/// False, with a message, for a part that its instrument cannot play as a whole.
bool isMapped(const Part &part, Console &console)
{
    const auto unmapped = UnmappedNotes::findUnmapped(part.track, part.instrument);
    if (!unmapped.isEmpty())
        console.message(unmappedMessage(part, unmapped));
    return unmapped.isEmpty();
}

void requireMapped(const QVector<Part> &parts, Console &console)
{
    bool allMapped = true;
    for (const Part &part : parts)
        allMapped = isMapped(part, console) && allMapped;
    if (!allMapped)
        throw QStringLiteral("Nothing was rendered; --skip-unmapped leaves such notes out.");
}

/// Answers how many notes.
int leaveOutUnmapped(QVector<Part> &parts)
{
    int count = 0;
    for (Part &part : parts) {
        count += UnmappedNotes::findUnmapped(part.track, part.instrument).size();
        part.track = UnmappedNotes::withoutUnmapped(part.track, part.instrument);
    }
    return count;
}

void showProgress(Console &console, const QString &output, quint64 current, quint64 total)
{
    const double share =
        total == 0 ? 1.0 : static_cast<double>(current) / static_cast<double>(total);
    const int percent = static_cast<int>(std::min(share, 1.0) * 100);
    console.progress(QStringLiteral("Rendering %1: %2%").arg(output, QString::number(percent)));
}

/// Returns when the renderer has finished; throws what made it fail.
void waitFor(TrackRenderer &renderer)
{
    QEventLoop loop;
    QString failure;
    QObject::connect(&renderer, &TrackRenderer::renderFinished, &loop, &QEventLoop::quit);
    QObject::connect(&renderer, &TrackRenderer::renderFailed, &loop, [&](const QString &message) {
        failure = message;
        loop.quit();
    });
    renderer.start();
    loop.exec();
    if (!failure.isEmpty())
        throw QString(failure);
}

RenderResult renderParts(const QString &output, const QVector<Part> &parts, Console &console)
{
    TrackRenderer renderer(output);
    for (const Part &part : parts)
        renderer.addTrack(part.track, part.instrument, part.volume, part.pan);
    QObject::connect(
        &renderer, &TrackRenderer::renderProgress, &renderer,
        [&](quint64 current, quint64 total) { showProgress(console, output, current, total); });
    SignalWatch watch;
    QObject::connect(&watch, &SignalWatch::interrupted, &renderer, &TrackRenderer::cancel);
    try {
        waitFor(renderer);
    } catch (const QString &) {
        if (watch.received() == 0)
            throw;
    }
    if (watch.received() != 0) {
        console.clearProgress();
        SignalWatch::dieBy(watch.received());
    }
    return renderer.result();
}

void printResult(const QString &output, const RenderResult &result, std::optional<int> skipped,
                 Console &console)
{
    JsonWriter json;
    json.beginObject().member("file", output).member("seconds", result.seconds);
    json.member("frames", result.frames).member("notes", result.notes);
    json.member("peak", result.peak).member("clipped", result.clipped);
    if (skipped)
        json.member("skipped", *skipped);
    console.line(json.endObject());
}

/// The tracks of each file. Throws, after a message for each file that cannot be read.
std::vector<QList<Track>> readTracks(const QStringList &files, const MidiOptions &options,
                                     Console &console)
{
    std::vector<QList<Track>> tracks(static_cast<size_t>(files.size()));
    bool isWhole = true;
    const auto make = [&](int number, const Tunes::Music &music) {
        tracks.at(static_cast<size_t>(number)) = music.tracks;
    };
    const auto take = [&](int number, const std::optional<QString> &error) {
        if (error)
            console.message(QStringLiteral("%1: %2").arg(files.at(number), *error));
        isWhole = isWhole && !error;
    };
    Tunes::forEach(files, options, QStringLiteral("Reading"), make, take, console);
    const bool isEmpty = std::all_of(tracks.begin(), tracks.end(),
                                     [](const QList<Track> &each) { return each.isEmpty(); });
    if (!isWhole || isEmpty)
        throw QStringLiteral("Nothing was rendered.");
    return tracks;
}

QVector<Part> readParts(const QVector<Operand> &files, const OptionValues &options,
                        Console &console)
{
    const auto tracks = readTracks(texts(files), Tunes::midiOptions(options), console);
    const QuillmoorInstrumentSet set = Game::instruments(options);
    QVector<Part> parts;
    for (int i = 0; i < files.size(); ++i) {
        int number = 0;
        for (const Track &track : tracks.at(static_cast<size_t>(i)))
            parts.append(makePart(files.at(i), ++number, track, set));
    }
    return parts;
}

int run(const Arguments &arguments, Console &console)
{
    const QString &output = arguments.operand(0);
    const QVector<Operand> files = arguments.operands().mid(1);
    checkOutput(output, files);
    QVector<Part> parts = readParts(files, arguments.options(), console);
    std::optional<int> skipped;
    if (arguments.options().has(SkipOption))
        skipped = leaveOutUnmapped(parts);
    else
        requireMapped(parts, console);
    printResult(output, renderParts(output, parts, console), skipped, console);
    return Status::Success;
}

QVector<Option> options()
{
    return QVector<Option>{
               {InstrumentOption, "NAME", "The instrument that plays them.", Option::FilesAfter},
               {VolumeOption, "0..1", "How loud they play (1).", Option::FilesAfter, checkVolume},
               {PanOption, "-1..1", "Where they are heard: left, middle (0), right.",
                Option::FilesAfter, checkPan},
           }
    + Game::options()
        + QVector<Option>{{SkipOption, nullptr,
                           "Leave out notes that the instrument does not map, and count them."}}
    + Tunes::options();
}

} // namespace

Command renderCommand()
{
    return {"render",
            "OUT.wav FILE...",
            "Render tunes into a wave file.",
            Description,
            2,
            -1,
            true,
            options(),
            run};
}
