#pragma once

#include "MIDI/MidiOptions.h"
#include "cli/Arguments.h"
#include "model/Track.h"

#include <functional>
#include <optional>

class Console;

/// Music files as the commands take them.
namespace Tunes {

/// "--no-merge-channels", "--no-auto-realign" and "--no-pitch-bend", for the table of a command
/// that takes MIDI files.
QVector<Option> options();

/// The defaults of the settings but for what the options switch off. Stored settings play no
/// part.
MidiOptions midiOptions(const OptionValues &options);

/// What a file is taken for before it is read.
enum class Kind {
    Abc,
    Midi,
    Stream, ///< standard input or a pipe: its first bytes will tell
};
Kind kind(const QString &path);

/// What a file holds.
struct Music {
    QList<Track> tracks; ///< the one of ABC; of MIDI those with notes, which may be none
    bool isMidi = false;
};

/// A file, or standard input for "-". Throws as loadABCFile() and loadMidiFile() do.
Music read(const QString &path, const MidiOptions &options);

/// Takes the music of a file, by the number of the file. May throw a QString.
using Make = std::function<void(int, const Music &)>;
/// Takes why the file of this number could not be read or made something of; nothing if it could.
using Take = std::function<void(int, const std::optional<QString> &)>;

/// Reads all files on all processors. `make` is called on the threads that read, in any order and
/// at the same time, `take` thereafter on this thread, in the files' order. Shows the progress
/// ("Converting 12 of 70" for the activity "Converting") and, file by file, what the log says.
/// Throws what `take` throws, and a UsageError when standard input stands twice among the files.
void forEach(const QStringList &files, const MidiOptions &options, const QString &activity,
             const Make &make, const Take &take, Console &console);

/// What was found below a directory; paths begin with the directory's as it was given.
struct Found {
    QStringList files;      ///< sorted
    QStringList unreadable; ///< directories
};

/// All MIDI files, neither hidden ones nor those in hidden directories, nor where links to
/// directories lead.
Found midiFilesBelow(const QString &directory);

/// The file's name without directory and last suffix; "stdin" for "-".
QString stem(const QString &path);

} // namespace Tunes
