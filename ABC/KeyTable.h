#pragma once

#include <QLatin1String>
#include <QString>

#include <optional>

/// The keys that ABC knows here: 15 rows of accidentals, each the signature of seven tonics, one
/// per mode; and how each pitch is spelled in each row.
///
/// Row 7 is the signature without accidentals, row 7 - n has n sharps, row 7 + n has n flats. A
/// row or mode out of range counts as row 7 or as major. Letters count 0..6 for C, D, E, F, G,
/// A, B; pitch classes 0..11 from C.
namespace KeyTable {

enum Mode : quint32 { Major, Minor, Mixolydian, Dorian, Phrygian, Lydian, Locrian };

constexpr quint32 RowCount = 15;
constexpr quint32 NaturalRow = 7;
constexpr quint32 ModeCount = 7;
constexpr quint32 LetterCount = 7;

/// How a pitch class is written: `letter` with `accidental` (semitones), in an octave that is
/// `octave` (-1, 0 or 1) away from that of the sounding pitch.
struct Spelling {
    int accidental = 0;
    int letter = 0;
    int octave = 0;
};

/// Semitones of a letter above C.
int semitone(int letter);

/// What the row's signature does to a letter: 1 sharp, -1 flat, 0 natural.
int accidental(quint32 row, int letter);

const Spelling &spelling(quint32 row, quint32 pitchClass);

/// The tonic in upper case, "#" for sharp and "B" for flat: "BB" is B flat.
QLatin1String tonic(quint32 row, quint32 mode);

/// The tonic as it is written in ABC: "Bb".
QString displayTonic(quint32 row, quint32 mode);

/// The mode as it is written behind a tonic: "", "m", "mix", "dor", "phr", "lyd", "loc".
QLatin1String modeSuffix(quint32 mode);

/// displayTonic() and modeSuffix() together: "Dm".
QString displayName(quint32 row, quint32 mode);

/// The row in which `tonic` (as tonic() writes it) has `mode`.
std::optional<quint32> row(const QString &tonic, quint32 mode);

/// The mode of an upper-case name ("", "MAJ", "M", "MIN", "MIX", ...); major for names that the
/// list does not have, "ION" and "AEO" among them.
quint32 mode(const QString &name);

} // namespace KeyTable
