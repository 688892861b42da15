#pragma once

#include "Player/FmodCheck.h"

#include <QHash>
#include <QString>

/// The samples that a worker has loaded, each once, by their paths. Belongs to one sound system:
/// call releaseAll() before that is released.
class SoundCache {
public:
    explicit SoundCache(FmodCheck check);

    /// The sample at `path`, a file or a `pak://` path. Loads it on the first call; null when the
    /// sound system could not make anything of it, which is remembered like any other answer.
    ///
    /// Throws "Invalid pak:// filename", and what reading from the package throws; such a path is
    /// tried again the next time.
    FMOD::Sound *sound(FMOD::System &system, const QString &path);

    /// Releases every sample and forgets all paths.
    void releaseAll();

private:
    FMOD::Sound *load(FMOD::System &system, const QString &path) const;
    FMOD::Sound *loadFile(FMOD::System &system, const QString &path) const;
    FMOD::Sound *loadFromPackage(FMOD::System &system, const QString &path) const;

    FmodCheck m_check;
    QHash<QString, FMOD::Sound *> m_sounds;
};
