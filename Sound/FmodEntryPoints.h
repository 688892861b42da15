#pragma once

#include "Sound/Fmod.h"

#include <QStringList>

class QLibrary;

/// What the C entry points of the installed library hand out; only that library looks inside.
struct RawSystem;
struct RawSound;
struct RawChannelGroup;
struct RawChannel;

/// The C entry points of the installed library, one for each call of the interface in
/// Sound/Fmod.h. A truth value is an int there.
struct FmodEntryPoints {
    template <typename... Parameters> using Entry = FMOD_RESULT (*)(Parameters...);

    Entry<RawSystem **> systemCreate = nullptr;
    Entry<RawSystem *> systemRelease = nullptr;
    Entry<RawSystem *, FMOD_OUTPUTTYPE> systemSetOutput = nullptr;
    Entry<RawSystem *, int> systemSetSoftwareChannels = nullptr;
    Entry<RawSystem *, int *, FMOD_SOUND_FORMAT *, int *, int *, FMOD_DSP_RESAMPLER *, int *>
        systemGetSoftwareFormat = nullptr;
    Entry<RawSystem *, int, FMOD_INITFLAGS, void *> systemInit = nullptr;
    Entry<RawSystem *> systemUpdate = nullptr;
    Entry<RawSystem *, unsigned int *, unsigned int *> systemGetDSPClock = nullptr;
    Entry<RawSystem *, const char *, FMOD_MODE, FMOD_CREATESOUNDEXINFO *, RawSound **>
        systemCreateSound = nullptr;
    Entry<RawSystem *, const char *, RawChannelGroup **> systemCreateChannelGroup = nullptr;
    Entry<RawSystem *, FMOD_CHANNELINDEX, RawSound *, int, RawChannel **> systemPlaySound = nullptr;
    Entry<RawSound *> soundRelease = nullptr;
    Entry<RawChannelGroup *> channelGroupRelease = nullptr;
    Entry<RawChannel *> channelStop = nullptr;
    Entry<RawChannel *, int> channelSetPaused = nullptr;
    Entry<RawChannel *, float> channelSetVolume = nullptr;
    Entry<RawChannel *, float> channelSetFrequency = nullptr;
    Entry<RawChannel *, float *> channelGetFrequency = nullptr;
    Entry<RawChannel *, float> channelSetPan = nullptr;
    Entry<RawChannel *, FMOD_DELAYTYPE, unsigned int, unsigned int> channelSetDelay = nullptr;
    Entry<RawChannel *, RawChannelGroup *> channelSetChannelGroup = nullptr;

    /// Looks all of them up in a loaded library and answers the names of those it lacks, in the
    /// order above.
    QStringList resolve(QLibrary &library);
};
