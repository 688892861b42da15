#pragma once

namespace FMOD {
class Sound;
class System;
} // namespace FMOD

/// Has the built-in engine make samples before they are played live, so that a note which was not
/// heard before is not late on a busy machine.
namespace LiveAhead {

/// Whether prepare() does anything: not for a system of another provider or output.
bool isPossible(FMOD::System &system);

/// Begins to make what a channel plays whose frequency is the sound's own times `pitch`. Waits for
/// nothing, and may be called for the same again and again; what is not played in the end costs
/// some memory until the engine needs it. Ignores a sound that is not the system's.
void prepare(FMOD::System &system, const FMOD::Sound &sound, double pitch);

} // namespace LiveAhead
