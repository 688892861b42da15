#include "Sound/WaveHeader.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::uint32_t Unknown32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t LongSizesBytes = 28;
constexpr std::uint32_t FormatBytes = 16;
constexpr std::uint64_t RiffBytesBeforeData = WaveHeader::Size - 8;

class Header {
public:
    void tag(const char *name) { std::copy_n(name, 4, advance(4)); }

    template <typename Integer> void number(Integer value)
    {
        unsigned char *const bytes = advance(sizeof value);
        for (std::size_t i = 0; i < sizeof value; ++i)
            bytes[i] = static_cast<unsigned char>(value >> (8 * i));
    }

    const std::array<unsigned char, WaveHeader::Size> &bytes() const { return m_bytes; }

private:
    unsigned char *advance(std::size_t count)
    {
        unsigned char *const start = m_bytes.data() + m_position;
        m_position += count;
        return start;
    }

    std::array<unsigned char, WaveHeader::Size> m_bytes{};
    std::size_t m_position = 0;
};

void addFormat(Header &header)
{
    constexpr std::uint16_t Pcm = 1;
    constexpr std::uint16_t Channels = 2;
    constexpr std::uint16_t Bits = 16;
    header.tag("fmt ");
    header.number(FormatBytes);
    header.number(Pcm);
    header.number(Channels);
    header.number(WaveHeader::SampleRate);
    header.number(WaveHeader::SampleRate * WaveHeader::BytesPerFrame);
    header.number(static_cast<std::uint16_t>(WaveHeader::BytesPerFrame));
    header.number(Bits);
}

} // namespace

std::array<unsigned char, WaveHeader::Size> WaveHeader::forFrames(std::uint64_t frames)
{
    const std::uint64_t dataBytes = frames * BytesPerFrame;
    const std::uint64_t riffBytes = RiffBytesBeforeData + dataBytes;
    const bool isLong = riffBytes >= Unknown32;
    Header header;
    header.tag(isLong ? "RF64" : "RIFF");
    header.number(isLong ? Unknown32 : static_cast<std::uint32_t>(riffBytes));
    header.tag("WAVE");
    header.tag(isLong ? "ds64" : "JUNK");
    header.number(LongSizesBytes);
    header.number(isLong ? riffBytes : 0);
    header.number(isLong ? dataBytes : 0);
    header.number(isLong ? frames : 0);
    header.number(std::uint32_t{0}); // no table of further chunks
    addFormat(header);
    header.tag("data");
    header.number(isLong ? Unknown32 : static_cast<std::uint32_t>(dataBytes));
    return header.bytes();
}
