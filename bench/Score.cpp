#include "Score.h"

namespace {

constexpr int TicksPerQuarter = Score::TicksPerSecond / 2;
constexpr quint64 TrackTicks = Ticks::PerQuarterNote / TicksPerQuarter; // in one of MIDI

void appendBigEndian(QByteArray &bytes, quint32 value, int count)
{
    for (int i = count - 1; i >= 0; --i)
        bytes.append(static_cast<char>(value >> (8 * i) & 0xFF));
}

void appendDelta(QByteArray &bytes, quint32 ticks)
{
    if (ticks >= 128)
        bytes.append(static_cast<char>(0x80 | ticks >> 7));
    bytes.append(static_cast<char>(ticks & 0x7F));
}

void appendNote(QByteArray &bytes, int status, quint32 pitch)
{
    bytes.append(static_cast<char>(status));
    bytes.append(static_cast<char>(pitch));
    bytes.append(static_cast<char>(80));
}

QByteArray midiChunk(const char *type, const QByteArray &contents)
{
    QByteArray chunk(type);
    appendBigEndian(chunk, static_cast<quint32>(contents.size()), 4);
    return chunk + contents;
}

QByteArray midiHeader(std::size_t tracks)
{
    QByteArray header;
    appendBigEndian(header, 1, 2);
    appendBigEndian(header, static_cast<quint32>(tracks), 2);
    appendBigEndian(header, TicksPerQuarter, 2);
    return midiChunk("MThd", header);
}

/// Each note ends a whole number of steps after its start, just before the start of another one.
QByteArray midiTrackOf(const Score &score, std::size_t part)
{
    const int number = static_cast<int>(part);
    const int channel = number < 9 ? number : number + 1; // channel 10 is the drums'
    const int program = score.programs[part % score.programs.size()];
    const auto steps = static_cast<std::size_t>(score.length / score.step);
    const std::vector<quint32> &pitches = score.parts[part];
    QByteArray events;
    appendDelta(events, 0);
    events.append(static_cast<char>(0xC0 | channel)).append(static_cast<char>(program));
    for (std::size_t i = 0; i < pitches.size() + steps; ++i) {
        quint32 delta = i == 0 ? 0 : static_cast<quint32>(score.step);
        if (i >= steps) {
            appendDelta(events, delta);
            appendNote(events, 0x80 | channel, pitches[i - steps]);
            delta = 0;
        }
        if (i < pitches.size()) {
            appendDelta(events, delta);
            appendNote(events, 0x90 | channel, pitches[i]);
        }
    }
    events.append(QByteArray::fromHex("00ff2f00"));
    return midiChunk("MTrk", events);
}

} // namespace

Track trackOf(const Score &score, std::size_t part)
{
    Track track;
    quint64 time = 0;
    for (const quint32 pitch : score.parts[part]) {
        track.addEvent(TrackEvent::makeNote(pitch, time * TrackTicks,
                                            static_cast<quint64>(score.length) * TrackTicks));
        time += static_cast<quint64>(score.step);
    }
    track.sortEvents();
    return track;
}

QByteArray midiFileOf(const Score &score)
{
    QByteArray bytes = midiHeader(score.parts.size());
    for (std::size_t part = 0; part < score.parts.size(); ++part)
        bytes += midiTrackOf(score, part);
    return bytes;
}

std::vector<PlayedPart> playedParts(const Score &score, const std::vector<Instrument> &instruments)
{
    std::vector<PlayedPart> parts;
    for (std::size_t part = 0; part < score.parts.size() && !instruments.empty(); ++part)
        parts.push_back({trackOf(score, part), instruments[part % instruments.size()]});
    return parts;
}
