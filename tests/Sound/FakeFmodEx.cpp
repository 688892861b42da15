// A stand-in for the installed sound library: the C entry points that the program calls, played
// by bookkeeping. It makes no sound; it writes down every call (the format is described in
// tests/support/FakeFmod.h) and keeps a clock. Its signatures are written with plain C types on
// purpose, so that a wrong type on the caller's side shows in the recorded values.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace {

constexpr int errorInvalidHandle = 36;
constexpr int errorOutputInit = 60;
constexpr int outputWaveWriterNrt = 5;
constexpr unsigned int modeOpenMemory = 0x800;
constexpr std::uint64_t blockFrames = 1024;

enum class Kind { System, Sound, Group, Channel };

struct Object {
    Kind kind = Kind::System;
    int number = 0;
    const void *system = nullptr;
    bool alive = true;
    float frequency = 0.0F;
    int output = 0;
    std::uint64_t clock = 0;
    std::uint64_t framesWritten = 0;
    std::string waveFile;
};

struct Failure {
    int callsBefore = 0;
    int result = 0;
};

struct State {
    std::mutex mutex;
    std::vector<std::string> log;
    std::map<std::string, Failure> failures;
    std::map<const void *, std::unique_ptr<Object>> objects;
    std::map<Kind, int> counters;
    int outputRate = 48000;
    float soundFrequency = 44100.0F;
    std::uint64_t startClock = 0;
};

State &state()
{
    static State instance;
    return instance;
}

const char *kindName(Kind kind)
{
    switch (kind) {
    case Kind::System:
        return "system";
    case Kind::Sound:
        return "sound";
    case Kind::Group:
        return "group";
    case Kind::Channel:
        return "channel";
    }
    return "";
}

std::string objectName(const Object &object)
{
    return kindName(object.kind) + std::to_string(object.number);
}

Object *findObject(const void *handle, Kind kind)
{
    const auto found = state().objects.find(handle);
    const bool known = found != state().objects.end() && found->second->kind == kind;
    return known && found->second->alive ? found->second.get() : nullptr;
}

Object *makeObject(Kind kind, const void *system)
{
    auto object = std::make_unique<Object>();
    object->kind = kind;
    object->number = ++state().counters[kind];
    object->system = system;
    Object *const handle = object.get();
    state().objects[handle] = std::move(object);
    return handle;
}

/// The lowest handle out of use before a new one: a library with a fixed number of channels hands
/// the same ones out again and again.
Object *makeChannel(const void *system)
{
    Object *lowest = nullptr;
    for (const auto &[handle, object] : state().objects) {
        const bool free =
            object->kind == Kind::Channel && !object->alive && object->system == system;
        if (free && (!lowest || object->number < lowest->number))
            lowest = object.get();
    }
    if (!lowest)
        return makeObject(Kind::Channel, system);
    lowest->alive = true;
    return lowest;
}

template <typename Number> std::string formatted(const char *format, Number number)
{
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

std::uint64_t clockStep()
{
    const char *const step = std::getenv("FAKE_FMOD_STEP");
    return step ? std::strtoull(step, nullptr, 10) : 0;
}

void appendToFile(const std::string &line)
{
    if (const char *fileName = std::getenv("FAKE_FMOD_LOG"))
        std::ofstream(fileName, std::ios::app) << line << '\n';
}

/// One call being served: holds the lock, gathers the line and writes it down at the end.
class Call {
public:
    explicit Call(const char *function)
        : m_lock(state().mutex)
        , m_function(function)
        , m_result(plannedResult())
    {
    }
    ~Call()
    {
        std::string line = m_function + "(" + m_arguments + ")";
        if (m_result != 0)
            line += " = " + std::to_string(m_result);
        else if (!m_answer.empty())
            line += " -> " + m_answer;
        state().log.push_back(line);
        appendToFile(line);
    }
    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

    Object *object(const void *handle, Kind kind)
    {
        Object *const found = findObject(handle, kind);
        argument(found ? objectName(*found) : handle ? "unknown" : "null");
        if (!found)
            fail(errorInvalidHandle);
        return found;
    }
    void argument(const std::string &text)
    {
        m_arguments += (m_arguments.empty() ? "" : ", ") + text;
    }
    void number(int value) { argument(std::to_string(value)); }
    void unsignedNumber(unsigned int value) { argument(std::to_string(value)); }
    void real(float value) { argument(formatted("%.9g", static_cast<double>(value))); }
    void text(const char *value)
    {
        argument(value ? '"' + std::string(value) + '"' : std::string("null"));
    }
    void out(const void *pointer) { argument(pointer ? "out" : "null"); }

    void answer(const std::string &text) { m_answer = text; }
    /// Hands a new object out, or nothing where that is planned.
    void answer(void **out, Object *object)
    {
        *out = m_handsNothingOut ? nullptr : object;
        m_answer = objectName(*object);
    }
    /// A failing call leaves a pointer behind that nobody may use.
    void spoil(void **out)
    {
        static char nothing;
        *out = &nothing;
    }

    void fail(int result)
    {
        if (m_result == 0)
            m_result = result;
    }
    bool ok() const { return m_result == 0; }
    int result() const { return m_result; }

private:
    int plannedResult()
    {
        const auto planned = state().failures.find(m_function);
        if (planned == state().failures.end() || --planned->second.callsBefore > 0)
            return 0;
        const int result = planned->second.result;
        state().failures.erase(planned);
        m_handsNothingOut = result == 0;
        return result;
    }

    std::lock_guard<std::mutex> m_lock;
    std::string m_function;
    std::string m_arguments;
    std::string m_answer;
    bool m_handsNothingOut = false;
    int m_result;
};

void appendLittleEndian(std::string &bytes, std::uint64_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}

/// 16-bit stereo silence of the system's length.
void completeWaveFile(const Object &system)
{
    const std::uint64_t dataSize = system.framesWritten * 4;
    std::string bytes = "RIFF";
    appendLittleEndian(bytes, 36 + dataSize, 4);
    bytes += "WAVEfmt ";
    appendLittleEndian(bytes, 16, 4);
    appendLittleEndian(bytes, 1, 2);
    appendLittleEndian(bytes, 2, 2);
    appendLittleEndian(bytes, static_cast<std::uint64_t>(state().outputRate), 4);
    appendLittleEndian(bytes, static_cast<std::uint64_t>(state().outputRate) * 4, 4);
    appendLittleEndian(bytes, 4, 2);
    appendLittleEndian(bytes, 16, 2);
    bytes += "data";
    appendLittleEndian(bytes, dataSize, 4);
    bytes.resize(bytes.size() + dataSize);
    std::ofstream(system.waveFile, std::ios::binary) << bytes;
}

void beginWaveFile(Call &call, Object &system, const char *fileName)
{
    if (!fileName || !std::ofstream(fileName, std::ios::binary))
        call.fail(errorOutputInit);
    else
        system.waveFile = fileName;
}

void releaseAllOf(const void *system)
{
    for (const auto &[handle, object] : state().objects) {
        if (object->system == system)
            object->alive = false;
    }
}

std::string hexBytes(const char *data, std::size_t length)
{
    std::string text;
    for (std::size_t i = 0; i < std::min<std::size_t>(length, 8); ++i)
        text += formatted("%02x", static_cast<unsigned int>(static_cast<unsigned char>(data[i])));
    return text;
}

/// The record as the caller must lay it out: two integers, then only zeros up to 216 bytes.
struct RawSoundInfo {
    int size;
    unsigned int length;
    unsigned char rest[208];
};
static_assert(sizeof(RawSoundInfo) == 216);

std::string describedInfo(const void *info)
{
    if (!info)
        return "null";
    const auto *raw = static_cast<const RawSoundInfo *>(info);
    const bool zero = std::all_of(std::begin(raw->rest), std::end(raw->rest),
                                  [](unsigned char byte) { return byte == 0; });
    return "{cbsize=" + std::to_string(raw->size) + ", length=" + std::to_string(raw->length)
        + ", rest=" + (zero ? "0" : "garbage") + "}";
}

std::string describedSource(const char *nameOrData, unsigned int mode, const void *info)
{
    if (!nameOrData)
        return "null";
    if (!(mode & modeOpenMemory))
        return '"' + std::string(nameOrData) + '"';
    return info ? "data:" + hexBytes(nameOrData, static_cast<const RawSoundInfo *>(info)->length)
                : "data";
}

/// A call that takes one object out of use.
void endingCall(Call &call, const void *handle, Kind kind)
{
    if (Object *object = call.object(handle, kind); object && call.ok())
        object->alive = false;
}

} // namespace

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

FAKE_EXPORT int FMOD_System_Create(void **system)
{
    Call call("FMOD_System_Create");
    if (call.ok())
        call.answer(system, makeObject(Kind::System, nullptr));
    else
        call.spoil(system);
    return call.result();
}

FAKE_EXPORT int FMOD_System_Release(void *system)
{
    Call call("FMOD_System_Release");
    Object *const object = call.object(system, Kind::System);
    if (object && call.ok()) {
        object->alive = false;
        releaseAllOf(system);
        if (!object->waveFile.empty())
            completeWaveFile(*object);
    }
    return call.result();
}

FAKE_EXPORT int FMOD_System_SetOutput(void *system, int output)
{
    Call call("FMOD_System_SetOutput");
    Object *const object = call.object(system, Kind::System);
    call.number(output);
    if (object && call.ok())
        object->output = output;
    return call.result();
}

FAKE_EXPORT int FMOD_System_SetSoftwareChannels(void *system, int channels)
{
    Call call("FMOD_System_SetSoftwareChannels");
    call.object(system, Kind::System);
    call.number(channels);
    return call.result();
}

FAKE_EXPORT int FMOD_System_GetSoftwareFormat(void *system, int *rate, int *format, int *outputs,
                                              int *inputs, int *resampler, int *bits)
{
    Call call("FMOD_System_GetSoftwareFormat");
    call.object(system, Kind::System);
    const int values[] = {state().outputRate, 2, 2, 6, 1, 16};
    int *const pointers[] = {rate, format, outputs, inputs, resampler, bits};
    for (std::size_t i = 0; i < 6; ++i) {
        call.out(pointers[i]);
        if (pointers[i] && call.ok())
            *pointers[i] = values[i];
    }
    call.answer(std::to_string(state().outputRate));
    return call.result();
}

FAKE_EXPORT int FMOD_System_Init(void *system, int channels, unsigned int flags, void *driverData)
{
    Call call("FMOD_System_Init");
    Object *const object = call.object(system, Kind::System);
    call.number(channels);
    call.unsignedNumber(flags);
    const bool toFile = object && object->output == outputWaveWriterNrt;
    const auto *fileName = toFile ? static_cast<const char *>(driverData) : nullptr;
    if (toFile || !driverData)
        call.text(fileName);
    else
        call.argument("pointer");
    if (object && call.ok()) {
        object->clock = state().startClock;
        if (toFile)
            beginWaveFile(call, *object, fileName);
    }
    return call.result();
}

FAKE_EXPORT int FMOD_System_Update(void *system)
{
    Call call("FMOD_System_Update");
    Object *const object = call.object(system, Kind::System);
    if (object && call.ok() && object->output == outputWaveWriterNrt) {
        object->clock += blockFrames;
        object->framesWritten += blockFrames;
    }
    return call.result();
}

FAKE_EXPORT int FMOD_System_GetDSPClock(void *system, unsigned int *hi, unsigned int *lo)
{
    Call call("FMOD_System_GetDSPClock");
    Object *const object = call.object(system, Kind::System);
    if (object && call.ok()) {
        object->clock += clockStep();
        *hi = static_cast<unsigned int>(object->clock >> 32);
        *lo = static_cast<unsigned int>(object->clock);
        call.answer(std::to_string(*hi) + " " + std::to_string(*lo));
    }
    return call.result();
}

FAKE_EXPORT int FMOD_System_CreateSound(void *system, const char *nameOrData, unsigned int mode,
                                        const void *info, void **sound)
{
    Call call("FMOD_System_CreateSound");
    call.object(system, Kind::System);
    call.argument(describedSource(nameOrData, mode, info));
    call.argument(formatted("0x%x", mode));
    call.argument(describedInfo(info));
    if (!call.ok()) {
        call.spoil(sound);
        return call.result();
    }
    Object *const object = makeObject(Kind::Sound, system);
    object->frequency = state().soundFrequency;
    call.answer(sound, object);
    return call.result();
}

FAKE_EXPORT int FMOD_System_CreateChannelGroup(void *system, const char *name, void **group)
{
    Call call("FMOD_System_CreateChannelGroup");
    call.object(system, Kind::System);
    call.text(name);
    if (call.ok())
        call.answer(group, makeObject(Kind::Group, system));
    else
        call.spoil(group);
    return call.result();
}

FAKE_EXPORT int FMOD_System_PlaySound(void *system, int channelId, void *sound, int paused,
                                      void **channel)
{
    Call call("FMOD_System_PlaySound");
    call.object(system, Kind::System);
    call.number(channelId);
    const Object *const source = call.object(sound, Kind::Sound);
    call.number(paused);
    if (!call.ok()) {
        call.spoil(channel);
        return call.result();
    }
    Object *const object = makeChannel(system);
    object->frequency = source->frequency;
    call.answer(channel, object);
    return call.result();
}

FAKE_EXPORT int FMOD_Sound_Release(void *sound)
{
    Call call("FMOD_Sound_Release");
    endingCall(call, sound, Kind::Sound);
    return call.result();
}

FAKE_EXPORT int FMOD_ChannelGroup_Release(void *group)
{
    Call call("FMOD_ChannelGroup_Release");
    endingCall(call, group, Kind::Group);
    return call.result();
}

FAKE_EXPORT int FMOD_Channel_Stop(void *channel)
{
    Call call("FMOD_Channel_Stop");
    endingCall(call, channel, Kind::Channel);
    return call.result();
}

FAKE_EXPORT int FMOD_Channel_SetPaused(void *channel, int paused)
{
    Call call("FMOD_Channel_SetPaused");
    call.object(channel, Kind::Channel);
    call.number(paused);
    return call.result();
}

FAKE_EXPORT int FMOD_Channel_SetVolume(void *channel, float volume)
{
    Call call("FMOD_Channel_SetVolume");
    call.object(channel, Kind::Channel);
    call.real(volume);
    return call.result();
}

FAKE_EXPORT int FMOD_Channel_SetFrequency(void *channel, float frequency)
{
    Call call("FMOD_Channel_SetFrequency");
    Object *const object = call.object(channel, Kind::Channel);
    call.real(frequency);
    if (object && call.ok())
        object->frequency = frequency;
    return call.result();
}

FAKE_EXPORT int FMOD_Channel_GetFrequency(void *channel, float *frequency)
{
    Call call("FMOD_Channel_GetFrequency");
    const Object *const object = call.object(channel, Kind::Channel);
    if (object && call.ok()) {
        *frequency = object->frequency;
        call.answer(formatted("%.9g", static_cast<double>(*frequency)));
    }
    return call.result();
}

FAKE_EXPORT int FMOD_Channel_SetPan(void *channel, float pan)
{
    Call call("FMOD_Channel_SetPan");
    call.object(channel, Kind::Channel);
    call.real(pan);
    return call.result();
}

// One of the two builds of this file lacks an entry point, as an old version of a library might.
#ifndef FAKE_FMOD_INCOMPLETE
FAKE_EXPORT int FMOD_Channel_SetDelay(void *channel, int type, unsigned int hi, unsigned int lo)
{
    Call call("FMOD_Channel_SetDelay");
    call.object(channel, Kind::Channel);
    call.number(type);
    call.unsignedNumber(hi);
    call.unsignedNumber(lo);
    return call.result();
}
#endif

FAKE_EXPORT int FMOD_Channel_SetChannelGroup(void *channel, void *group)
{
    Call call("FMOD_Channel_SetChannelGroup");
    call.object(channel, Kind::Channel);
    call.object(group, Kind::Group);
    return call.result();
}

FAKE_EXPORT void fakefmodReset()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().log.clear();
    state().failures.clear();
    state().objects.clear();
    state().counters.clear();
    state().outputRate = 48000;
    state().soundFrequency = 44100.0F;
    state().startClock = 0;
}

FAKE_EXPORT void fakefmodReadLog(void (*take)(void *context, const char *line), void *context)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    for (const std::string &line : state().log)
        take(context, line.c_str());
}

FAKE_EXPORT void fakefmodClearLog()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().log.clear();
}

FAKE_EXPORT void fakefmodFail(const char *function, int nth, int result)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().failures[function] = {nth, result};
}

FAKE_EXPORT void fakefmodSetOutputRate(int rate)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().outputRate = rate;
}

FAKE_EXPORT void fakefmodSetSoundFrequency(float frequency)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().soundFrequency = frequency;
}

FAKE_EXPORT void fakefmodSetStartClock(std::uint64_t clock)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().startClock = clock;
}

FAKE_EXPORT void fakefmodSetClock(std::uint64_t clock)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    for (const auto &[handle, object] : state().objects) {
        if (object->kind == Kind::System)
            object->clock = clock;
    }
}

FAKE_EXPORT void fakefmodEndChannels()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    for (const auto &[handle, object] : state().objects) {
        if (object->kind == Kind::Channel)
            object->alive = false;
    }
}
