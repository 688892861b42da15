#include "cli/Files.h"

#include "model/AtomicFile.h"
#include "model/Signals.h"

#include <QFile>
#include <QFileInfo>

#include <optional>

#include <sys/stat.h>

namespace {

constexpr int MaxSize = 256 * 1024 * 1024;
constexpr int ChunkSize = 64 * 1024;

std::optional<struct stat> status(const QString &path)
{
    struct stat result = {};
    if (stat(QFile::encodeName(path).constData(), &result) != 0)
        return std::nullopt;
    return result;
}

void writeThrough(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        || !AtomicFile::writeWhole(file, bytes))
        throw QStringLiteral("Could not write %1: %2").arg(path, file.errorString());
}

void openForReading(QFile &file, const QString &path)
{
    const bool isOpen = path == QLatin1String("-")
        ? file.open(stdin, QIODevice::ReadOnly | QIODevice::Unbuffered)
        : file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    if (!isOpen)
        throw QStringLiteral("Could not open file.");
}

/// In chunks, so that memory follows what is there: a device has no size.
QByteArray readWhole(const QString &path)
{
    QFile file(path);
    openForReading(file, path);
    QByteArray bytes;
    QByteArray chunk(ChunkSize, Qt::Uninitialized);
    while (true) {
        const qint64 got = file.read(chunk.data(), chunk.size());
        if (got < 0)
            throw QStringLiteral("Could not open file.");
        bytes.append(chunk.constData(), static_cast<int>(got));
        if (bytes.size() > MaxSize)
            throw QStringLiteral("The file is too large.");
        if (got == 0)
            return bytes;
    }
}

} // namespace

void Files::write(const QString &path, const QByteArray &bytes)
{
    // Renaming over a device would replace it.
    if (isSpecial(path))
        return writeThrough(path, bytes);
    const SignalHold hold;
    AtomicFile::write(path, bytes);
}

QByteArray Files::read(const QString &path)
{
    return readWhole(path);
}

Files::Identity Files::identity(const QString &path)
{
    const auto found = status(path);
    return found ? Identity(found->st_dev, found->st_ino) : Identity();
}

bool Files::areSame(const QString &path, const QString &other)
{
    const Identity found = identity(path);
    return found != Identity() && found == identity(other);
}

bool Files::isSpecial(const QString &path)
{
    const auto found = status(path);
    return found && !S_ISREG(found->st_mode) && !S_ISDIR(found->st_mode);
}
