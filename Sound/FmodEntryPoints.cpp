#include "Sound/FmodEntryPoints.h"

#include <QLibrary>

namespace {

class Resolver {
public:
    explicit Resolver(QLibrary &library)
        : m_library(library)
    {
    }

    template <typename Function> void operator()(Function *&entryPoint, const char *name)
    {
        entryPoint = reinterpret_cast<Function *>(m_library.resolve(name));
        if (!entryPoint)
            m_missing.append(QLatin1String(name));
    }

    const QStringList &missing() const { return m_missing; }

private:
    QLibrary &m_library;
    QStringList m_missing;
};

} // namespace

QStringList FmodEntryPoints::resolve(QLibrary &library)
{
    Resolver find(library);
    find(systemCreate, "FMOD_System_Create");
    find(systemRelease, "FMOD_System_Release");
    find(systemSetOutput, "FMOD_System_SetOutput");
    find(systemSetSoftwareChannels, "FMOD_System_SetSoftwareChannels");
    find(systemGetSoftwareFormat, "FMOD_System_GetSoftwareFormat");
    find(systemInit, "FMOD_System_Init");
    find(systemUpdate, "FMOD_System_Update");
    find(systemGetDSPClock, "FMOD_System_GetDSPClock");
    find(systemCreateSound, "FMOD_System_CreateSound");
    find(systemCreateChannelGroup, "FMOD_System_CreateChannelGroup");
    find(systemPlaySound, "FMOD_System_PlaySound");
    find(soundRelease, "FMOD_Sound_Release");
    find(channelGroupRelease, "FMOD_ChannelGroup_Release");
    find(channelStop, "FMOD_Channel_Stop");
    find(channelSetPaused, "FMOD_Channel_SetPaused");
    find(channelSetVolume, "FMOD_Channel_SetVolume");
    find(channelSetFrequency, "FMOD_Channel_SetFrequency");
    find(channelGetFrequency, "FMOD_Channel_GetFrequency");
    find(channelSetPan, "FMOD_Channel_SetPan");
    find(channelSetDelay, "FMOD_Channel_SetDelay");
    find(channelSetChannelGroup, "FMOD_Channel_SetChannelGroup");
    return find.missing();
}
