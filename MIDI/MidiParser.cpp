#include "MIDI/MidiParser.h"

#include "MIDI/MidiChunk.h"
#include "MIDI/MidiNames.h"
#include "MIDI/Realignment.h"

#include <QDataStream>
#include <QIODevice>

#include <utility>

namespace {

constexpr quint32 HeaderMagic = 0x4D546864; // "MThd"
constexpr qint64 BlockBytes = 65536;
constexpr int LargestFile = 256 * 1024 * 1024;

QByteArray readAll(QIODevice &device)
{
    QByteArray bytes;
    for (;;) {
        const int size = bytes.size();
        bytes.resize(size + static_cast<int>(BlockBytes));
        const qint64 count = device.read(bytes.data() + size, BlockBytes);
        if (count < 0)
            throw QStringLiteral("Could not open file.");
        bytes.resize(size + static_cast<int>(count));
        if (bytes.size() > LargestFile)
            throw QStringLiteral("The file is too large.");
        if (count == 0)
            return bytes;
    }
}

struct Header {
    int chunkCount;
    quint32 division;
};

Header readHeader(MidiReader &reader)
{
    if (reader.word32() != HeaderMagic)
        throw QStringLiteral("Invalid MIDI file.");
    reader.skip(4); // the length, always 6
    const quint16 format = reader.word16();
    const quint16 chunkCount = reader.word16();
    const quint16 division = reader.word16();
    if (format > 1)
        throw QStringLiteral("Unsupported MIDI type %1.").arg(format);
    if ((division & 0x8000U) != 0)
        throw QStringLiteral("SMTPE time divisions are currently unsupported");
    if (division == 0)
        throw QStringLiteral("Invalid MIDI file.");
    return {chunkCount, division};
}

/// One file being made into tracks.
class Import {
public:
    Import(MidiReader &reader, const Header &header, const MidiOptions &options)
        : m_reader(reader)
        , m_chunkCount(header.chunkCount)
        , m_options(options)
        , m_clock(header.division)
        , m_conductor(m_clock, m_budget,
                      options.mergeChannels ? MidiConductor::Tempos::WithTheRest
                                            : MidiConductor::Tempos::ToMap)
        , m_channels(MidiChunk::ChannelCount, MidiChannel(m_clock, m_budget, m_conductor))
    {
    }
    Q_DISABLE_COPY(Import)

    QList<Track> merged();
    QList<Track> perChunk();

private:
    void readChunk();
    void startTracks();
    Track titledTrack(int channel, int number);
    Track finished(Track track) const;

    MidiReader &m_reader;
    const int m_chunkCount;
    const MidiOptions m_options;
    MidiBudget m_budget;
    const MidiClock m_clock;
    MidiConductor m_conductor;
    MidiChunk::Channels m_channels;
};

/// All chunks write into the same tracks, one for each channel.
QList<Track> Import::merged()
{
    for (int i = 0; i < m_chunkCount; ++i)
        readChunk();
    QList<Track> tracks;
    for (int c = 0; c < MidiChunk::ChannelCount; ++c) {
        if (m_channels[static_cast<size_t>(c)].hasNotes())
            tracks << finished(titledTrack(c, c + 1));
    }
    return tracks;
}

/// Each chunk has tracks of its own. Of what stands in a chunk only the tempos hold for the tracks
/// of others, of which any may be the first, so that they are added when all chunks are read.
QList<Track> Import::perChunk()
{
    QList<Track> tracks;
    for (int i = 0; i < m_chunkCount; ++i) {
        startTracks();
        readChunk();
        for (int c = 0; c < MidiChunk::ChannelCount; ++c) {
            if (m_channels[static_cast<size_t>(c)].hasNotes())
                tracks << titledTrack(c, tracks.size() + 1);
        }
    }
    for (Track &track : tracks) {
        m_conductor.addTempoMap(track);
        track = finished(std::move(track));
    }
    return tracks;
}

void Import::readChunk()
{
    const auto bends = m_options.pitchBend ? MidiChunk::Bends::Heard : MidiChunk::Bends::Ignored;
    MidiChunk(m_reader, m_channels, m_conductor, bends).read();
}

void Import::startTracks()
{
    m_conductor.startChunk();
    for (MidiChannel &channel : m_channels)
        channel.startTrack();
}

Track Import::titledTrack(int channel, int number)
{
    MidiChannel &source = m_channels[static_cast<size_t>(channel)];
    source.addTitle(MidiNames::title(number, channel, source.program()));
    return source.takeTrack();
}

Track Import::finished(Track track) const
{
    if (!track.hasHeader(QStringLiteral("Q"))) {
        track.setHeader(QStringLiteral("Q"), QStringLiteral("1/4=120"));
        track.setTicksPerMinute(Ticks::DefaultPerMinute);
    }
    track.sortEvents();
    return m_options.autoRealign ? quickRealignTrack(track) : track;
}

} // namespace

MidiParser::MidiParser(const MidiOptions &options)
    : m_options(options)
{
}

QList<Track> MidiParser::parse(QDataStream &stream)
{
    if (stream.device() == nullptr)
        throw QStringLiteral("Could not open file.");
    MidiReader reader(readAll(*stream.device()));
    Import import(reader, readHeader(reader), m_options);
    return m_options.mergeChannels ? import.merged() : import.perChunk();
}
