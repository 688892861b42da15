#pragma once

#include <cstdint>
#include <string>

namespace FMOD {
class System;
}

/// What the built-in engine can tell of its live output beyond the sound interface. For a system
/// of another provider or output the answers are empty and 0.
namespace LiveStatus {

/// Why no sound comes out, as a sentence for the user; empty while it does. Also after an init()
/// that answered FMOD_ERR_OUTPUT_INIT.
std::string problem(FMOD::System &system);

/// How many voices so far began after the clock that setDelay() had given them, because they
/// were set going or their samples were ready too late. Clock 0 stands for "at once".
std::uint64_t lateStarts(FMOD::System &system);

/// How many frames so far were missing from the middle of sounds, added up over all voices,
/// because their samples were not prepared fast enough. There the voices were silent.
std::uint64_t missedFrames(FMOD::System &system);

} // namespace LiveStatus
