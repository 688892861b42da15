#pragma once

#include <QSettings>
#include <QString>

#include <memory>

class QIODevice;

/// The file of the settings: its format, and its exchange with QSettings such that any number of
/// processes may do so at once. The functions are called by one thread at a time.
namespace SettingsFile {

/// A longer file (32 MB) is not read, as if it were damaged.
constexpr qint64 MaximumBytes = 33554432;

/// How long another process that holds the file is waited for.
constexpr qint64 PatienceMs = 2000;

/// Registers the format "cfg" with QSettings and makes it the default one, below the platform's
/// configuration directory. Further calls do nothing.
void registerFormat();

/// The format's reading function. The values are empty when the text is not a JSON object.
bool read(QIODevice &device, QSettings::SettingsMap &values);

/// The format's writing function: an indented JSON object. False unless all of it was written. A
/// file on the disk becomes younger than the one that it replaces by a millisecond at least.
bool write(QIODevice &device, const QSettings::SettingsMap &values);

/// Opens and reads the program's settings. They never write by themselves from an event loop, and
/// look into no other file.
std::unique_ptr<QSettings> open();

/// Writes the changes, if there are any, into what the file holds by then, and reads what other
/// processes have changed. False when the file could not be written: it is as it was then, and
/// the changes are still in `store` for the next attempt.
///
/// A file that is not a JSON object is replaced even without changes. It is kept beside the new
/// one under the name with ".damaged" added (then ".damaged-2" and so on), which is logged.
bool sync(QSettings &store, bool hasChanges);

} // namespace SettingsFile
