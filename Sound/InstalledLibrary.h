#pragma once

#include "Sound/FmodEntryPoints.h"

#include <QString>
#include <QStringList>

#include <optional>

/// The sound library that the user has installed, looked up at run time: nothing of it is needed
/// to build or to start the program. Once loaded it stays in the process.
class InstalledLibrary {
public:
    /// Loads the library. The environment variable QUILLMOOR_FMOD_LIBRARY, read at each call,
    /// names the one file to load; without it candidates() are tried in order. A library that
    /// lacks an entry point counts as absent, with a warning that names what is missing; so
    /// does, with a warning, a named file that cannot be loaded.
    static std::optional<InstalledLibrary> find();

    /// The names under which the library may be found: "fmodex64" and "fmodex" for the loader's
    /// own search, then the full paths of numberedFiles() in the folders of LD_LIBRARY_PATH, the
    /// program's own folder and the system's library folders.
    static QStringList candidates();

    /// The files with names like libfmodex64-4.44.61.so and libfmodex64.so.4 in `folders`: those
    /// with "64" first, then the highest version first, folders in the given order.
    static QStringList numberedFiles(const QStringList &folders);

    /// Makes a system; `*system` is null on failure.
    FMOD_RESULT createSystem(FMOD::System **system) const;

private:
    FmodEntryPoints m_entryPoints;
};
