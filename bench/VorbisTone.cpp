#include "VorbisTone.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

namespace {

std::vector<float> tone(int number, int channels)
{
    std::vector<float> samples;
    unsigned state = static_cast<unsigned>(number) + 1;
    for (std::size_t i = 0; i < VorbisTone::Seconds * VorbisTone::Rate; ++i) {
        state = state * 1664525U + 1013904223U;
        const double time = static_cast<double>(i) / VorbisTone::Rate;
        const double noise = 0.02 * static_cast<double>(state >> 8) / 16777216.0;
        for (int channel = 0; channel < channels; ++channel) {
            const double pitch = 220 + channel + 30 * number;
            samples.push_back(static_cast<float>(0.4 * std::sin(2 * M_PI * pitch * time) + noise));
        }
    }
    return samples;
}

std::vector<char> contentsOf(std::FILE *file)
{
    std::vector<char> bytes(static_cast<std::size_t>(std::max(std::ftell(file), 0L)));
    std::rewind(file);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    return bytes;
}

} // namespace

std::vector<char> VorbisTone::make(int number, int channels)
{
    const std::vector<float> samples = tone(number, channels);
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::tmpfile(), std::fclose);
    if (file == nullptr)
        return {};
    SF_INFO info = {};
    info.format = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    info.samplerate = Rate;
    info.channels = channels;
    SNDFILE *const sound = sf_open_fd(fileno(file.get()), SFM_WRITE, &info, SF_FALSE);
    sf_write_float(sound, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(sound);
    std::fseek(file.get(), 0, SEEK_END);
    return contentsOf(file.get());
}
