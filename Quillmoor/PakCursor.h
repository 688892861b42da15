#pragma once

#include <QByteArray>
#include <QFile>

#include <array>

/// A reading position in the blocks of an asset package, for one walk from the tree's root.
///
/// It knows the end of the file and of the current block, follows the chain of a leaf's blocks,
/// and reads in pieces, so that neither a length nor a count in the file is trusted. Every
/// function throws a QString: a file that ends before the bytes asked for counts as "Premature
/// end of leaf block".
///
/// An undamaged tree is walked without meeting a block twice. After as many blocks as the file
/// has, the walk therefore goes in circles, and seekToBlock() fails.
class PakCursor {
public:
    enum class BlockType { Index, Leaf, Unknown };

    /// `file` is open and outlives the cursor; `headerSize` is 0 or more, `blockSize`
    /// PakFormat::SmallestBlock or more.
    PakCursor(QFile &file, qint32 headerSize, qint32 blockSize);

    /// Goes to a block's first byte; false for a block that is not in the file.
    bool seekToBlock(qint32 index);
    /// Reads the tag. A tag cut off by the end of the file is unknown.
    BlockType readType();

    // Straight from the current position, whatever the block's borders.
    void skipByte();
    qint32 readNumber();

    // From a leaf's stream: at the end of a block's data they go on in the next block.
    void readKey(char *key);
    QByteArray read(quint64 count);
    void skip(quint64 count);
    /// An unsigned number in base 128, most significant byte first.
    quint64 readQuantity();

private:
    qint64 leftInBlock() const;
    void followChain(const char *notALeaf);
    template <typename Piece> void walk(quint64 count, const char *notALeaf, Piece piece);
    void append(QByteArray &bytes, qint64 count);
    void requireInFile(qint64 count) const;
    void fetch(char *out, qint64 count);
    void fillWindow();

    QFile &m_file;
    qint64 m_fileSize;
    qint64 m_headerSize;
    qint64 m_blockSize;
    qint64 m_visitsLeft;
    qint64 m_pos = 0;
    qint64 m_blockEnd = 0;

    // The bytes of the file from m_windowStart to m_windowEnd, usually one block.
    std::array<char, 4096> m_window{};
    qint64 m_windowStart = 0;
    qint64 m_windowEnd = 0;
};
