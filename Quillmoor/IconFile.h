#pragma once

#include <QByteArray>
#include <QIcon>
#include <QString>

#include <optional>

/// Icons from files that may be hostile: a few bytes can announce a picture of gigabytes.
namespace IconFile {

/// Nothing for a picture of more than 4096 pixels a side; a null icon for bytes that are no
/// picture. The format is told from the bytes.
std::optional<QIcon> decode(const QByteArray &bytes);

/// An icon that reads the file when it is first shown. Nothing for a picture of more than 4096
/// pixels a side, a file of more than 64 MiB, and what is no regular file.
std::optional<QIcon> load(const QString &path);

} // namespace IconFile
