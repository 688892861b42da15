#include "Sound/SdlDevice.h"

#include <SDL.h>

#include <cstring>

namespace {

constexpr std::size_t FrameBytes = AudioOutput::Channels * sizeof(float);

/// These drivers of SDL throw the sound away, and keep no time in doing so.
bool isStandIn(const char *driver)
{
    return driver == nullptr || std::strcmp(driver, "dummy") == 0
        || std::strcmp(driver, "disk") == 0;
}

} // namespace

SdlDevice::SdlDevice(AudioGate &gate)
    : m_gate(gate)
{
}

SdlDevice::~SdlDevice()
{
    close();
}

bool SdlDevice::open()
{
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
    SDL_SetMainReady();
    // A signal is the program's own affair.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Quillmoor Composer");
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0)
        return fail("No sound server was found.");
    m_isConnected = true;
    return hasDevice() || fail("No sound device was found.");
}

bool SdlDevice::hasDevice()
{
    return !isStandIn(SDL_GetCurrentAudioDriver()) && SDL_GetNumAudioDevices(0) != 0;
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

bool SdlDevice::isPresent()
{
    SDL_Event event;
    SDL_PumpEvents();
    while (SDL_PeepEvents(&event, 1, SDL_GETEVENT, SDL_AUDIODEVICEADDED, SDL_AUDIODEVICEREMOVED)
           > 0) {
        if (event.type == SDL_AUDIODEVICEREMOVED && event.adevice.iscapture == 0
            && event.adevice.which == m_id)
            return false;
    }
    return SDL_GetAudioDeviceStatus(m_id) != SDL_AUDIO_STOPPED;
}

void SdlDevice::callback(void *gate, std::uint8_t *bytes, int size)
{
    const std::size_t frames = static_cast<std::size_t>(size) / FrameBytes;
    static_cast<AudioGate *>(gate)->fillForDevice(reinterpret_cast<float *>(bytes), frames);
}
