#include "cli/Parts.h"

#include "Quillmoor/InstrumentChoice.h"
#include "Render/UnmappedNotes.h"
#include "cli/Console.h"
#include "cli/Game.h"
#include "cli/Tunes.h"

#include <algorithm>
#include <vector>

namespace {

constexpr const char *InstrumentOption = "--instrument";
constexpr const char *VolumeOption = "--volume";
constexpr const char *PanOption = "--pan";
constexpr const char *SkipOption = "--skip-unmapped";

QString checkVolume(const QString &value)
{
    return checkNumber(value, 0.0, 1.0);
}

QString checkPan(const QString &value)
{
    return checkNumber(value, -1.0, 1.0);
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

void requireMapped(const QVector<Part> &parts, const QString &participle, Console &console)
{
    bool allMapped = true;
    for (const Part &part : parts)
        allMapped = isMapped(part, console) && allMapped;
    if (!allMapped)
        throw QStringLiteral("Nothing was %1; --skip-unmapped leaves such notes out.")
            .arg(participle);
}

/// The tracks of each file. Throws, after a message for each file that cannot be read.
std::vector<QList<Track>> readTracks(const QStringList &files, const MidiOptions &options,
                                     const QString &participle, Console &console)
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
        throw QStringLiteral("Nothing was %1.").arg(participle);
    return tracks;
}

QVector<Part> readParts(const QVector<Operand> &files, const OptionValues &options,
                        const QString &participle, Console &console)
{
    const auto tracks = readTracks(texts(files), Tunes::midiOptions(options), participle, console);
    const QuillmoorInstrumentSet set = Game::instruments(options);
    QVector<Part> parts;
    for (int i = 0; i < files.size(); ++i) {
        int number = 0;
        for (const Track &track : tracks.at(static_cast<size_t>(i)))
            parts.append(makePart(files.at(i), ++number, track, set));
    }
    return parts;
}

} // namespace

QVector<Option> Parts::options()
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

Parts::Parts(const QVector<Operand> &files, const OptionValues &options, const QString &participle,
             Console &console)
    : m_list(readParts(files, options, participle, console))
{
    if (options.has(SkipOption))
        leaveOutUnmapped();
    else
        requireMapped(m_list, participle, console);
}

void Parts::leaveOutUnmapped()
{
    int count = 0;
    for (Part &part : m_list) {
        count += UnmappedNotes::findUnmapped(part.track, part.instrument).size();
        part.track = UnmappedNotes::withoutUnmapped(part.track, part.instrument);
    }
    m_skipped = count;
}

void Parts::addSkipped(JsonWriter &json) const
{
    if (m_skipped)
        json.member("skipped", *m_skipped);
}
