#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace FMOD {
class System;
}

/// What the wave writer of the built-in engine can tell and do beyond the sound interface. The
/// functions answer nothing or false for a system of another provider or output, where the
/// caller must look at the file itself.
namespace WaveOutput {

struct Report {
    std::uint64_t frames = 0; ///< frames written so far
    float peak = 0.0F; ///< largest absolute sample of the mix before clamping; 1 is full scale
    std::uint64_t clipped = 0; ///< samples that lay beyond full scale and were clamped
};

/// The figures so far. Call before the system's release().
std::optional<Report> report(FMOD::System &system);

/// Lets release() drop the unfinished file instead of putting it in place: a file that stood
/// under the name before is then kept.
bool abandon(FMOD::System &system);

/// Why the file could not be opened or written on, in the operating system's words; empty where
/// that is not known.
std::string failureReason(FMOD::System &system);

} // namespace WaveOutput
