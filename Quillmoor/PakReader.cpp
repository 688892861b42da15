#include "Quillmoor/PakReader.h"

#include "Quillmoor/PakCursor.h"
#include "Quillmoor/PakFormat.h"
#include "model/MessageLog.h"

#include <QFileInfo>
#include <QtEndian>

#include <array>
#include <cstring>

namespace {

using BlockType = PakCursor::BlockType;
using Key = std::array<char, PakFormat::KeySize>;

qint32 numberAt(const QByteArray &header, int offset)
{
    return qFromBigEndian<qint32>(header.constData() + offset);
}

/// A string padded with NUL bytes.
QByteArray identifierAt(const QByteArray &header, int offset)
{
    const char *const start = header.constData() + offset;
    return {start, static_cast<int>(qstrnlen(start, PakFormat::IdentifierWidth))};
}

PakReader::ContentType contentTypeOf(const QByteArray &identifier)
{
    if (identifier == PakFormat::Assets1Identifier)
        return PakReader::Assets1;
    if (identifier == PakFormat::Assets2Identifier)
        return PakReader::Assets2;
    throw QStringLiteral("Invalid Database Content Identifier.");
}

/// The child of the index block at the cursor (behind its tag) that may hold `target`.
qint32 childFor(PakCursor &cursor, const QByteArray &target)
{
    cursor.skipByte(); // the level
    const qint32 keyCount = cursor.readNumber();
    qint32 child = cursor.readNumber();
    Key key{};
    for (qint32 i = 0; i < keyCount; ++i) {
        cursor.readKey(key.data());
        const qint32 following = cursor.readNumber();
        if (std::memcmp(target.constData(), key.data(), key.size()) < 0)
            break;
        child = following;
    }
    return child;
}

/// Moves the cursor from behind a leaf's tag to behind the entry's key.
bool findInLeaf(PakCursor &cursor, const QByteArray &target)
{
    const qint32 entryCount = cursor.readNumber();
    Key key{};
    for (qint32 i = 0; i < entryCount; ++i) {
        cursor.readKey(key.data());
        if (std::memcmp(target.constData(), key.data(), key.size()) == 0)
            return true;
        cursor.skip(cursor.readQuantity());
    }
    return false;
}

/// Moves the cursor from the root to behind the key, before the length of the value.
bool find(PakCursor &cursor, qint32 rootBlock, const QByteArray &target)
{
    BlockType type = cursor.seekToBlock(rootBlock) ? cursor.readType() : BlockType::Unknown;
    while (type == BlockType::Index) {
        if (!cursor.seekToBlock(childFor(cursor, target)))
            throw QStringLiteral("Invalid block referred to by index");
        type = cursor.readType();
    }
    if (type == BlockType::Unknown)
        throw QStringLiteral("Unknown block type found.");
    return findInLeaf(cursor, target);
}

QStringList readFileTable(PakCursor &cursor, PakReader::ContentType contentType)
{
    cursor.readQuantity(); // the value's length: the table says itself where it ends
    QStringList paths;
    for (quint64 left = cursor.readQuantity(); left > 0; --left) {
        const QByteArray path = cursor.read(cursor.readQuantity());
        // Up to the first NUL byte.
        paths.append(QString::fromUtf8(path.constData()));
        if (contentType == PakReader::Assets2)
            cursor.skip(cursor.readQuantity());
    }
    return paths;
}

} // namespace

PakReader::PakReader(const QString &path)
    : QFile(path)
{
}

void PakReader::open()
{
    if (isOpen())
        return;
    openFile();
    try {
        m_header = parseHeader(read(PakFormat::FixedHeaderSize));
    } catch (const QString &) {
        close();
        throw;
    }
}

bool PakReader::open(OpenMode mode)
{
    try {
        if ((mode & ReadWrite) != ReadOnly)
            throw QStringLiteral("Could not open file.");
        open();
        return true;
    } catch (const QString &message) {
        setErrorString(message);
        return false;
    }
}

void PakReader::openFile()
{
    // A pipe would block, and what is no file cannot be a package. Unbuffered, since the cursor
    // reads block by block.
    const QFileInfo info(fileName());
    if (!info.isFile() || !QFile::open(ReadOnly | Unbuffered))
        throw QStringLiteral("Could not open file.");
}

PakReader::Header PakReader::parseHeader(const QByteArray &bytes)
{
    if (bytes.size() < PakFormat::FixedHeaderSize || !bytes.startsWith(PakFormat::Magic))
        throw QStringLiteral("Invalid Block File Header.");
    Header header;
    header.headerSize = numberAt(bytes, PakFormat::HeaderSizeOffset);
    header.blockSize = numberAt(bytes, PakFormat::BlockSizeOffset);
    if (identifierAt(bytes, PakFormat::DatabaseIdentifierOffset) != PakFormat::DatabaseIdentifier)
        throw QStringLiteral("Invalid Database File Identifier.");
    header.contentType = contentTypeOf(identifierAt(bytes, PakFormat::ContentIdentifierOffset));
    header.keySize = numberAt(bytes, PakFormat::KeySizeOffset);
    if (header.keySize != PakFormat::KeySize)
        throw QStringLiteral("Invalid Database Key Size.");
    const int root = bytes.at(PakFormat::RootSelectorOffset) == 0 ? PakFormat::FirstRootOffset
                                                                  : PakFormat::SecondRootOffset;
    header.rootBlock = numberAt(bytes, root);
    header.rootIsLeaf = bytes.at(root + PakFormat::NumberSize) != 0;
    if (header.headerSize < 0 || header.blockSize < PakFormat::SmallestBlock)
        throw QStringLiteral("Invalid Block File Header.");
    return header;
}

bool PakReader::hasFile(const QString &path)
{
    open();
    PakCursor cursor(*this, m_header.headerSize, m_header.blockSize);
    return find(cursor, m_header.rootBlock, PakFormat::key(path));
}

QByteArray PakReader::getFile(const QString &path)
{
    open();
    PakCursor cursor(*this, m_header.headerSize, m_header.blockSize);
    if (!find(cursor, m_header.rootBlock, PakFormat::key(path)))
        throw QStringLiteral("File not found");
    return cursor.read(cursor.readQuantity());
}

bool PakReader::tryGetFile(const QString &path, QByteArray &out)
{
    try {
        out = getFile(path);
        return true;
    } catch (const QString &message) {
        MessageLog::warning("Quillmoor/PakReader",
                            "bool PakReader::tryGetFile(const QString&, QByteArray&)",
                            QStringLiteral("tryGetFile failed on %1: %2").arg(path, message));
        return false;
    }
}

QStringList PakReader::fileList()
{
    open();
    PakCursor cursor(*this, m_header.headerSize, m_header.blockSize);
    if (!find(cursor, m_header.rootBlock, PakFormat::fileTableKey()))
        throw QStringLiteral("File table not found");
    return readFileTable(cursor, m_header.contentType);
}
