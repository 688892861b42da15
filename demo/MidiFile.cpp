#include "demo/MidiFile.h"

#include <QDataStream>

#include <algorithm>

namespace Demo {

namespace {

/// Divides the notes that songs are made of, triplets too, without a rest.
constexpr quint16 PulsesPerQuarter = 480;
constexpr int DrumChannel = 9;
constexpr int Velocity = 96;

quint64 pulses(quint64 ticks)
{
    return ticks * PulsesPerQuarter / Ticks::PerQuarterNote;
}

/// What a channel is told at a time. Sorted so that a note ends before it is struck again.
struct Message {
    quint64 pulse;
    bool starts;
    quint8 note;

    bool operator<(const Message &other) const
    {
        if (pulse != other.pulse)
            return pulse < other.pulse;
        return starts != other.starts ? other.starts : note < other.note;
    }
};

void appendQuantity(QByteArray &bytes, quint64 value)
{
    QByteArray quantity(1, static_cast<char>(value & 0x7FU));
    for (value >>= 7U; value != 0; value >>= 7U)
        quantity.prepend(static_cast<char>((value & 0x7FU) | 0x80U));
    bytes += quantity;
}

void appendMeta(QByteArray &bytes, char type, const QByteArray &contents)
{
    bytes += '\0';
    bytes += '\xFF';
    bytes += type;
    appendQuantity(bytes, static_cast<quint64>(contents.size()));
    bytes += contents;
}

QByteArray chunk(const QByteArray &type, const QByteArray &contents)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.writeRawData(type.constData(), type.size());
    stream << static_cast<quint32>(contents.size());
    stream.writeRawData(contents.constData(), contents.size());
    return bytes;
}

QByteArray trackChunk(QByteArray contents)
{
    appendMeta(contents, '\x2F', QByteArray());
    return chunk(QByteArrayLiteral("MTrk"), contents);
}

QByteArray headerChunk(int tracks)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << quint16{1} << static_cast<quint16>(tracks) << PulsesPerQuarter;
    return chunk(QByteArrayLiteral("MThd"), bytes);
}

QByteArray tempo(const Track &track)
{
    const quint64 perMinute = std::max<quint64>(track.ticksPerMinute(), 1);
    const quint64 micros = quint64{60000000} * Ticks::PerQuarterNote / perMinute;
    QByteArray bytes;
    for (unsigned shift : {16U, 8U, 0U})
        bytes += static_cast<char>((micros >> shift) & 0xFFU);
    return bytes;
}

/// Numerator, the denominator as a power of two, a click per quarter, the usual 8.
QByteArray meter(const Track &track)
{
    const quint32 measure = std::max<quint32>(track.measureLength(), 1);
    const quint32 denominator = track.beatsPerMeasure() * Ticks::PerWholeNote / measure;
    char power = 0;
    while (power < 6 && (1U << static_cast<unsigned>(power)) < denominator)
        ++power;
    QByteArray bytes(1, static_cast<char>(track.beatsPerMeasure()));
    bytes += power;
    bytes += '\x18';
    bytes += '\x08';
    return bytes;
}

QByteArray conductor(const Track &track)
{
    QByteArray bytes;
    appendMeta(bytes, '\x51', tempo(track));
    appendMeta(bytes, '\x58', meter(track));
    return trackChunk(bytes);
}

std::vector<Message> messagesOf(const Track &track)
{
    std::vector<Message> messages;
    for (const TrackEvent &event : track.events()) {
        if (!event.isNote())
            continue;
        const auto note = static_cast<quint8>(event.note());
        messages.push_back({pulses(event.time()), true, note});
        messages.push_back({pulses(event.time() + event.duration()), false, note});
    }
    std::sort(messages.begin(), messages.end());
    return messages;
}

QByteArray partChunk(const MidiPart &part, int channel)
{
    QByteArray bytes;
    appendMeta(bytes, '\x03', part.name.toLatin1());
    bytes += '\0';
    bytes += static_cast<char>(0xC0 | channel);
    bytes += static_cast<char>(part.program);
    quint64 now = 0;
    for (const Message &message : messagesOf(part.track)) {
        appendQuantity(bytes, message.pulse - now);
        now = message.pulse;
        bytes += static_cast<char>((message.starts ? 0x90 : 0x80) | channel);
        bytes += static_cast<char>(message.note);
        bytes += static_cast<char>(message.starts ? Velocity : 0);
    }
    return trackChunk(bytes);
}

} // namespace

QByteArray midiFile(const std::vector<MidiPart> &parts)
{
    QByteArray bytes = headerChunk(static_cast<int>(parts.size()) + 1);
    bytes += conductor(parts.empty() ? Track() : parts.front().track);
    int nextChannel = 0;
    for (const MidiPart &part : parts) {
        if (nextChannel == DrumChannel)
            ++nextChannel;
        bytes += partChunk(part, part.isDrums ? DrumChannel : nextChannel++);
    }
    return bytes;
}

} // namespace Demo
