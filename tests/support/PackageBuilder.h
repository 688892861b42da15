#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QVector>

/// Builds asset packages byte by byte, sound ones and broken ones. The bytes are written out
/// here, independent of the program's own reader and writer.
class PackageBuilder {
public:
    // What the header says. The second root record is the one for a root selector other than 0.
    QByteArray magic = QByteArrayLiteral("QMBF02");
    qint32 headerSize = 80;
    qint32 blockSize = 128;
    QByteArray databaseIdentifier = QByteArrayLiteral("BTreeDB4");
    QByteArray contentIdentifier = QByteArrayLiteral("Assets1");
    qint32 keySize = 32;
    char rootSelector = 0;
    qint32 rootBlock = 0;
    char rootIsLeaf = 1;
    qint32 secondRootBlock = 0;
    char secondRootIsLeaf = 1;

    using KeyAndChild = QPair<QByteArray, qint32>;

    // Each adds one block and answers its index. Too short contents are padded with NUL bytes.
    qint32 addBlock(const QByteArray &bytes);
    /// `data` goes behind the tag, `next` into the last four bytes.
    qint32 addLeafBlock(const QByteArray &data, qint32 next = -1);
    qint32 addIndexBlock(qint32 firstChild, const QVector<KeyAndChild> &children);

    /// Cuts `stream` into a chain of leaf blocks at the end of the file; answers the first.
    qint32 addLeafChain(const QByteArray &stream);

    QByteArray header() const;
    QByteArray bytes() const;
    void save(const QString &fileName) const;

    /// The bytes of a leaf block that are the stream's.
    int dataPerLeafBlock() const { return blockSize - 6; }

    static QByteArray number(qint32 value);
    static QByteArray quantity(quint64 value);
    /// The SHA-256 digest of the path.
    static QByteArray key(const QString &path);
    /// A leaf's entry: key, length, value.
    static QByteArray entry(const QString &path, const QByteArray &value);
    /// A file table with no further field per record, as "Assets1" has it.
    static QByteArray fileTable(const QVector<QByteArray> &paths);
    /// A whole leaf's stream.
    static QByteArray leafStream(const QVector<QByteArray> &entries);

private:
    QByteArray m_blocks;
};

void writeFile(const QString &fileName, const QByteArray &bytes);
