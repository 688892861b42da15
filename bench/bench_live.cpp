// How soon the first chord of a song can sound: sixteen sounds of five seconds that were not heard
// before, each at a pitch of its own, from the first call until the last of their heads is ready,
// and until all of it would be. Alone, and beside two processes that do nothing but compute.

#include "Busy.h"
#include "VorbisTone.h"

#include "Sound/ChannelPool.h"
#include "Sound/Decoder.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr int Tracks = 16;
constexpr int Rounds = 20;

using Bytes = std::vector<char>;
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::shared_ptr<Preparation> load(PreparePool &pool, const Bytes &bytes)
{
    const auto file = std::make_shared<SoundFile>();
    file->openMemory(bytes.data(), bytes.size());
    return pool.add(
        [file](AudioSample &sample, std::size_t frames) { return file->decode(sample, frames); });
}

/// Milliseconds until `frames` frames of all sounds of the chord are there.
double chord(const std::vector<Bytes> &sounds, std::size_t frames)
{
    PreparePool pool;
    SampleCache cache(48000, std::size_t{256} * 1024 * 1024, pool);
    const Clock::time_point start = Clock::now();
    std::vector<SampleCache::Sample> chord(sounds.size());
    for (std::size_t i = 0; i < sounds.size(); ++i) {
        const double frequency = VorbisTone::Rate * (0.7 + 0.05 * static_cast<double>(i));
        cache.prepare(load(pool, sounds[i]), frequency, chord[i]);
        pool.ask(chord[i], frames);
    }
    for (const SampleCache::Sample &sample : chord)
        while (!sample->sample().has(frames))
            std::this_thread::sleep_for(std::chrono::microseconds(200)); // as a player looks
    return millisecondsSince(start);
}

void printRow(const char *name, const std::vector<Bytes> &sounds, std::size_t frames)
{
    std::vector<double> times;
    for (int round = 0; round < Rounds; ++round)
        times.push_back(chord(sounds, frames));
    std::sort(times.begin(), times.end());
    std::printf("%-34s %8.1f ms %8.1f ms\n", name, times[times.size() / 2], times.back());
}

void printRows(const std::vector<Bytes> &sounds)
{
    printRow("  heads", sounds, Preparation::HeadFrames);
    printRow("  all of it", sounds, Preparation::All);
}

} // namespace

int main()
{
    std::vector<Bytes> sounds;
    for (int i = 0; i < Tracks; ++i)
        sounds.push_back(VorbisTone::make(i, 2));
    std::printf("%-34s %11s %11s\n", "Sixteen sounds of 5 s", "median", "worst");
    std::printf("alone\n");
    printRows(sounds);
    std::printf("beside two busy processes\n");
    const Busy busy(2, 120);
    printRows(sounds);
    return 0;
}
