#pragma once

#include <cstdint>

namespace FMOD {
class Channel;
} // namespace FMOD

/// Tells the built-in engine beforehand how a note ends, so that it draws the fade exactly.
///
/// Whoever fades by setting the volume again and again gets a line as crooked as the clock that he
/// looks at is coarse, and another one for a device than for a file.
namespace PlannedFade {

/// From `clock` on, the volume of a channel that is still paused goes down along a straight line to
/// silence, which it reaches after `frames` frames, 5 ms at the least; the channel ends there. From
/// `clock` on, volumes and pans that are set are taken and make no difference.
///
/// Does nothing for a channel of another provider, which knows only of the volumes that are set.
void plan(FMOD::Channel &channel, std::uint64_t clock, std::uint64_t frames);

} // namespace PlannedFade
