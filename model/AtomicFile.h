#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;

/// Files that are replaced only when all is written.
namespace AtomicFile {

/// Writes `bytes` to the file `path`, which is as it was until all of them are on the disk.
/// Throws "Could not write PATH: REASON".
void write(const QString &path, const QByteArray &bytes);

/// Writes all of `bytes` to an unbuffered device. A full disk takes a part of them without
/// complaint, and only the next write tells the reason, which is the device's errorString() when
/// the answer is false.
bool writeWhole(QIODevice &device, const QByteArray &bytes);

} // namespace AtomicFile
