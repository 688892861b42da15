#include "Quillmoor/IconFile.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPixmap>
#include <QSize>
#include <QtEndian>

#include <algorithm>

namespace {

constexpr int LargestSide = 4096;
constexpr qint64 LargestFile = qint64{LargestSide} * LargestSide * 4;

constexpr int GifSizeOffset = 6;
constexpr int PngSizeOffset = 16;

bool isTooLarge(qint64 width, qint64 height)
{
    return std::max(width, height) > LargestSide;
}

/// The size that a GIF's first picture announces says nothing of the screen that it is put on.
bool hasTooLargeScreen(const QByteArray &bytes)
{
    if (!bytes.startsWith("GIF8") || bytes.size() < GifSizeOffset + 4)
        return false;
    const char *const size = bytes.constData() + GifSizeOffset;
    return isTooLarge(qFromLittleEndian<quint16>(size), qFromLittleEndian<quint16>(size + 2));
}

/// An icon file announces other sizes than the PNG pictures in it have.
bool holdsTooLargePng(const QByteArray &bytes)
{
    const QByteArray signature("\x89PNG\r\n\x1A\n");
    for (int at = bytes.indexOf(signature); at >= 0; at = bytes.indexOf(signature, at + 1)) {
        if (bytes.size() - at < PngSizeOffset + 8)
            return false;
        const char *const size = bytes.constData() + at + PngSizeOffset;
        if (isTooLarge(qFromBigEndian<quint32>(size), qFromBigEndian<quint32>(size + 4)))
            return true;
    }
    return false;
}

bool holdsTooLargePicture(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    const QSize size = QImageReader(&buffer).size();
    return isTooLarge(size.width(), size.height()) || hasTooLargeScreen(bytes)
        || holdsTooLargePng(bytes);
}

} // namespace

std::optional<QIcon> IconFile::decode(const QByteArray &bytes)
{
    if (holdsTooLargePicture(bytes))
        return {};
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    return QIcon(QPixmap::fromImageReader(&reader));
}

std::optional<QIcon> IconFile::load(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || file.size() > LargestFile)
        return {};
    if (file.open(QIODevice::ReadOnly) && holdsTooLargePicture(file.readAll()))
        return {};
    return QIcon(path);
}
