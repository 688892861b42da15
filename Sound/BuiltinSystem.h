#pragma once

#include "Sound/Fmod.h"
#include "Sound/PreparePool.h"

/// Makes a system of the program's own engine: sounds decoded by libsndfile, resampled once in
/// high quality, mixed at 48 kHz.
///
/// createSound() reads no more than the header; a sound is decoded, and resampled when a channel
/// of it is set going, by threads of the system's own (`threads` of them, with 0 by the calling
/// thread). update() waits for what starts in its block. A sound that turns out to be damaged
/// behind its header, or too large, is silent: the update() it should start in answers its error
/// once, and is otherwise like any other.
///
/// Its output is the non-real-time wave writer: init() wants the file name as extra driver data
/// and answers FMOD_ERR_OUTPUT_INIT where that file cannot be written or another output is set.
/// Each update() mixes a block of 1024 frames, appends it and moves the clock; when writing
/// fails it answers FMOD_ERR_FILE_BAD, then and ever after, and the clock stands still.
/// release() completes the file, which only then takes its name; after a failure it removes the
/// unfinished file and answers FMOD_ERR_FILE_BAD. The same calls give the same bytes, whatever the
/// number of threads.
///
/// Before init() only the settings can be made; all else answers FMOD_ERR_INITIALIZATION. Null
/// pointers are answered with FMOD_ERR_INVALID_PARAM. The number of channels is taken as a
/// hint: every note sounds in full up to ChannelPool::MaxVoices of them at a time. A system and
/// its objects are used by one thread at a time; different systems are independent.
FMOD_RESULT createBuiltinSystem(FMOD::System **system,
                                unsigned threads = PreparePool::defaultThreads());
