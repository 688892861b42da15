#pragma once

#include <QByteArray>
#include <QString>

/// The files in which the user's work is kept.
namespace DocumentFile {

/// Makes `bytes` the content of the file `path`, through a symbolic link too. A full disk, or the
/// end of the program in the middle, leaves the older file or the new one.
///
/// A file that cannot be replaced without a change of what it is (it has other names or another
/// owner) or that stands in a directory where nothing can be created is written over instead. On
/// failure it gets back what it held; only the end of the program in the middle may harm it. A
/// character device is written to as it is; a pipe or another special file is refused.
///
/// Throws "Could not open the file for saving.", or "Could not write the file: REASON".
void save(const QString &path, const QByteArray &bytes);

} // namespace DocumentFile
