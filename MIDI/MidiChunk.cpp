#include "MIDI/MidiChunk.h"

#include "model/MessageLog.h"

namespace {

constexpr quint32 ChunkMagic = 0x4D54726B; // "MTrk"

enum ChannelEvent : quint8 {
    NoteOff = 0x8,
    NoteOn = 0x9,
    KeyPressure = 0xA,
    ControlChange = 0xB,
    ProgramChange = 0xC,
    ChannelPressure = 0xD,
    PitchBend = 0xE,
    System = 0xF,
};

enum SystemEvent : quint8 {
    Exclusive = 0xF0,
    ExclusiveContinued = 0xF7,
    Meta = 0xFF,
};

enum MetaEvent : quint8 {
    InstrumentName = 0x04,
    ChannelPrefix = 0x20,
    EndOfTrack = 0x2F,
    SetTempo = 0x51,
    TimeSignature = 0x58,
    KeySignature = 0x59,
};

constexpr int LastChannel = MidiChunk::ChannelCount - 1;

/// Whether a meta event of this type, which has data of a fixed length, has another one.
bool isOfWrongLength(quint8 type, quint32 length)
{
    switch (type) {
    case ChannelPrefix:
        return length != 1;
    case SetTempo:
        return length != 3;
    case TimeSignature:
        return length != 4;
    case KeySignature:
        return length != 2;
    default:
        return false;
    }
}

QString hexadecimal(quint8 byte)
{
    return QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0'));
}

void warnOfUnterminatedNote()
{
    MessageLog::warning("MIDI/MidiParser", "void MidiParser::parseTrack(QDataStream&, bool)",
                        QStringLiteral("WARNING: Unterminated notes found at track end!\n"));
}

} // namespace

MidiChunk::MidiChunk(MidiReader &reader, Channels &channels, MidiConductor &conductor, Bends bends)
    : m_reader(reader)
    , m_channels(channels)
    , m_conductor(conductor)
    , m_bends(bends)
{
    Q_ASSERT(channels.size() == ChannelCount);
}

void MidiChunk::read()
{
    if (m_reader.word32() != ChunkMagic)
        throw QStringLiteral("Invalid MIDI file.");
    m_reader.skip(4); // the length
    while (!m_isEnded && !m_reader.atEnd())
        readEvent();
}

void MidiChunk::readEvent()
{
    m_tick += m_reader.quantity();
    if (!readStatus())
        return;
    switch (m_status >> 4U) {
    case NoteOff:
        return readNote(false);
    case NoteOn:
        return readNote(true);
    case KeyPressure:
        return m_reader.skip(2);
    case ControlChange:
        return readControl();
    case ProgramChange:
        return channel().setProgram(m_reader.byte());
    case ChannelPressure:
        return m_reader.skip(1);
    case PitchBend:
        return readBend();
    case System:
        return readSystemEvent();
    default:
        throw QStringLiteral("Unknown MIDI channel event 0x%1.").arg(hexadecimal(m_status));
    }
}

/// False where the file ends and no status is in force.
bool MidiChunk::readStatus()
{
    if (m_reader.atEnd())
        return m_status != 0;
    if ((m_reader.peek() & 0x80U) != 0)
        m_status = m_reader.byte();
    return true;
}

void MidiChunk::readNote(bool isOn)
{
    const quint8 key = m_reader.byte();
    const quint8 velocity = m_reader.byte();
    if (isOn && velocity != 0)
        channel().startNote(key, m_tick);
    else
        channel().endNote(key, m_tick);
}

void MidiChunk::readControl()
{
    const quint8 controller = m_reader.byte();
    channel().control(controller, m_reader.byte());
}

void MidiChunk::readBend()
{
    const quint32 low = m_reader.byte();
    const quint32 high = m_reader.byte();
    if (m_bends == Bends::Heard)
        channel().bend(high << 7U | low, m_tick);
}

void MidiChunk::readSystemEvent()
{
    switch (m_status) {
    case Exclusive:
    case ExclusiveContinued:
        return m_reader.skip(m_reader.quantity());
    case Meta:
        return readMetaEvent();
    default:
        throw QStringLiteral("Unknown MIDI system event 0x%1.").arg(hexadecimal(m_status));
    }
}

void MidiChunk::readMetaEvent()
{
    const quint8 type = m_reader.byte();
    const quint32 length = m_reader.quantity();
    if (isOfWrongLength(type, length))
        return m_reader.skip(length);
    switch (type) {
    case InstrumentName:
        return readInstrumentName(length);
    case ChannelPrefix:
        return readChannelPrefix();
    case EndOfTrack:
        m_reader.skip(length);
        return endTrack();
    case SetTempo:
        return m_conductor.setTempo(m_tick, m_reader.triple());
    case TimeSignature:
        return readMeter();
    case KeySignature:
        return readKey();
    default:
        return m_reader.skip(length);
    }
}

void MidiChunk::readInstrumentName(quint32 length)
{
    const QByteArray name = m_reader.bytes(length);
    m_channels[m_prefix].addTitle(QString::fromLatin1(name.constData()));
}

void MidiChunk::readChannelPrefix()
{
    const quint8 prefix = m_reader.byte();
    if (prefix < ChannelCount)
        m_prefix = prefix;
}

void MidiChunk::readMeter()
{
    const quint32 numerator = m_reader.byte();
    const quint32 exponent = m_reader.byte();
    m_reader.skip(2); // clocks per click and 32nds per quarter
    m_conductor.setMeter(m_tick, numerator, exponent);
}

void MidiChunk::readKey()
{
    const auto sharps = static_cast<qint8>(m_reader.byte());
    m_conductor.setKey(m_tick, sharps, m_reader.byte());
}

/// Only the last channel's notes end with the chunk. Those of the others may be ended by a later
/// one.
void MidiChunk::endTrack()
{
    const int count = m_channels[LastChannel].endAll(m_tick);
    for (int i = 0; i < count; ++i)
        warnOfUnterminatedNote();
    m_isEnded = true;
}
