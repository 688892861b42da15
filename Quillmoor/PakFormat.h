#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QString>

/// The layout of an asset package, as reader and writer share it.
///
/// A header, then blocks of one size. The blocks form a B-tree over the SHA-256 digests of the
/// asset paths: index blocks lead to leaves, and a leaf is a stream of entries that runs through
/// a chain of blocks. All numbers are big-endian.
namespace PakFormat {

constexpr int TagSize = 2;
constexpr char IndexTag[] = "II";
constexpr char LeafTag[] = "LL";

constexpr int NumberSize = 4;
constexpr int KeySize = 32;
/// Tag, level, key count, first child.
constexpr int IndexHeaderSize = TagSize + 1 + 2 * NumberSize;
/// Every leaf block ends with the index of the next block of its chain.
constexpr int ChainLinkSize = NumberSize;
constexpr qint32 NoNextBlock = -1;
/// A leaf block has room for its tag, the entry count and the link.
constexpr int SmallestBlock = TagSize + NumberSize + ChainLinkSize;

constexpr char Magic[] = "QMBF02";
constexpr char DatabaseIdentifier[] = "BTreeDB4";
constexpr char Assets1Identifier[] = "Assets1";
constexpr char Assets2Identifier[] = "Assets2";

// Offsets in the file's header.
constexpr int HeaderSizeOffset = 6;
constexpr int BlockSizeOffset = 10;
constexpr int DatabaseIdentifierOffset = 32;
constexpr int ContentIdentifierOffset = 44;
constexpr int IdentifierWidth = 12;
constexpr int KeySizeOffset = 56;
constexpr int RootSelectorOffset = 60;
constexpr int FirstRootOffset = 62;
constexpr int SecondRootOffset = 70;
/// What a file must have for all fields to be there.
constexpr int FixedHeaderSize = SecondRootOffset + NumberSize + 1;

/// Where the list of all paths is stored.
constexpr char FileTableName[] = "_index";

inline QByteArray key(const QString &path)
{
    return QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Sha256);
}

inline QByteArray fileTableKey()
{
    return key(QLatin1String(FileTableName));
}

} // namespace PakFormat
