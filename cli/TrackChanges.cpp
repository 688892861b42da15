#include "cli/TrackChanges.h"

#include "MIDI/KeyChoice.h"
#include "MIDI/RealignDials.h"
#include "MIDI/Realignment.h"
#include "MIDI/Transforms.h"
#include "cli/Console.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace {

constexpr const char *KeyOption = "--key";

constexpr int MostSemitones = 48;

constexpr int FinestUnit = 128;

/// How the help calls the dials.
constexpr std::array<const char *, RealignDials::Count> DialNames = {"R", "T", "Q", "S", "N"};

/// An option and what it does to a track.
struct Change {
    Option option;
    Track (*apply)(const Track &track, const QString &value);
};

/// Nothing for a text that has more in it than a key: who asks for "E flat" is not to get E.
std::optional<KeyChoice> keyOf(const QString &value)
{
    static const QRegularExpression shape(QStringLiteral("^\\s*[A-G][#b]?\\s*([a-z]*)\\s*$"),
                                          QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = shape.match(value);
    const auto key = match.hasMatch() ? KeyChoice::fromText(value) : std::nullopt;
    const bool hasMode = key && (key->mode != 0 || key->hasMajorQualifier);
    return match.captured(1).isEmpty() || hasMode ? key : std::nullopt;
}

QString checkTranspose(const QString &value)
{
    return checkInteger(value, -MostSemitones, MostSemitones);
}

QString checkUnitLength(const QString &value)
{
    QStringList units;
    for (int division = 1; division <= FinestUnit; division *= 2)
        units.append(QStringLiteral("1/%1").arg(division));
    if (units.contains(value))
        return {};
    return QStringLiteral("'%1' is not one of %2.").arg(value, units.join(QStringLiteral(", ")));
}

QString checkKey(const QString &value)
{
    if (keyOf(value))
        return {};
    return QStringLiteral("'%1' is not a key such as C, F#m or Bb.").arg(value);
}

QString checkRealign(const QString &value)
{
    const QStringList positions = value.split(QLatin1Char(','));
    if (positions.size() != RealignDials::Count)
        return QStringLiteral("'%1' is not five positions R,T,Q,S,N.").arg(value);
    for (size_t i = 0; i < DialNames.size(); ++i) {
        const QString problem =
            checkInteger(positions.at(static_cast<int>(i)), 0, RealignDials::dials().at(i).maximum);
        if (!problem.isEmpty())
            return QStringLiteral("%1: %2").arg(QLatin1String(DialNames.at(i)), problem);
    }
    return {};
}

RealignDials::Positions positionsOf(const QString &value)
{
    const QStringList positions = value.split(QLatin1Char(','));
    RealignDials::Positions result = {};
    for (size_t i = 0; i < result.size(); ++i)
        result.at(i) = positions.value(static_cast<int>(i)).toInt();
    return result;
}

Track transpose(const Track &track, const QString &value)
{
    return Transforms::transposeTrack(track, value.toInt());
}

/// Without the qualifier of a major key, which the generator would take for that of a minor one.
Track changeKey(const Track &track, const QString &value)
{
    KeyChoice key = keyOf(value).value_or(KeyChoice());
    key.hasMajorQualifier = false;
    return Transforms::withKey(track, key.text());
}

Track realign(const Track &track, const QString &value)
{
    return realignTrack(track, RealignDials::divisions(positionsOf(value)));
}

const QVector<Change> &changes()
{
    static const QVector<Change> table = {
        {{"--transpose", "N", "Move all notes by N semitones, -48 to 48.", Option::WholeCommand,
          checkTranspose},
         transpose},
        {{"--unit-length", "L", "Count note lengths in L: 1/1, 1/2, 1/4 ... 1/128.",
          Option::WholeCommand, checkUnitLength},
         Transforms::withUnitLength},
        {{KeyOption, "K", "Write in the key K, such as C, F#m or Bb.", Option::WholeCommand,
          checkKey},
         changeKey},
        {{"--realign", "R,T,Q,S,N", "Move notes to the grids of these dial positions.",
          Option::WholeCommand, checkRealign},
         realign},
        {{"--quick-realign", nullptr, "Move notes to the finest grids (7,6,5,5,4)."},
         [](const Track &track, const QString &) { return quickRealignTrack(track); }},
        {{"--octave-up", nullptr, "Move notes up an octave where they stay on the piano."},
         [](const Track &track, const QString &) { return Transforms::octaveUp(track); }},
        {{"--octave-down", nullptr, "Move notes down an octave where they stay on the piano."},
         [](const Track &track, const QString &) { return Transforms::octaveDown(track); }},
    };
    return table;
}

/// Null for an option that changes no track.
const Change *find(const QString &name)
{
    const auto it = std::find_if(changes().begin(), changes().end(), [&](const Change &change) {
        return name == QLatin1String(change.option.name);
    });
    return it == changes().end() ? nullptr : &*it;
}

} // namespace

QVector<Option> TrackChanges::options()
{
    QVector<Option> result;
    for (const Change &change : changes())
        result.append(change.option);
    return result;
}

bool TrackChanges::areGiven(const OptionValues &options)
{
    return std::any_of(
        options.given().begin(), options.given().end(),
        [](const OptionValues::Given &given) { return find(given.name) != nullptr; });
}

Track TrackChanges::applied(const Track &track, const OptionValues &options)
{
    Track result = track;
    for (const OptionValues::Given &given : options.given()) {
        if (const Change *const change = find(given.name))
            result = Transforms::reread(change->apply(result, given.value));
    }
    return result;
}

void TrackChanges::noteUnsupportedKeys(const OptionValues &options, Console &console)
{
    for (const OptionValues::Given &given : options.given()) {
        const auto key = given.name == QLatin1String(KeyOption) ? keyOf(given.value) : std::nullopt;
        if (key && !key->isSupportedByGame())
            console.message(QStringLiteral("--key: %1 is a key that is not supported by Quillmoor.")
                                .arg(key->text()));
    }
}
