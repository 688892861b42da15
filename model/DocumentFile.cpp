#include "model/DocumentFile.h"

#include "model/AtomicFile.h"

#include <QFile>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr QIODevice::OpenMode Unbuffered = QIODevice::Unbuffered;

std::optional<struct stat> status(const QString &path)
{
    struct stat result = {};
    if (stat(QFile::encodeName(path).constData(), &result) != 0)
        return std::nullopt;
    return result;
}

[[noreturn]] void failToOpen()
{
    throw QStringLiteral("Could not open the file for saving.");
}

[[noreturn]] void failToWrite(const QString &reason)
{
    throw QStringLiteral("Could not write the file: %1").arg(reason);
}

bool isOurs(const struct stat &file)
{
    return file.st_uid == geteuid() && file.st_gid == getegid();
}

bool canBeReplaced(const struct stat &file)
{
    return S_ISREG(file.st_mode) && file.st_nlink == 1 && isOurs(file);
}

bool canBeWritten(const struct stat &file)
{
    return S_ISREG(file.st_mode) || S_ISCHR(file.st_mode);
}

/// Writes from the start, waits for the disk, and cuts off what is behind. Answers what went wrong.
/// The cut comes last: what it takes away could not be written again.
QString writeThrough(QFile &file, const QByteArray &bytes, qint64 size)
{
    if (!file.seek(0) || !AtomicFile::writeWhole(file, bytes))
        return file.errorString();
    if (fsync(file.handle()) != 0)
        return QString::fromLocal8Bit(strerror(errno));
    if (!file.resize(size))
        return file.errorString();
    fsync(file.handle()); // of the new length alone
    return {};
}

void create(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | Unbuffered))
        failToOpen();
    const QString reason = writeThrough(file, bytes, bytes.size());
    if (reason.isEmpty())
        return;
    file.remove();
    failToWrite(reason);
}

void writeToDevice(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | Unbuffered))
        failToOpen();
    if (!AtomicFile::writeWhole(file, bytes))
        failToWrite(file.errorString());
}

void overwrite(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | Unbuffered))
        failToOpen();
    const qint64 olderSize = file.size();
    const QByteArray older = file.read(bytes.size());
    const QString reason = writeThrough(file, bytes, bytes.size());
    if (reason.isEmpty())
        return;
    writeThrough(file, older, olderSize);
    failToWrite(reason);
}

/// False where no file can be made beside the old one, not even of the longer name that it has.
bool replace(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | Unbuffered))
        return false;
    if (!AtomicFile::writeWhole(file, bytes))
        failToWrite(file.errorString());
    return file.commit();
}

void saveNew(const QString &path, const QByteArray &bytes)
{
    if (!replace(path, bytes))
        create(path, bytes);
}

void saveOver(const struct stat &older, const QString &path, const QByteArray &bytes)
{
    if (!canBeWritten(older))
        failToOpen();
    if (S_ISCHR(older.st_mode))
        return writeToDevice(path, bytes);
    if (!canBeReplaced(older) || !replace(path, bytes))
        overwrite(path, bytes);
}

} // namespace

void DocumentFile::save(const QString &path, const QByteArray &bytes)
{
    const auto older = status(path);
    if (older)
        saveOver(*older, path, bytes);
    else
        saveNew(path, bytes);
}
