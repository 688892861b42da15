#include "ABC/KeyTable.h"

#include <algorithm>
#include <array>

namespace {

struct Row {
    std::array<int, KeyTable::LetterCount> accidentals;
    std::array<const char *, KeyTable::ModeCount> tonics; // major minor mix dor phr lyd loc
    std::array<int, 12> spelling; // the accidental with which each pitch class is written
};

// Row 9 leaves B natural and flattens A: songs for the game rely on it.
// clang-format off
constexpr std::array<Row, KeyTable::RowCount> Rows {{
    {{ 1,  1,  1,  1,  1,  1,  1}, {"C#", "A#", "G#", "D#", "E#", "F#", "B#"},
     {1,  1, 2,  1,  2, 1,  1, 2,  1,  2,  1,  0}},
    {{ 1,  1,  1,  1,  1,  1,  0}, {"F#", "D#", "C#", "G#", "A#", "B",  "E#"},
     {1,  1, 2,  1,  0, 1,  1, 2,  1,  2,  1,  0}},
    {{ 1,  1,  0,  1,  1,  1,  0}, {"B",  "G#", "F#", "C#", "D#", "E",  "A#"},
     {1,  1, 2,  1,  0, 1,  1, 2,  1,  0,  1,  0}},
    {{ 1,  1,  0,  1,  1,  0,  0}, {"E",  "C#", "B",  "F#", "G#", "A",  "D#"},
     {1,  1, 0,  1,  0, 1,  1, 2,  1,  0,  1,  0}},
    {{ 1,  0,  0,  1,  1,  0,  0}, {"A",  "F#", "E",  "B",  "C#", "D",  "G#"},
     {1,  1, 0,  1,  0, 1,  1, 0,  1,  0,  1,  0}},
    {{ 1,  0,  0,  1,  0,  0,  0}, {"D",  "B",  "A",  "E",  "F#", "G",  "C#"},
     {0,  1, 0,  1,  0, 1,  1, 0,  1,  0,  1,  0}},
    {{ 0,  0,  0,  1,  0,  0,  0}, {"G",  "E",  "D",  "A",  "B",  "C",  "F#"},
     {0,  1, 0,  1,  0, 0,  1, 0,  1,  0,  1,  0}},
    {{ 0,  0,  0,  0,  0,  0,  0}, {"C",  "A",  "G",  "D",  "E",  "F",  "B"},
     {0,  1, 0,  1,  0, 0,  1, 0,  1,  0, -1,  0}},
    {{ 0,  0,  0,  0,  0,  0, -1}, {"F",  "D",  "C",  "G",  "A",  "BB", "E"},
     {0,  1, 0, -1,  0, 0,  1, 0,  1,  0, -1,  0}},
    {{ 0,  0, -1,  0,  0, -1,  0}, {"BB", "G",  "F",  "C",  "D",  "EB", "A"},
     {0,  1, 0, -1,  0, 0,  1, 0, -1,  0, -1,  0}},
    {{ 0,  0, -1,  0,  0, -1, -1}, {"EB", "C",  "BB", "F",  "G",  "AB", "D"},
     {0, -1, 0, -1,  0, 0,  1, 0, -1,  0, -1,  0}},
    {{ 0, -1, -1,  0,  0, -1, -1}, {"AB", "F",  "EB", "BB", "C",  "DB", "G"},
     {0, -1, 0, -1,  0, 0, -1, 0, -1,  0, -1,  0}},
    {{ 0, -1, -1,  0, -1, -1, -1}, {"DB", "BB", "AB", "EB", "F",  "GB", "C"},
     {0, -1, 0, -1,  0, 0, -1, 0, -1,  0, -1, -1}},
    {{-1, -1, -1,  0, -1, -1, -1}, {"GB", "EB", "DB", "AB", "BB", "CB", "F"},
     {0, -1, 0, -1, -1, 0, -1, 0, -1,  0, -1, -1}},
    {{-1, -1, -1, -1, -1, -1, -1}, {"CB", "AB", "GB", "DB", "EB", "FB", "BB"},
     {0, -1, 0, -1, -1, 0, -1, 0, -1, -2, -1, -1}},
}};
// clang-format on

constexpr std::array<int, KeyTable::LetterCount> Semitones{0, 2, 4, 5, 7, 9, 11};

constexpr std::array<const char *, KeyTable::ModeCount> Suffixes{"",    "m",   "mix", "dor",
                                                                 "phr", "lyd", "loc"};

struct ModeName {
    const char *name;
    KeyTable::Mode mode;
};

constexpr std::array<ModeName, 9> ModeNames{{{"", KeyTable::Major},
                                             {"MAJ", KeyTable::Major},
                                             {"MIN", KeyTable::Minor},
                                             {"M", KeyTable::Minor},
                                             {"MIX", KeyTable::Mixolydian},
                                             {"PHR", KeyTable::Phrygian},
                                             {"DOR", KeyTable::Dorian},
                                             {"LYD", KeyTable::Lydian},
                                             {"LOC", KeyTable::Locrian}}};

const Row &rowAt(quint32 row)
{
    return Rows[row < KeyTable::RowCount ? row : KeyTable::NaturalRow];
}

size_t modeAt(quint32 mode)
{
    return mode < KeyTable::ModeCount ? mode : KeyTable::Major;
}

/// Written with an accidental, B sharp sounds as the C above it and C flat as the B below it.
KeyTable::Spelling spell(int pitchClass, int accidental)
{
    const int natural = pitchClass - accidental;
    const int octave = natural < 0 ? -1 : natural > 11 ? 1 : 0;
    const auto letter = std::find(Semitones.begin(), Semitones.end(), natural - 12 * octave);
    return {accidental, static_cast<int>(letter - Semitones.begin()), octave};
}

using SpellingTable = std::array<std::array<KeyTable::Spelling, 12>, KeyTable::RowCount>;

SpellingTable spellingTable()
{
    SpellingTable table;
    for (size_t row = 0; row < table.size(); ++row) {
        for (size_t pitchClass = 0; pitchClass < 12; ++pitchClass)
            table[row][pitchClass] =
                spell(static_cast<int>(pitchClass), Rows[row].spelling[pitchClass]);
    }
    return table;
}

} // namespace

int KeyTable::semitone(int letter)
{
    return Semitones[static_cast<size_t>(letter)];
}

int KeyTable::accidental(quint32 row, int letter)
{
    return rowAt(row).accidentals[static_cast<size_t>(letter)];
}

const KeyTable::Spelling &KeyTable::spelling(quint32 row, quint32 pitchClass)
{
    static const SpellingTable table = spellingTable();
    return table[row < RowCount ? row : NaturalRow][pitchClass];
}

QLatin1String KeyTable::tonic(quint32 row, quint32 mode)
{
    return QLatin1String(rowAt(row).tonics[modeAt(mode)]);
}

QString KeyTable::displayTonic(quint32 row, quint32 mode)
{
    QString text = tonic(row, mode);
    if (text.size() > 1)
        text[1] = text.at(1).toLower();
    return text;
}

QLatin1String KeyTable::modeSuffix(quint32 mode)
{
    return QLatin1String(Suffixes[modeAt(mode)]);
}

QString KeyTable::displayName(quint32 row, quint32 mode)
{
    return displayTonic(row, mode) + modeSuffix(mode);
}

std::optional<quint32> KeyTable::row(const QString &tonic, quint32 mode)
{
    const auto found = std::find_if(Rows.begin(), Rows.end(), [&](const Row &row) {
        return tonic == QLatin1String(row.tonics[modeAt(mode)]);
    });
    if (found == Rows.end())
        return std::nullopt;
    return static_cast<quint32>(found - Rows.begin());
}

quint32 KeyTable::mode(const QString &name)
{
    const auto found = std::find_if(ModeNames.begin(), ModeNames.end(), [&](const ModeName &entry) {
        return name == QLatin1String(entry.name);
    });
    return found == ModeNames.end() ? Major : found->mode;
}
