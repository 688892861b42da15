#include "MIDI/MidiReader.h"

quint32 MidiReader::word(quint32 byteCount)
{
    if (remaining() < byteCount) {
        skip(byteCount);
        return 0;
    }
    quint32 value = 0;
    for (quint32 i = 0; i < byteCount; ++i)
        value = value << 8U | byte();
    return value;
}

quint32 MidiReader::triple()
{
    const quint32 high = byte();
    const quint32 middle = byte();
    return high << 16U | middle << 8U | byte();
}

quint32 MidiReader::quantity()
{
    quint32 value = 0;
    quint8 next = 0;
    do {
        next = byte();
        value = value << 7U | (next & 0x7FU);
    } while ((next & 0x80U) != 0);
    return value;
}

QByteArray MidiReader::bytes(quint32 count)
{
    const int size = static_cast<int>(std::min(count, remaining()));
    QByteArray piece = m_bytes.mid(m_position, size);
    m_position += size;
    return piece;
}
