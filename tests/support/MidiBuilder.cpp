#include "support/MidiBuilder.h"

namespace MidiBuilder {

namespace {

QByteArray bytes(std::initializer_list<quint32> values)
{
    QByteArray result;
    for (const quint32 value : values)
        result += static_cast<char>(value & 0xFFU);
    return result;
}

} // namespace

QByteArray word16(quint32 value)
{
    return bytes({value >> 8U, value});
}

QByteArray word32(quint32 value)
{
    return bytes({value >> 24U, value >> 16U, value >> 8U, value});
}

QByteArray quantity(quint32 value)
{
    QByteArray result = bytes({value & 0x7FU});
    while ((value >>= 7U) != 0)
        result.prepend(bytes({0x80U | (value & 0x7FU)}));
    return result;
}

QByteArray header(quint32 format, quint32 chunkCount, quint32 division)
{
    return "MThd" + word32(6) + word16(format) + word16(chunkCount) + word16(division);
}

QByteArray chunk(const QByteArray &events)
{
    return "MTrk" + word32(static_cast<quint32>(events.size())) + events;
}

QByteArray file(const QList<QByteArray> &chunks, quint32 division)
{
    QByteArray result = header(1, static_cast<quint32>(chunks.size()), division);
    for (const QByteArray &events : chunks)
        result += chunk(events + endOfTrack());
    return result;
}

QByteArray noteOn(quint32 delta, quint32 channel, quint32 key, quint32 velocity)
{
    return quantity(delta) + bytes({0x90U + channel, key, velocity});
}

QByteArray noteOff(quint32 delta, quint32 channel, quint32 key, quint32 velocity)
{
    return quantity(delta) + bytes({0x80U + channel, key, velocity});
}

QByteArray control(quint32 delta, quint32 channel, quint32 controller, quint32 value)
{
    return quantity(delta) + bytes({0xB0U + channel, controller, value});
}

QByteArray program(quint32 delta, quint32 channel, quint32 number)
{
    return quantity(delta) + bytes({0xC0U + channel, number});
}

QByteArray bend(quint32 delta, quint32 channel, quint32 value)
{
    return quantity(delta) + bytes({0xE0U + channel, value & 0x7FU, value >> 7U});
}

QByteArray bendRange(quint32 delta, quint32 channel, quint32 semitones)
{
    return control(delta, channel, 101, 0) + control(0, channel, 100, 0)
        + control(0, channel, 6, semitones);
}

QByteArray meta(quint32 delta, quint32 type, const QByteArray &data)
{
    return quantity(delta) + bytes({0xFF, type}) + quantity(static_cast<quint32>(data.size()))
        + data;
}

QByteArray instrumentName(quint32 delta, const QByteArray &name)
{
    return meta(delta, 0x04, name);
}

QByteArray channelPrefix(quint32 delta, quint32 channel)
{
    return meta(delta, 0x20, bytes({channel}));
}

QByteArray tempo(quint32 delta, quint32 microseconds)
{
    return meta(delta, 0x51, bytes({microseconds >> 16U, microseconds >> 8U, microseconds}));
}

QByteArray meter(quint32 delta, quint32 numerator, quint32 exponent)
{
    return meta(delta, 0x58, bytes({numerator, exponent, 24, 8}));
}

QByteArray key(quint32 delta, int sharps, quint32 mode)
{
    return meta(delta, 0x59, bytes({static_cast<quint32>(sharps), mode}));
}

QByteArray endOfTrack(quint32 delta)
{
    return meta(delta, 0x2F, {});
}

} // namespace MidiBuilder
