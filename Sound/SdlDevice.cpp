#include "Sound/SdlDevice.h"

#include <SDL.h>

#include <mutex>

namespace {

constexpr std::size_t FrameBytes = AudioOutput::Channels * sizeof(float);

/// For what opens and closes: SDL counts its users, but does not keep them apart.
std::mutex &sdlMutex()
{
    static std::mutex mutex;
    return mutex;
}

void setHint(const char *name, const char *value)
{
    SDL_SetHintWithPriority(name, value, SDL_HINT_OVERRIDE);
}

void ignoreAlsa(const char *, int, const char *, int, const char *, ...) { }

/// ALSA would write half a page to standard error each time that we find no sound card.
void silenceAlsa()
{
    using Handler = void (*)(const char *, int, const char *, int, const char *, ...);
    using SetHandler = int (*)(Handler);
    void *const library = SDL_LoadObject("libasound.so.2"); // kept, as SDL does
    void *const function =
        library != nullptr ? SDL_LoadFunction(library, "snd_lib_error_set_handler") : nullptr;
    if (function != nullptr)
        reinterpret_cast<SetHandler>(function)(ignoreAlsa);
}

void prepareSdl()
{
    SDL_SetMainReady();
    setHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1"); // a signal is the program's own affair
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Quillmoor Composer");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "Music");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE, "music");
    silenceAlsa();
}

/// Nobody would fetch them.
void refuseEvents()
{
    SDL_EventState(SDL_AUDIODEVICEADDED, SDL_IGNORE);
    SDL_EventState(SDL_AUDIODEVICEREMOVED, SDL_IGNORE);
}

std::string currentDriver()
{
    const char *const driver = SDL_GetCurrentAudioDriver();
    return driver != nullptr ? driver : "";
}

/// These drivers of SDL throw the sound away, and keep no time in doing so.
bool isStandIn(const std::string &driver)
{
    return driver.empty() || driver == "dummy" || driver == "disk";
}

} // namespace

SdlDevice::SdlDevice(AudioGate &gate)
    : m_gate(gate)
{
}

SdlDevice::~SdlDevice()
{
    close();
    SDL_TLSCleanup(); // what SDL keeps for a thread that is not its own
}

bool SdlDevice::open()
{
    const std::lock_guard<std::mutex> lock(sdlMutex());
    if (!connectServer() || !openDevice()) {
        disconnectServer();
        return false;
    }
    m_problem.clear();
    m_gate.open();
    SDL_PauseAudioDevice(m_id, 0);
    return true;
}

bool SdlDevice::connectServer()
{
    static std::once_flag isPrepared;
    std::call_once(isPrepared, prepareSdl);
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0)
        return fail("No sound server was found.");
    m_isConnected = true;
    refuseEvents();
    return hasDevice() || fail("No sound device was found.");
}

bool SdlDevice::hasDevice() const
{
    const std::string driver = currentDriver();
    return !isStandIn(driver) && driver != m_distrusted && SDL_GetNumAudioDevices(0) != 0;
}

bool SdlDevice::openDevice()
{
    SDL_AudioSpec wanted = {};
    wanted.freq = AudioOutput::Rate;
    wanted.format = AUDIO_F32SYS;
    wanted.channels = AudioOutput::Channels;
    wanted.samples = AudioOutput::BlockFrames;
    wanted.callback = callback;
    wanted.userdata = &m_gate;
    m_id = SDL_OpenAudioDevice(nullptr, 0, &wanted, nullptr, 0);
    return m_id != 0
        || fail(std::string("The sound device could not be opened: ") + SDL_GetError());
}

bool SdlDevice::fail(const std::string &problem)
{
    m_problem = problem;
    return false;
}

void SdlDevice::close()
{
    m_gate.close();
    const std::lock_guard<std::mutex> lock(sdlMutex());
    if (m_id != 0)
        SDL_CloseAudioDevice(m_id);
    m_id = 0;
    disconnectServer();
}

void SdlDevice::disconnectServer()
{
    if (m_isConnected)
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    m_isConnected = false;
}

bool SdlDevice::isPresent() const
{
    return SDL_GetAudioDeviceStatus(m_id) != SDL_AUDIO_STOPPED;
}

void SdlDevice::distrust()
{
    m_distrusted = currentDriver();
}

void SdlDevice::callback(void *gate, std::uint8_t *bytes, int size)
{
    const std::size_t frames = static_cast<std::size_t>(size) / FrameBytes;
    static_cast<AudioGate *>(gate)->fillForDevice(reinterpret_cast<float *>(bytes), frames);
}
