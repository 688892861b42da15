#pragma once

#include "Sound/AudioOutput.h"
#include "Sound/Fmod.h"
#include "Sound/PreparePool.h"

/// Makes a system of the program's own engine: sounds decoded by libsndfile, resampled once in
/// high quality, mixed at 48 kHz.
///
/// createSound() decodes no more than the header; a sound is decoded, and resampled when a channel
/// of it is set going, by threads of the system's own (`threads` of them, with 0 by the calling
/// thread): its head first, the rest only as far as it is going to be heard. A sound that turns out
/// to be damaged behind its header, or too large, is silent: the update() that finds it out answers
/// its error once, and is otherwise like any other.
///
/// With FMOD_OUTPUTTYPE_AUTODETECT, the default, the system plays live: init() starts an output of
/// `outputs`, by default the machine's device, and answers FMOD_ERR_OUTPUT_INIT where that fails.
/// The output takes the mix from a thread of its own, which moves the clock. update() hands over
/// what has been prepared and waits for nothing (only without threads does it make one piece at a
/// time itself): a note whose sample comes too late starts when it comes, and one that gets ahead
/// of its sample is silent there. Sound/LiveStatus.h tells
/// how it goes. release() stops the output first.
///
/// With FMOD_OUTPUTTYPE_WAVWRITER_NRT it writes a file: init() wants the file name as extra driver
/// data and answers FMOD_ERR_OUTPUT_INIT where that file cannot be written, as for any other
/// output. update() waits for the samples of what sounds in its block. Each one mixes a block of
/// 1024 frames, appends it and moves the clock; when writing fails it answers FMOD_ERR_FILE_BAD,
/// then and ever after, and the clock stands still. release() completes the file, which only then
/// takes its name; after a failure it removes the unfinished file and answers FMOD_ERR_FILE_BAD.
/// The same calls give the same bytes, whatever the number of threads.
///
/// Before init() only the settings can be made; all else answers FMOD_ERR_INITIALIZATION. Null
/// pointers are answered with FMOD_ERR_INVALID_PARAM. The number of channels is taken as a
/// hint: every note sounds in full up to ChannelPool::MaxVoices of them at a time. A system and
/// its objects are used by one thread at a time; different systems are independent.
FMOD_RESULT createBuiltinSystem(FMOD::System **system,
                                unsigned threads = PreparePool::defaultThreads(),
                                AudioOutputFactory outputs = defaultAudioOutput);
