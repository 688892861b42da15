#pragma once

#include <cstdint>
#include <optional>

/// The figures of a finished sound file, read from the file itself.
struct WaveMeasure {
    int sampleRate = 0;
    std::uint64_t frames = 0;
    float peak = 0.0F;         ///< largest absolute sample; 1 is full scale
    std::uint64_t clipped = 0; ///< samples at full scale, where a louder mix was clamped

    /// Reads the whole file, in pieces. `fileName` is in the local 8-bit encoding. Nothing for a
    /// file that cannot be read as sound.
    static std::optional<WaveMeasure> ofFile(const char *fileName);
};
