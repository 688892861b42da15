#pragma once

#include <cstddef>
#include <vector>

/// Sounds as a game has them.
namespace VorbisTone {

constexpr int Rate = 44100;
constexpr std::size_t Seconds = 5;

/// The file of a tone with some noise, in one or two channels. Every number sounds a little
/// different.
std::vector<char> make(int number, int channels);

} // namespace VorbisTone
