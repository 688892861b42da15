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
    /// Throws "Invalid pak:// filename", and what reading from the package throws. The message is
    /// thrown again, without a look at the file, until forgetFailures().
    FMOD::Sound *sound(FMOD::System &system, const QString &path);

    /// Whether sound() answers or throws without a look at the file.
    bool isKnown(const QString &path) const
    {
        return m_sounds.contains(path) || m_failures.contains(path);
    }

    /// Paths whose loading threw are tried again the next time.
    void forgetFailures() { m_failures.clear(); }

    /// Releases every sample and forgets all paths.
    void releaseAll();

private:
    FMOD::Sound *load(FMOD::System &system, const QString &path);
    FMOD::Sound *loadFile(FMOD::System &system, const QString &path) const;
    FMOD::Sound *loadFromPackage(FMOD::System &system, const QString &path) const;

    FmodCheck m_check;
    QHash<QString, FMOD::Sound *> m_sounds;
    QHash<QString, QString> m_failures; // what was thrown, by path
};
