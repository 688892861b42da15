#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <algorithm>

/// A cursor over the bytes of a MIDI file, which it never leaves: what is read past the end is 0,
/// and skipping stops there. Words are big-endian.
class MidiReader {
public:
    explicit MidiReader(const QByteArray &bytes)
        : m_bytes(bytes)
    {
    }

    bool atEnd() const { return m_position == m_bytes.size(); }

    /// The next byte, which is not consumed.
    quint8 peek() const { return atEnd() ? 0 : static_cast<quint8>(m_bytes.at(m_position)); }
    quint8 byte()
    {
        const quint8 value = peek();
        skip(1);
        return value;
    }

    /// 0 when fewer bytes are left, which are then consumed.
    quint16 word16() { return static_cast<quint16>(word(2)); }
    quint32 word32() { return word(4); }

    /// Three bytes, each of which is 0 past the end.
    quint32 triple();

    /// A number of any count of bytes, seven bits in each, the last one without its top bit. Of
    /// the bits the lowest 32 are kept.
    quint32 quantity();

    void skip(quint32 count) { m_position += static_cast<int>(std::min(count, remaining())); }

    /// The next `count` bytes, or those that are left.
    QByteArray bytes(quint32 count);

private:
    quint32 remaining() const { return static_cast<quint32>(m_bytes.size() - m_position); }
    quint32 word(quint32 byteCount);

    QByteArray m_bytes;
    int m_position = 0;
};
