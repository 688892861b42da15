// How soon the first chord of a song can sound: sixteen sounds of five seconds that were not heard
// before, each at a pitch of its own, from the first call until the last of their heads is ready,
// and until all of it would be. Alone, and beside two processes that do nothing but compute.

#include "Sound/ChannelPool.h"
#include "Sound/Decoder.h"

#include <sndfile.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int Tracks = 16;
constexpr int Rounds = 20;
constexpr int Rate = 44100;
constexpr std::size_t Seconds = 5;

using Bytes = std::vector<char>;
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// A tone with some noise, in stereo.
std::vector<float> tone(int number)
{
    std::vector<float> samples;
    unsigned state = static_cast<unsigned>(number) + 1;
    for (std::size_t i = 0; i < Seconds * Rate; ++i) {
        state = state * 1664525U + 1013904223U;
        const double time = static_cast<double>(i) / Rate;
        const double noise = 0.02 * static_cast<double>(state >> 8) / 16777216.0;
        for (const double pitch : {220.0, 221.0})
            samples.push_back(static_cast<float>(
                0.4 * std::sin(2 * M_PI * (pitch + 30 * number) * time) + noise));
    }
    return samples;
}

Bytes contentsOf(std::FILE *file)
{
    Bytes bytes(static_cast<std::size_t>(std::max(std::ftell(file), 0L)));
    std::rewind(file);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    return bytes;
}

Bytes vorbis(const std::vector<float> &samples)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::tmpfile(), std::fclose);
    if (file == nullptr)
        return {};
    SF_INFO info = {};
    info.format = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    info.samplerate = Rate;
    info.channels = 2;
    SNDFILE *const sound = sf_open_fd(fileno(file.get()), SFM_WRITE, &info, SF_FALSE);
    sf_write_float(sound, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(sound);
    std::fseek(file.get(), 0, SEEK_END);
    return contentsOf(file.get());
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
        const double frequency = Rate * (0.7 + 0.05 * static_cast<double>(i));
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

/// Keeps processes busy for as long as it lives.
class Busy {
public:
    explicit Busy(int processes)
    {
        for (int i = 0; i < processes; ++i)
            m_children.push_back(start());
    }
    ~Busy()
    {
        for (const pid_t child : m_children)
            end(child);
    }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;

private:
    static pid_t start()
    {
        const pid_t child = fork();
        if (child != 0)
            return child;
        alarm(120); // it does not outlive us by much
        for (volatile unsigned count = 0;; count = count + 1) { }
    }

    static void end(pid_t child)
    {
        if (child <= 0)
            return;
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }

    std::vector<pid_t> m_children;
};

} // namespace

int main()
{
    std::vector<Bytes> sounds;
    for (int i = 0; i < Tracks; ++i)
        sounds.push_back(vorbis(tone(i)));
    std::printf("%-34s %11s %11s\n", "Sixteen sounds of 5 s", "median", "worst");
    std::printf("alone\n");
    printRows(sounds);
    std::printf("beside two busy processes\n");
    const Busy busy(2);
    printRows(sounds);
    return 0;
}
