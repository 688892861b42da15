#pragma once

#include <QByteArray>
#include <QString>

/// Makes UTF-8 the 8-bit text encoding of the process whatever the locale says, in a form that
/// loses no file name.
///
/// A file name on Unix is any string of bytes. A byte that is no UTF-8 becomes the lone
/// surrogate U+DC80 + (byte - 0x80) and comes back as that byte, so that such a file can be
/// listed, opened and written. Qt's own conversions of file names, arguments and environment
/// then all go this way.
namespace FileNameCodec {

/// Call once, before the application object exists: its arguments are decoded there.
void install();

QString decode(const QByteArray &bytes);
QByteArray encode(const QString &text);

} // namespace FileNameCodec
