#pragma once

#include <array>
#include <cstdint>

/// The start of a 16-bit stereo wave file at 48 kHz, up to where its samples begin.
///
/// Always the same size: room for 64-bit lengths is kept from the start, so that the header can
/// be filled in when the length is known. Up to 4 GiB the file is a plain WAV, beyond it is an
/// RF64 with the same contents.
namespace WaveHeader {

constexpr std::uint32_t SampleRate = 48000;
constexpr std::uint32_t BytesPerFrame = 4;
constexpr std::size_t Size = 80;

std::array<unsigned char, Size> forFrames(std::uint64_t frames);

} // namespace WaveHeader
