#pragma once

#include "Sound/Fmod.h"

#include <functional>

/// Takes the result of every call to the sound interface. A worker passes its own checkErrors(),
/// so that what the shared code meets is logged in that worker's name.
using FmodCheck = std::function<void(FMOD_RESULT)>;

/// Writes "FMOD Error: …" and a line break to the message log as critical, with `source` and
/// `function` as context (see MessageLog). Does nothing for FMOD_OK.
void logFmodError(const char *source, const char *function, FMOD_RESULT result);
