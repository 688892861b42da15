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
    FMOD_RESULT (*systemCreate)(RawSystem **) = nullptr;
    FMOD_RESULT (*systemRelease)(RawSystem *) = nullptr;
    FMOD_RESULT (*systemSetOutput)(RawSystem *, FMOD_OUTPUTTYPE) = nullptr;
    FMOD_RESULT (*systemSetSoftwareChannels)(RawSystem *, int) = nullptr;
    FMOD_RESULT(*systemGetSoftwareFormat)
    (RawSystem *, int *, FMOD_SOUND_FORMAT *, int *, int *, FMOD_DSP_RESAMPLER *, int *) = nullptr;
    FMOD_RESULT (*systemInit)(RawSystem *, int, FMOD_INITFLAGS, void *) = nullptr;
    FMOD_RESULT (*systemUpdate)(RawSystem *) = nullptr;
    FMOD_RESULT (*systemGetDSPClock)(RawSystem *, unsigned int *, unsigned int *) = nullptr;
    FMOD_RESULT(*systemCreateSound)
    (RawSystem *, const char *, FMOD_MODE, FMOD_CREATESOUNDEXINFO *, RawSound **) = nullptr;
    FMOD_RESULT (*systemCreateChannelGroup)
    (RawSystem *, const char *, RawChannelGroup **) = nullptr;
    FMOD_RESULT(*systemPlaySound)
    (RawSystem *, FMOD_CHANNELINDEX, RawSound *, int, RawChannel **) = nullptr;
    FMOD_RESULT (*soundRelease)(RawSound *) = nullptr;
    FMOD_RESULT (*channelGroupRelease)(RawChannelGroup *) = nullptr;
    FMOD_RESULT (*channelStop)(RawChannel *) = nullptr;
    FMOD_RESULT (*channelSetPaused)(RawChannel *, int) = nullptr;
    FMOD_RESULT (*channelSetVolume)(RawChannel *, float) = nullptr;
    FMOD_RESULT (*channelSetFrequency)(RawChannel *, float) = nullptr;
    FMOD_RESULT (*channelGetFrequency)(RawChannel *, float *) = nullptr;
    FMOD_RESULT (*channelSetPan)(RawChannel *, float) = nullptr;
    FMOD_RESULT (*channelSetDelay)
    (RawChannel *, FMOD_DELAYTYPE, unsigned int, unsigned int) = nullptr;
    FMOD_RESULT (*channelSetChannelGroup)(RawChannel *, RawChannelGroup *) = nullptr;

    /// Looks all of them up in a loaded library and answers the names of those it lacks, in the
    /// order above.
    QStringList resolve(QLibrary &library);
};
