#include "Quillmoor/PakCursor.h"

#include "Quillmoor/PakFormat.h"

#include <QString>
#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

// What a QByteArray can hold.
constexpr qint64 LargestArray = 0x7FFFFFFF - 64;
// Room made before the first byte is read, so that a small file is one allocation.
constexpr qint64 LargestReserve = 65536;

// The three texts for a chain that leads to something other than a leaf differ on purpose.
constexpr char ReadIntoNoLeaf[] = "Invalid leaf block continuation";
constexpr char SkipIntoNoLeaf[] = "Invalid Leaf block continuation block";
constexpr char QuantityIntoNoLeaf[] = "Invlaid Leaf block continuation block";

QString prematureEnd()
{
    return QStringLiteral("Premature end of leaf block");
}

qint64 blockCount(qint64 fileSize, qint64 headerSize, qint64 blockSize)
{
    return fileSize <= headerSize ? 0 : (fileSize - headerSize - 1) / blockSize + 1;
}

} // namespace

PakCursor::PakCursor(QFile &file, qint32 headerSize, qint32 blockSize)
    : m_file(file)
    , m_fileSize(file.size())
    , m_headerSize(headerSize)
    , m_blockSize(blockSize)
    , m_visitsLeft(blockCount(m_fileSize, headerSize, blockSize))
{
}

bool PakCursor::seekToBlock(qint32 index)
{
    const qint64 start = m_headerSize + index * m_blockSize;
    if (index < 0 || start >= m_fileSize || m_visitsLeft == 0)
        return false;
    --m_visitsLeft;
    m_pos = start;
    m_blockEnd = start + m_blockSize;
    return true;
}

PakCursor::BlockType PakCursor::readType()
{
    if (m_fileSize - m_pos < PakFormat::TagSize)
        return BlockType::Unknown;
    std::array<char, PakFormat::TagSize> tag{};
    fetch(tag.data(), PakFormat::TagSize);
    if (std::memcmp(tag.data(), PakFormat::IndexTag, PakFormat::TagSize) == 0)
        return BlockType::Index;
    if (std::memcmp(tag.data(), PakFormat::LeafTag, PakFormat::TagSize) == 0)
        return BlockType::Leaf;
    return BlockType::Unknown;
}

void PakCursor::skipByte()
{
    requireInFile(1);
    ++m_pos;
}

qint32 PakCursor::readNumber()
{
    std::array<char, PakFormat::NumberSize> bytes{};
    fetch(bytes.data(), PakFormat::NumberSize);
    return qFromBigEndian<qint32>(bytes.data());
}

void PakCursor::readKey(char *key)
{
    walk(PakFormat::KeySize, ReadIntoNoLeaf, [this, &key](qint64 count) {
        fetch(key, count);
        key += count;
    });
}

QByteArray PakCursor::read(quint64 count)
{
    const auto inFile = static_cast<quint64>(std::min(m_fileSize - m_pos, LargestReserve));
    QByteArray bytes;
    bytes.reserve(static_cast<int>(std::min(count, inFile)));
    walk(count, ReadIntoNoLeaf, [this, &bytes](qint64 piece) { append(bytes, piece); });
    return bytes;
}

void PakCursor::skip(quint64 count)
{
    walk(count, SkipIntoNoLeaf, [this](qint64 piece) {
        requireInFile(piece);
        m_pos += piece;
    });
}

quint64 PakCursor::readQuantity()
{
    quint64 value = 0;
    for (;;) {
        if (leftInBlock() == 0)
            followChain(QuantityIntoNoLeaf);
        char c = 0;
        fetch(&c, 1);
        const auto byte = static_cast<uchar>(c);
        if (byte < 0x80)
            return value | byte;
        value = (value | (byte & 0x7FU)) << 7;
    }
}

qint64 PakCursor::leftInBlock() const
{
    // An index block may fill the place of the link with its last child: nothing is left then.
    return std::max<qint64>(0, m_blockEnd - PakFormat::ChainLinkSize - m_pos);
}

void PakCursor::followChain(const char *notALeaf)
{
    m_pos = m_blockEnd - PakFormat::ChainLinkSize;
    const qint32 next = readNumber();
    if (next == PakFormat::NoNextBlock)
        throw prematureEnd();
    if (!seekToBlock(next))
        throw QStringLiteral("Invalid leaf block continuation index '%1'").arg(next);
    if (readType() != BlockType::Leaf)
        throw QString(QLatin1String(notALeaf));
}

template <typename Piece> void PakCursor::walk(quint64 count, const char *notALeaf, Piece piece)
{
    while (count > static_cast<quint64>(leftInBlock())) {
        const qint64 left = leftInBlock();
        piece(left);
        count -= static_cast<quint64>(left);
        followChain(notALeaf);
    }
    piece(static_cast<qint64>(count));
}

void PakCursor::append(QByteArray &bytes, qint64 count)
{
    requireInFile(count);
    const int before = bytes.size();
    if (count > LargestArray - before)
        throw prematureEnd();
    bytes.resize(before + static_cast<int>(count));
    fetch(bytes.data() + before, count);
}

void PakCursor::requireInFile(qint64 count) const
{
    if (count > m_fileSize - m_pos)
        throw prematureEnd();
}

void PakCursor::fetch(char *out, qint64 count)
{
    requireInFile(count);
    while (count > 0) {
        if (m_pos < m_windowStart || m_pos >= m_windowEnd)
            fillWindow();
        const qint64 piece = std::min(count, m_windowEnd - m_pos);
        std::memcpy(out, m_window.data() + (m_pos - m_windowStart), static_cast<size_t>(piece));
        out += piece;
        m_pos += piece;
        count -= piece;
    }
}

void PakCursor::fillWindow()
{
    const qint64 end = m_pos < m_blockEnd ? std::min(m_blockEnd, m_fileSize) : m_fileSize;
    const qint64 wanted = std::min(static_cast<qint64>(m_window.size()), end - m_pos);
    const qint64 got = m_file.seek(m_pos) ? m_file.read(m_window.data(), wanted) : -1;
    if (got <= 0) // the file was cut while it is read
        throw prematureEnd();
    m_windowStart = m_pos;
    m_windowEnd = m_pos + got;
}
