#pragma once

#include <QtGlobal>

#include <array>

/// The accidentals written so far, by letter and octave.
///
/// Letters count 0..6 from C; octave 0 is that of the upper-case letter without marks. Octaves
/// from LowestOctave to HighestOctave only.
class AccidentalMemory {
public:
    static constexpr int LowestOctave = -4;
    static constexpr int HighestOctave = 4;

    AccidentalMemory() { clear(); }

    void clear();
    /// `accidental` in semitones, from -100 to 100.
    void record(int letter, int octave, int accidental);
    /// The accidental recorded, else that of the key table's row `row`.
    int inForce(int letter, int octave, quint32 row) const;

private:
    static constexpr int SlotCount = 7 * (HighestOctave - LowestOctave + 1);

    std::array<qint8, SlotCount> m_accidentals;
};
