#include "support/PackageBuilder.h"

#include <QCryptographicHash>
#include <QFile>

namespace {

QByteArray padded(const QByteArray &bytes, int size)
{
    return bytes.leftJustified(size, '\0');
}

} // namespace

qint32 PackageBuilder::addBlock(const QByteArray &bytes)
{
    const qint32 index = m_blocks.size() / blockSize;
    m_blocks += padded(bytes, blockSize);
    return index;
}

qint32 PackageBuilder::addLeafBlock(const QByteArray &data, qint32 next)
{
    return addBlock(padded("LL" + data, blockSize - 4) + number(next));
}

qint32 PackageBuilder::addIndexBlock(qint32 firstChild, const QVector<KeyAndChild> &children)
{
    QByteArray bytes = "II" + QByteArray(1, '\0') + number(children.size()) + number(firstChild);
    for (const KeyAndChild &child : children)
        bytes += child.first + number(child.second);
    return addBlock(bytes);
}

qint32 PackageBuilder::addLeafChain(const QByteArray &stream)
{
    const qint32 first = m_blocks.size() / blockSize;
    for (int pos = 0; pos < stream.size(); pos += dataPerLeafBlock()) {
        const bool isLast = stream.size() - pos <= dataPerLeafBlock();
        const qint32 here = m_blocks.size() / blockSize;
        addLeafBlock(stream.mid(pos, dataPerLeafBlock()), isLast ? -1 : here + 1);
    }
    return first;
}

QByteArray PackageBuilder::header() const
{
    QByteArray bytes = padded(magic, 6) + number(headerSize) + number(blockSize);
    bytes += QByteArray(18, '?');
    bytes += padded(databaseIdentifier, 12) + padded(contentIdentifier, 12) + number(keySize);
    bytes += QByteArray(1, rootSelector) + '?';
    bytes += number(rootBlock) + QByteArray(1, rootIsLeaf) + "???";
    bytes += number(secondRootBlock) + QByteArray(1, secondRootIsLeaf);
    return padded(bytes, headerSize);
}

QByteArray PackageBuilder::bytes() const
{
    return header() + m_blocks;
}

void PackageBuilder::save(const QString &fileName) const
{
    writeFile(fileName, bytes());
}

QByteArray PackageBuilder::number(qint32 value)
{
    const auto bits = static_cast<quint32>(value);
    QByteArray bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.append(static_cast<char>(bits >> shift));
    return bytes;
}

QByteArray PackageBuilder::quantity(quint64 value)
{
    QByteArray bytes;
    for (int shift = 63; shift > 0; shift -= 7) {
        const quint64 above = value >> shift;
        if (above != 0)
            bytes.append(static_cast<char>(0x80U | (above & 0x7FU)));
    }
    bytes.append(static_cast<char>(value & 0x7FU));
    return bytes;
}

QByteArray PackageBuilder::key(const QString &path)
{
    return QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Sha256);
}

QByteArray PackageBuilder::entry(const QString &path, const QByteArray &value)
{
    return key(path) + quantity(static_cast<quint64>(value.size())) + value;
}

QByteArray PackageBuilder::fileTable(const QVector<QByteArray> &paths)
{
    QByteArray table = quantity(static_cast<quint64>(paths.size()));
    for (const QByteArray &path : paths)
        table += quantity(static_cast<quint64>(path.size())) + path;
    return table;
}

QByteArray PackageBuilder::leafStream(const QVector<QByteArray> &entries)
{
    QByteArray stream = number(entries.size());
    for (const QByteArray &one : entries)
        stream += one;
    return stream;
}

void writeFile(const QString &fileName, const QByteArray &bytes)
{
    // Some file systems flush a file that is written over, which takes the disk's time.
    QFile::remove(fileName);
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(fileName));
}
