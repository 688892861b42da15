#include "ABC/AccidentalMemory.h"

#include "ABC/KeyTable.h"

namespace {

constexpr qint8 NotRecorded = 127;

size_t slot(int letter, int octave)
{
    const int octaves = octave - AccidentalMemory::LowestOctave;
    return static_cast<size_t>(letter) + size_t{7} * static_cast<size_t>(octaves);
}

} // namespace

void AccidentalMemory::clear()
{
    m_accidentals.fill(NotRecorded);
}

void AccidentalMemory::record(int letter, int octave, int accidental)
{
    m_accidentals[slot(letter, octave)] = static_cast<qint8>(accidental);
}

int AccidentalMemory::inForce(int letter, int octave, quint32 row) const
{
    const qint8 recorded = m_accidentals[slot(letter, octave)];
    return recorded == NotRecorded ? KeyTable::accidental(row, letter) : recorded;
}
