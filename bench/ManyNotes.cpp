#include "ManyNotes.h"

#include <array>
#include <random>

namespace {

void addNumber(QByteArray &bytes, quint32 number, int count)
{
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> shift);
}

void addEvent(QByteArray &events, int delta, int status, int key)
{
    for (const int byte : {delta, status, key, 64})
        events += static_cast<char>(byte);
}

} // namespace

QByteArray midiFile(const QByteArray &events)
{
    QByteArray bytes("MThd");
    addNumber(bytes, 6, 4);
    addNumber(bytes, 0, 2);
    addNumber(bytes, 1, 2);
    addNumber(bytes, 480, 2);
    bytes += "MTrk";
    const QByteArray end("\x00\xff\x2f\x00", 4);
    addNumber(bytes, static_cast<quint32>(events.size() + end.size()), 4);
    return bytes + events + end;
}

QByteArray manyNotes(int count)
{
    std::mt19937 random(1);
    std::array<int, 16> sounding{};
    QByteArray events;
    for (int i = 0; i < count + 16; ++i) {
        const int channel = i % 16;
        if (i >= 16)
            addEvent(events, 0, 0x80 + channel, sounding[channel]);
        if (i >= count)
            continue;
        sounding[channel] = 30 + static_cast<int>(random() % 70);
        addEvent(events, static_cast<int>(random() % 15), 0x90 + channel, sounding[channel]);
    }
    return events;
}
