#include "Quillmoor/PakWriter.h"

#include "Quillmoor/PakFormat.h"
#include "model/AtomicFile.h"

#include <QBuffer>
#include <QSaveFile>
#include <QVector>
#include <QtEndian>

#include <algorithm>
#include <iterator>

namespace {

constexpr int SmallestBlockSize = 64;
constexpr int LargestBlockSize = 1024 * 1024;
constexpr int HeaderSize = 512;

using Values = QMap<QByteArray, QByteArray>;

/// A subtree as its parent sees it.
struct Child {
    QByteArray firstKey;
    qint32 block = 0;
};

QByteArray number(qint32 value)
{
    QByteArray bytes(PakFormat::NumberSize, Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray quantity(quint64 value)
{
    QByteArray bytes(1, static_cast<char>(value & 0x7FU));
    while ((value >>= 7) != 0)
        bytes.prepend(static_cast<char>(0x80U | (value & 0x7FU)));
    return bytes;
}

/// `value` with its length before it.
QByteArray sized(const QByteArray &value)
{
    return quantity(static_cast<quint64>(value.size())) + value;
}

/// Cut or padded with NUL bytes to `size`.
QByteArray padded(const QByteArray &bytes, int size)
{
    return bytes.leftJustified(size, '\0', true);
}

void put(QIODevice &device, const QByteArray &bytes)
{
    if (!AtomicFile::writeWhole(device, bytes))
        throw QStringLiteral("Could not write the package: %1").arg(device.errorString());
}

QByteArray header(int blockSize, const Child &root, bool rootIsLeaf)
{
    QByteArray bytes(HeaderSize, '\0');
    const auto set = [&bytes](int offset, const QByteArray &field) {
        bytes.replace(offset, field.size(), field);
    };
    const QByteArray rootRecord = number(root.block) + QByteArray(1, rootIsLeaf ? '\1' : '\0');
    set(0, PakFormat::Magic);
    set(PakFormat::HeaderSizeOffset, number(HeaderSize));
    set(PakFormat::BlockSizeOffset, number(blockSize));
    set(PakFormat::DatabaseIdentifierOffset, PakFormat::DatabaseIdentifier);
    set(PakFormat::ContentIdentifierOffset, PakFormat::Assets2Identifier);
    set(PakFormat::KeySizeOffset, number(PakFormat::KeySize));
    set(PakFormat::FirstRootOffset, rootRecord);
    set(PakFormat::SecondRootOffset, rootRecord);
    return bytes;
}

/// Writes the blocks one after the other and knows the index of the next.
class BlockWriter {
public:
    BlockWriter(QIODevice &device, int blockSize)
        : m_device(device)
        , m_blockSize(blockSize)
    {
    }

    QVector<Child> writeLeaves(const Values &values);
    QVector<Child> writeIndexLevel(const QVector<Child> &children, int level);

private:
    int bytesPerLeafBlock() const
    {
        return m_blockSize - PakFormat::TagSize - PakFormat::ChainLinkSize;
    }

    int childrenPerIndex() const
    {
        // The last four bytes stay free, as in a leaf.
        return (m_blockSize - PakFormat::IndexHeaderSize - PakFormat::ChainLinkSize)
            / (PakFormat::KeySize + PakFormat::NumberSize)
            + 1;
    }

    Child writeLeaf(Values::const_iterator begin, Values::const_iterator end);
    Child writeIndex(const QVector<Child> &children, int level);
    void writeBlock(const QByteArray &bytes);

    QIODevice &m_device;
    int m_blockSize;
    qint32 m_nextBlock = 0;
};

QVector<Child> BlockWriter::writeLeaves(const Values &values)
{
    QVector<Child> leaves;
    auto begin = values.cbegin();
    while (begin != values.cend()) {
        // A leaf ends with the entry that fills its first block, so that finding an entry passes
        // over small ones only.
        qint64 size = PakFormat::NumberSize;
        auto end = begin;
        while (end != values.cend() && size < bytesPerLeafBlock()) {
            size += PakFormat::KeySize + 1 + end.value().size();
            ++end;
        }
        leaves.append(writeLeaf(begin, end));
        begin = end;
    }
    return leaves;
}

Child BlockWriter::writeLeaf(Values::const_iterator begin, Values::const_iterator end)
{
    Child leaf{begin.key(), m_nextBlock};
    QByteArray stream = number(static_cast<qint32>(std::distance(begin, end)));
    for (auto entry = begin; entry != end; ++entry)
        stream += entry.key() + sized(entry.value());
    for (int pos = 0; pos < stream.size(); pos += bytesPerLeafBlock()) {
        const bool isLast = stream.size() - pos <= bytesPerLeafBlock();
        writeBlock(PakFormat::LeafTag
                   + padded(stream.mid(pos, bytesPerLeafBlock()), bytesPerLeafBlock())
                   + number(isLast ? PakFormat::NoNextBlock : m_nextBlock + 1));
    }
    return leaf;
}

QVector<Child> BlockWriter::writeIndexLevel(const QVector<Child> &children, int level)
{
    // Shared out evenly rather than leaving the last block nearly empty.
    const int blocks = (children.size() - 1) / childrenPerIndex() + 1;
    QVector<Child> parents;
    for (int i = 0; i < blocks; ++i) {
        const auto begin = static_cast<int>(qint64{children.size()} * i / blocks);
        const auto end = static_cast<int>(qint64{children.size()} * (i + 1) / blocks);
        parents.append(writeIndex(children.mid(begin, end - begin), level));
    }
    return parents;
}

Child BlockWriter::writeIndex(const QVector<Child> &children, int level)
{
    Child parent{children.first().firstKey, m_nextBlock};
    QByteArray bytes = PakFormat::IndexTag + QByteArray(1, static_cast<char>(level))
        + number(children.size() - 1) + number(children.first().block);
    for (int i = 1; i < children.size(); ++i)
        bytes += children.at(i).firstKey + number(children.at(i).block);
    writeBlock(padded(bytes, m_blockSize));
    return parent;
}

void BlockWriter::writeBlock(const QByteArray &bytes)
{
    put(m_device, bytes);
    ++m_nextBlock;
}

} // namespace

PakWriter::PakWriter(int blockSize)
    : m_blockSize(std::clamp(blockSize, SmallestBlockSize, LargestBlockSize))
{
}

void PakWriter::add(const QString &path, const QByteArray &contents)
{
    m_files.insert(path, contents);
}

QByteArray PakWriter::toBytes() const
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    write(buffer);
    return bytes;
}

void PakWriter::save(const QString &fileName) const
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        throw QStringLiteral("Could not write %1: %2").arg(fileName, file.errorString());
    write(file);
    if (!file.commit())
        throw QStringLiteral("Could not write %1: %2").arg(fileName, file.errorString());
}

void PakWriter::write(QIODevice &device) const
{
    put(device, QByteArray(HeaderSize, '\0'));
    BlockWriter blocks(device, m_blockSize);
    QVector<Child> nodes = blocks.writeLeaves(valuesByKey());
    const bool rootIsLeaf = nodes.size() == 1;
    for (int level = 0; nodes.size() > 1; ++level)
        nodes = blocks.writeIndexLevel(nodes, level);
    // The root is known, and written, last.
    device.seek(0);
    put(device, header(m_blockSize, nodes.first(), rootIsLeaf));
}

QByteArray PakWriter::fileTable() const
{
    QByteArray table = quantity(static_cast<quint64>(m_files.size()));
    for (auto file = m_files.cbegin(); file != m_files.cend(); ++file)
        table += sized(file.key().toUtf8()) + sized(QByteArray());
    return table;
}

QMap<QByteArray, QByteArray> PakWriter::valuesByKey() const
{
    QMap<QByteArray, QByteArray> values;
    for (auto file = m_files.cbegin(); file != m_files.cend(); ++file)
        values.insert(PakFormat::key(file.key()), file.value());
    values.insert(PakFormat::fileTableKey(), fileTable());
    return values;
}
