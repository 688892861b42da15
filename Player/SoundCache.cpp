#include "Player/SoundCache.h"

#include "Quillmoor/PakPath.h"

#include <utility>

namespace {

constexpr FMOD_MODE FileMode = FMOD_2D | FMOD_SOFTWARE | FMOD_CREATESAMPLE;
constexpr FMOD_MODE MemoryMode = FileMode | FMOD_OPENMEMORY;

} // namespace

SoundCache::SoundCache(FmodCheck check)
    : m_check(std::move(check))
{
}

FMOD::Sound *SoundCache::sound(FMOD::System &system, const QString &path)
{
    const auto known = m_sounds.constFind(path);
    if (known != m_sounds.constEnd())
        return known.value();
    const auto failed = std::as_const(m_failures).constFind(path);
    if (failed != m_failures.constEnd())
        throw QString(*failed);
    FMOD::Sound *const loaded = load(system, path);
    m_sounds.insert(path, loaded);
    return loaded;
}

void SoundCache::releaseAll()
{
    for (FMOD::Sound *sound : std::as_const(m_sounds)) {
        if (sound)
            m_check(sound->release());
    }
    m_sounds.clear();
    m_failures.clear();
}

FMOD::Sound *SoundCache::load(FMOD::System &system, const QString &path)
{
    try {
        return PakPath::isPakPath(path) ? loadFromPackage(system, path) : loadFile(system, path);
    } catch (const QString &message) {
        m_failures.insert(path, message);
        throw;
    }
}

FMOD::Sound *SoundCache::loadFile(FMOD::System &system, const QString &path) const
{
    FMOD::Sound *sound = nullptr;
    const FMOD_RESULT result =
        system.createSound(path.toLocal8Bit().constData(), FileMode, nullptr, &sound);
    m_check(result);
    return result == FMOD_OK ? sound : nullptr;
}

FMOD::Sound *SoundCache::loadFromPackage(FMOD::System &system, const QString &path) const
{
    const QByteArray bytes = readPakFile(path);
    FMOD_CREATESOUNDEXINFO info = {};
    info.cbsize = sizeof info;
    info.length = static_cast<unsigned int>(bytes.size());
    FMOD::Sound *sound = nullptr;
    const FMOD_RESULT result = system.createSound(bytes.constData(), MemoryMode, &info, &sound);
    m_check(result);
    return result == FMOD_OK ? sound : nullptr;
}
