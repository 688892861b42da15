#pragma once

#include <cstdint>

/// The part of the FMOD Ex programming interface that this program calls, with that library's
/// names and values, as abstract classes.
///
/// Two providers stand behind it: the installed library, found at run time, and the program's
/// own engine. Code above this header is the same with both. Every call answers FMOD_OK or an
/// error code; errorString() puts the code into words. Sounds, channels and groups belong to
/// their system and are dead after its release(). Clocks are counts of output frames since
/// init(), handed over as the high and low half of 64 bits.

enum FMOD_RESULT : int {
    FMOD_OK = 0,
    FMOD_ERR_CHANNEL_ALLOC = 10,
    FMOD_ERR_FILE_BAD = 19,
    FMOD_ERR_FILE_NOTFOUND = 23,
    FMOD_ERR_FORMAT = 25,
    FMOD_ERR_INITIALIZATION = 31,
    FMOD_ERR_INITIALIZED = 32,
    FMOD_ERR_INTERNAL = 33,
    FMOD_ERR_INVALID_HANDLE = 36,
    FMOD_ERR_INVALID_PARAM = 37,
    FMOD_ERR_MEMORY = 43,
    FMOD_ERR_OUTPUT_INIT = 60,
    FMOD_ERR_PLUGIN_MISSING = 66,
};

using FMOD_MODE = unsigned int;
using FMOD_INITFLAGS = unsigned int;

enum FMOD_OUTPUTTYPE : int {
    FMOD_OUTPUTTYPE_AUTODETECT = 0,
    FMOD_OUTPUTTYPE_WAVWRITER_NRT = 5,
};
enum FMOD_CHANNELINDEX : int { FMOD_CHANNEL_FREE = -1 };
enum FMOD_DELAYTYPE : int { FMOD_DELAYTYPE_DSPCLOCK_START = 1 };
enum FMOD_SOUND_FORMAT : int { FMOD_SOUND_FORMAT_NONE = 0 };
enum FMOD_DSP_RESAMPLER : int { FMOD_DSP_RESAMPLER_NOINTERP = 0 };

constexpr FMOD_MODE FMOD_2D = 0x00000008;
constexpr FMOD_MODE FMOD_SOFTWARE = 0x00000040;
constexpr FMOD_MODE FMOD_CREATESAMPLE = 0x00000100;
constexpr FMOD_MODE FMOD_OPENMEMORY = 0x00000800;

constexpr FMOD_INITFLAGS FMOD_INIT_NORMAL = 0;
constexpr FMOD_INITFLAGS FMOD_INIT_STREAM_FROM_UPDATE = 1;

/// Only `cbsize` (216, the size of the whole record) and `length` (bytes of a sound in memory)
/// are used; the rest stays zero.
struct FMOD_CREATESOUNDEXINFO {
    int cbsize;
    unsigned int length;
    std::uint64_t reserved[26];
};
static_assert(sizeof(FMOD_CREATESOUNDEXINFO) == 216);

namespace FMOD {

class Sound {
public:
    virtual FMOD_RESULT release() = 0;

protected:
    ~Sound() = default;
};

class ChannelGroup {
public:
    virtual FMOD_RESULT release() = 0;

protected:
    ~ChannelGroup() = default;
};

/// One playing voice, from playSound() to stop(). After stop() the pointer must not be used.
class Channel {
public:
    virtual FMOD_RESULT stop() = 0;
    virtual FMOD_RESULT setPaused(bool paused) = 0;
    /// 0 (silent) to 1.
    virtual FMOD_RESULT setVolume(float volume) = 0;
    /// Playback rate in Hz; the sound's own rate until it is set.
    virtual FMOD_RESULT setFrequency(float frequency) = 0;
    virtual FMOD_RESULT getFrequency(float *frequency) = 0;
    /// -1 (left) to 1 (right).
    virtual FMOD_RESULT setPan(float pan) = 0;
    virtual FMOD_RESULT setDelay(FMOD_DELAYTYPE type, unsigned int delayHi,
                                 unsigned int delayLo) = 0;
    virtual FMOD_RESULT setChannelGroup(ChannelGroup *group) = 0;

protected:
    ~Channel() = default;
};

class System {
public:
    virtual FMOD_RESULT release() = 0;
    virtual FMOD_RESULT setOutput(FMOD_OUTPUTTYPE output) = 0;
    virtual FMOD_RESULT setSoftwareChannels(int channels) = 0;
    /// Null pointers are allowed for what the caller does not want to know.
    virtual FMOD_RESULT getSoftwareFormat(int *sampleRate, FMOD_SOUND_FORMAT *format,
                                          int *outputChannels, int *maxInputChannels,
                                          FMOD_DSP_RESAMPLER *resampler, int *bits) = 0;
    virtual FMOD_RESULT init(int maxChannels, FMOD_INITFLAGS flags, void *extraDriverData) = 0;
    virtual FMOD_RESULT update() = 0;
    virtual FMOD_RESULT getDSPClock(unsigned int *hi, unsigned int *lo) = 0;
    /// `nameOrData` is a file name, or with FMOD_OPENMEMORY the bytes of a sound file, which are
    /// copied.
    virtual FMOD_RESULT createSound(const char *nameOrData, FMOD_MODE mode,
                                    FMOD_CREATESOUNDEXINFO *info, Sound **sound) = 0;
    virtual FMOD_RESULT createChannelGroup(const char *name, ChannelGroup **group) = 0;
    virtual FMOD_RESULT playSound(FMOD_CHANNELINDEX channelId, Sound *sound, bool paused,
                                  Channel **channel) = 0;

protected:
    ~System() = default;
};

/// Makes a system of the provider in force: the installed library where there is one, else the
/// built-in engine, unless the environment variable QUILLMOOR_SOUND chooses. `*system` is null
/// on failure.
FMOD_RESULT System_Create(System **system);

/// The text for a result code; "Unknown error." for a code outside the table.
const char *errorString(FMOD_RESULT result);

} // namespace FMOD
