#include "demo/VorbisFile.h"

#include <QString>

#include <algorithm>

#include <vorbis/vorbisenc.h>

namespace Demo {

namespace {

/// The encoder's chain of C structures, torn down in reverse order.
class Encoder {
public:
    Encoder(int channels, double quality, int serial);
    ~Encoder();
    Encoder(const Encoder &) = delete;
    Encoder &operator=(const Encoder &) = delete;

    void writeHeaders(QByteArray &file);
    void write(const Sound &sound, QByteArray &file);

private:
    void writeChunk(const Sound &sound, size_t begin, size_t count);
    void drain(QByteArray &file);
    void flushPages(QByteArray &file);
    void takePages(QByteArray &file);

    vorbis_info m_info{};
    vorbis_comment m_comment{};
    vorbis_dsp_state m_state{};
    vorbis_block m_block{};
    ogg_stream_state m_stream{};
};

Encoder::Encoder(int channels, double quality, int serial)
{
    vorbis_info_init(&m_info);
    if (vorbis_encode_init_vbr(&m_info, channels, SampleRate, static_cast<float>(quality)) != 0) {
        vorbis_info_clear(&m_info);
        throw QStringLiteral("Could not start the Vorbis encoder.");
    }
    vorbis_comment_init(&m_comment);
    vorbis_analysis_init(&m_state, &m_info);
    vorbis_block_init(&m_state, &m_block);
    ogg_stream_init(&m_stream, serial);
}

Encoder::~Encoder()
{
    ogg_stream_clear(&m_stream);
    vorbis_block_clear(&m_block);
    vorbis_dsp_clear(&m_state);
    vorbis_comment_clear(&m_comment);
    vorbis_info_clear(&m_info);
}

void append(QByteArray &file, const ogg_page &page)
{
    file.append(reinterpret_cast<const char *>(page.header), static_cast<int>(page.header_len));
    file.append(reinterpret_cast<const char *>(page.body), static_cast<int>(page.body_len));
}

void Encoder::flushPages(QByteArray &file)
{
    ogg_page page;
    while (ogg_stream_flush(&m_stream, &page) != 0)
        append(file, page);
}

void Encoder::takePages(QByteArray &file)
{
    ogg_page page;
    while (ogg_stream_pageout(&m_stream, &page) != 0)
        append(file, page);
}

void Encoder::writeHeaders(QByteArray &file)
{
    ogg_packet identification;
    ogg_packet comments;
    ogg_packet codebooks;
    vorbis_analysis_headerout(&m_state, &m_comment, &identification, &comments, &codebooks);
    for (ogg_packet *packet : {&identification, &comments, &codebooks})
        ogg_stream_packetin(&m_stream, packet);
    flushPages(file);
}

void Encoder::writeChunk(const Sound &sound, size_t begin, size_t count)
{
    float **buffers = vorbis_analysis_buffer(&m_state, static_cast<int>(count));
    for (int channel = 0; channel < m_info.channels; ++channel) {
        const Signal &source = channel == 0 ? sound.left : sound.right;
        for (size_t i = 0; i < count; ++i)
            buffers[channel][i] = static_cast<float>(source[begin + i]);
    }
    vorbis_analysis_wrote(&m_state, static_cast<int>(count));
}

void Encoder::drain(QByteArray &file)
{
    while (vorbis_analysis_blockout(&m_state, &m_block) == 1) {
        vorbis_analysis(&m_block, nullptr);
        vorbis_bitrate_addblock(&m_block);
        ogg_packet packet;
        while (vorbis_bitrate_flushpacket(&m_state, &packet) != 0)
            ogg_stream_packetin(&m_stream, &packet);
        takePages(file);
    }
}

void Encoder::write(const Sound &sound, QByteArray &file)
{
    constexpr size_t Chunk = 4096;
    for (size_t begin = 0; begin < sound.left.size(); begin += Chunk) {
        writeChunk(sound, begin, std::min(Chunk, sound.left.size() - begin));
        drain(file);
    }
    vorbis_analysis_wrote(&m_state, 0);
    drain(file);
    flushPages(file);
}

} // namespace

QByteArray vorbisFile(const Sound &sound, double quality, int serial)
{
    QByteArray file;
    Encoder encoder(sound.right.empty() ? 1 : 2, quality, serial);
    encoder.writeHeaders(file);
    encoder.write(sound, file);
    return file;
}

} // namespace Demo
