#pragma once

#include <QString>

/// Messages that do not stop the user, written to Qt's message log (category "default").
///
/// `source` is the class's path in the tree without suffix ("ABC/ABCParser"), `function` its
/// full signature; both become the message's context.
namespace MessageLog {

void warning(const char *source, const char *function, const QString &text);
void critical(const char *source, const char *function, const QString &text);

/// As warning(), with `text` in quotation marks, as the stream operators of qWarning() print a
/// string.
void quotedWarning(const char *source, const char *function, const QString &text);

} // namespace MessageLog
