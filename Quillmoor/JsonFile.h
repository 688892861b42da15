#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QString>

/// The game's JSON: bytes are read as Latin-1 up to the first NUL, and two slashes begin a
/// comment to the end of the line, inside a string as well.
namespace JsonFile {

/// A null document on failure. `error` (may be null) then tells the reason, or QJsonParseError::
/// NoError when the file could not be opened or is no regular file.
QJsonDocument read(const QString &path, QJsonParseError *error = nullptr);
QJsonDocument parse(const QByteArray &bytes, QJsonParseError *error = nullptr);

} // namespace JsonFile
