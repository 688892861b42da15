#pragma once

#include <QByteArray>
#include <QString>

/// How a file inside an asset package is named where a file path is expected:
/// "pak://" + path of the package + "::" + path inside it.
struct PakPath {
    QString package;
    QString inner;

    static bool isPakPath(const QString &path);

    /// What to put before an inner path to name it: "pak://" + `package` + "::".
    static QString prefix(const QString &package);

    /// Splits at the first "::". Throws "Invalid pak:// filename" when `path` is no `pak://` path
    /// or has no "::".
    static PakPath parse(const QString &path);
};

/// The bytes that a `pak://` path names. Throws as PakPath::parse() and PakReader::getFile() do.
/// Any thread may call it: each call has a reader of its own.
QByteArray readPakFile(const QString &pakUrl);
