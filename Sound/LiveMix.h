#pragma once

#include "Sound/AudioOutput.h"
#include "Sound/RemoteMixer.h"

#include <array>
#include <cstddef>

/// A mix as an output plays it: pairs of left and right, clamped to -1..1, never anything that is
/// no number.
class LiveMix final : public AudioSource {
public:
    /// Frames between two looks at the commands; a longer block is mixed in several pieces.
    static constexpr std::size_t PieceFrames = 1024;

    /// The mixer must outlive this.
    explicit LiveMix(RemoteMixer &mixer)
        : m_mixer(mixer)
    {
    }

    void fill(float *interleaved, std::size_t frames) noexcept override;

private:
    void fillPiece(float *interleaved, std::size_t frames) noexcept;

    RemoteMixer &m_mixer;
    std::array<float, PieceFrames> m_left{};
    std::array<float, PieceFrames> m_right{};
};
