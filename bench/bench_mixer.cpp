// How many voices one core mixes in real time: a bare loop that adds samples to the output, which
// is the limit of any mixer of this kind, the program's mixer, and OpenAL Soft, which resamples
// while it mixes.

#include "Timing.h"

#include "Sound/MixKernels.h"
#include "Sound/Mixer.h"
#include "Sound/Resampler.h"

#ifdef HAVE_OPENAL
#include <AL/al.h>
#include <AL/alc.h>
#include <AL/alext.h>
#endif

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr double Rate = 48000.0;
constexpr std::size_t BlockFrames = 1024;
constexpr double SecondsPerRun = 0.7;
constexpr int Runs = 5;
constexpr std::size_t SampleFrames = 48000;

using Samples = std::vector<float>;

/// Of processor time, so that a busy machine falsifies little.
double secondsSince(double start)
{
    return Bench::ownSeconds() - start;
}

std::vector<Samples> makeSamples(std::size_t count)
{
    std::vector<Samples> all;
    unsigned state = 1;
    for (std::size_t i = 0; i < count; ++i) {
        Samples samples(SampleFrames);
        for (float &sample : samples) {
            state = state * 1664525U + 1013904223U;
            sample = static_cast<float>(state >> 8) / 16777216.0F - 0.5F;
        }
        all.push_back(std::move(samples));
    }
    return all;
}

/// The best of several runs of `mixBlock`, as voices in real time.
double voicesInRealTime(std::size_t voices, const std::function<void()> &mixBlock)
{
    double best = 0;
    for (int run = 0; run < Runs; ++run) {
        const double start = Bench::ownSeconds();
        std::size_t frames = 0;
        do {
            mixBlock();
            frames += BlockFrames;
        } while (secondsSince(start) < SecondsPerRun);
        const double realTime = static_cast<double>(frames) / Rate / secondsSince(start);
        best = std::max(best, realTime * static_cast<double>(voices));
    }
    return best;
}

[[gnu::always_inline]] inline void addBare(float *__restrict left, float *__restrict right,
                                           const float *__restrict in, float gainLeft,
                                           float gainRight)
{
    for (std::size_t i = 0; i < BlockFrames; ++i) {
        left[i] += in[i] * gainLeft;
        right[i] += in[i] * gainRight;
    }
}

using BareLoop = void (*)(float *, float *, const float *, float, float);

void addBarePortable(float *left, float *right, const float *in, float gainLeft, float gainRight)
{
    addBare(left, right, in, gainLeft, gainRight);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void addBareAvx2(float *left, float *right, const float *in,
                                                 float gainLeft, float gainRight)
{
    addBare(left, right, in, gainLeft, gainRight);
}
#endif

double bareLoop(BareLoop add, std::size_t voices, const std::vector<Samples> &samples)
{
    Samples left(BlockFrames);
    Samples right(BlockFrames);
    std::vector<std::size_t> positions(voices, 0);
    return voicesInRealTime(voices, [&] {
        std::fill(left.begin(), left.end(), 0.0F);
        std::fill(right.begin(), right.end(), 0.0F);
        for (std::size_t i = 0; i < voices; ++i) {
            add(left.data(), right.data(), samples[i % samples.size()].data() + positions[i], 0.3F,
                0.4F);
            positions[i] += BlockFrames;
            if (positions[i] + BlockFrames > SampleFrames)
                positions[i] = 0;
        }
    });
}

/// Voices begin staggered over a sample's length; one that ends starts again, as the next note
/// would. `changing` of a hundred get a new gain in every block, as fading notes do.
double ownMixer(const MixKernels::Table &kernels, std::size_t voices,
                const std::vector<Samples> &samples, std::size_t changing)
{
    Mixer mixer(voices, kernels);
    const auto start = [&](Mixer::Slot slot, std::size_t skip) {
        const Samples &sample = samples[slot % samples.size()];
        mixer.start(slot,
                    {sample.data() + skip,
                     sample.data() + skip,
                     SampleFrames - skip,
                     mixer.clock(),
                     {0.3F, 0.4F}});
    };
    for (std::size_t i = 0; i < voices; ++i)
        start(static_cast<Mixer::Slot>(i), i * 997 % (SampleFrames / 2));
    Samples left(BlockFrames);
    Samples right(BlockFrames);
    float gain = 0.1F;
    return voicesInRealTime(voices, [&] {
        gain = gain > 0.4F ? 0.1F : gain + 0.001F;
        for (std::size_t i = 0; i < voices; ++i)
            if (i % 100 < changing)
                mixer.setGain(static_cast<Mixer::Slot>(i), {gain, gain});
        mixer.mix(left.data(), right.data(), BlockFrames);
        const std::vector<Mixer::Slot> ended = mixer.ended();
        mixer.clearEnded();
        for (const Mixer::Slot slot : ended)
            start(slot, 0);
    });
}

/// Seconds of sound that are resampled per second: what a note costs that was not heard before.
double preparation(const std::vector<Samples> &samples)
{
    const Samples &sound = samples.front();
    const auto source = std::make_shared<Preparation>([&sound](AudioSample &sample, std::size_t) {
        sample.allocate(sound.size(), false);
        sample.append(sound.data(), sound.data(), sound.size());
        sample.publish();
        sample.complete();
        return FMOD_OK;
    });
    const double start = Bench::ownSeconds();
    double prepared = 0;
    for (int semitone = 1; semitone <= 24; ++semitone) {
        AudioSample result;
        Resampler(source, Rate * (0.5 + 0.0613 * semitone), Rate).make(result, Preparation::All);
        prepared += static_cast<double>(result.frames()) / Rate;
    }
    return prepared / secondsSince(start);
}

#ifdef HAVE_OPENAL
/// Renders without a device, every voice at a pitch that needs resampling.
double openAl(const std::string &resamplerName, std::size_t voices,
              const std::vector<Samples> &samples)
{
    const auto openLoopback = reinterpret_cast<LPALCLOOPBACKOPENDEVICESOFT>(
        alcGetProcAddress(nullptr, "alcLoopbackOpenDeviceSOFT"));
    const auto render = reinterpret_cast<LPALCRENDERSAMPLESSOFT>(
        alcGetProcAddress(nullptr, "alcRenderSamplesSOFT"));
    ALCdevice *const device = openLoopback(nullptr);
    const ALCint attributes[] = {ALC_FORMAT_CHANNELS_SOFT,
                                 ALC_STEREO_SOFT,
                                 ALC_FORMAT_TYPE_SOFT,
                                 ALC_FLOAT_SOFT,
                                 ALC_FREQUENCY,
                                 48000,
                                 ALC_MONO_SOURCES,
                                 static_cast<ALCint>(voices),
                                 ALC_HRTF_SOFT,
                                 ALC_FALSE,
                                 ALC_OUTPUT_LIMITER_SOFT,
                                 ALC_FALSE,
                                 0};
    ALCcontext *const context = alcCreateContext(device, attributes);
    alcMakeContextCurrent(context);
    const auto nameOf = reinterpret_cast<LPALGETSTRINGISOFT>(alGetProcAddress("alGetStringiSOFT"));
    ALint resampler = -1;
    std::string names;
    for (ALint i = 0; i < alGetInteger(AL_NUM_RESAMPLERS_SOFT); ++i) {
        if (nameOf(AL_RESAMPLER_NAME_SOFT, i) == resamplerName)
            resampler = i;
        names = names + nameOf(AL_RESAMPLER_NAME_SOFT, i) + ", ";
    }
    if (resampler < 0)
        std::fprintf(stderr, "OpenAL Soft has no \"%s\", but %s\n", resamplerName.c_str(),
                     names.c_str());
    std::vector<ALuint> buffers(samples.size());
    alGenBuffers(static_cast<ALsizei>(buffers.size()), buffers.data());
    for (std::size_t i = 0; i < buffers.size(); ++i)
        alBufferData(buffers[i], alGetEnumValue("AL_FORMAT_MONO_FLOAT32"), samples[i].data(),
                     SampleFrames * sizeof(float), 48000);
    std::vector<ALuint> sources(voices);
    alGenSources(static_cast<ALsizei>(voices), sources.data());
    for (std::size_t i = 0; i < voices; ++i) {
        alSourcei(sources[i], AL_BUFFER, static_cast<ALint>(buffers[i % buffers.size()]));
        alSourcei(sources[i], AL_LOOPING, AL_TRUE);
        alSourcei(sources[i], AL_SOURCE_RESAMPLER_SOFT, resampler);
        alSourcef(sources[i], AL_PITCH, 1.0594631F);
        alSourcef(sources[i], AL_GAIN, 0.1F);
        alSourcePlay(sources[i]);
    }
    const bool failed = resampler < 0 || alGetError() != AL_NO_ERROR;
    Samples out(2 * BlockFrames);
    const double result =
        failed ? 0 : voicesInRealTime(voices, [&] { render(device, out.data(), BlockFrames); });
    alcMakeContextCurrent(nullptr);
    alcDestroyContext(context);
    alcCloseDevice(device);
    return result;
}
#endif

void print(const char *name, double voices, double limit)
{
    std::printf("| %-58s | %9.0f | %5.2f |\n", name, voices, voices / limit);
    std::fflush(stdout);
}

} // namespace

int main()
{
    constexpr std::size_t Voices = 2000;
    const std::vector<Samples> few = makeSamples(8);
    const std::vector<Samples> many = makeSamples(500); // 96 MB: more than any cache
    BareLoop bare = addBarePortable;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2"))
        bare = addBareAvx2;
#endif
    const double limit = bareLoop(bare, Voices, few);
    std::printf("| %-58s | %9s | %5s |\n", "One core, 48 kHz, blocks of 1024 frames", "voices",
                "limit");
    std::printf("| --- | --: | --: |\n");
    print("bare loop, 8 sounds", limit, limit);
    print("bare loop without AVX2, 8 sounds", bareLoop(addBarePortable, Voices, few), limit);
    print("bare loop, 500 sounds of a second (memory bound)", bareLoop(bare, Voices, many), limit);
    const MixKernels::Table &best = MixKernels::best();
    print("our mixer, 8 sounds", ownMixer(best, Voices, few, 0), limit);
    print("our mixer, 500 sounds", ownMixer(best, Voices, many, 0), limit);
    print("our mixer, 500 sounds, 50,000 voices", ownMixer(best, 50000, many, 0), limit);
    print("our mixer, 500 sounds, every tenth voice fading", ownMixer(best, Voices, many, 10),
          limit);
    print("our mixer, 8 sounds, all voices fading", ownMixer(best, Voices, few, 100), limit);
    print("our mixer without AVX2, 8 sounds", ownMixer(MixKernels::portable(), Voices, few, 0),
          limit);
#ifdef HAVE_OPENAL
    print("OpenAL Soft, linear", openAl("Linear", 500, few), limit);
    print("OpenAL Soft, 11th order sinc", openAl("11th order Sinc", 500, few), limit);
    print("OpenAL Soft, 23rd order sinc", openAl("23rd order Sinc", 500, few), limit);
#endif
    std::printf("\nPreparing a note that was not heard before: %.0f seconds of sound per second.\n",
                preparation(few));
    return 0;
}
