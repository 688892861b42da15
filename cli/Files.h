#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <utility>

/// Files as the commands read and write them.
namespace Files {

/// Replaces the file only when all bytes are written; the program's end by a signal leaves the
/// old file or the new one and nothing beside it. What exists and is no regular file (a device, a
/// pipe) is written to as it is. Throws a QString that names the file and the reason.
void write(const QString &path, const QByteArray &bytes);

/// The bytes of a file, or of standard input for "-". Throws "Could not open file." when it
/// cannot be opened or read, and "The file is too large." beyond 256 MiB.
QByteArray read(const QString &path);

/// What a file is apart from its names; Identity() for what does not exist.
using Identity = std::pair<quint64, quint64>;
Identity identity(const QString &path);

/// Both exist and are the same file, by whatever names.
bool areSame(const QString &path, const QString &other);

/// Exists and is neither a regular file nor a directory.
bool isSpecial(const QString &path);

} // namespace Files
