#pragma once

#include "Sound/AudioGate.h"

#include <cstdint>
#include <string>

/// The machine's default sound device, through SDL. For one thread at a time; one object in a
/// process.
class SdlDevice {
public:
    explicit SdlDevice(AudioGate &gate);
    ~SdlDevice();
    SdlDevice(const SdlDevice &) = delete;
    SdlDevice &operator=(const SdlDevice &) = delete;

    /// Connects to the sound server, opens the device and lets it pull from the gate. On failure
    /// problem() says why, and everything is closed again, so that the next call finds a server
    /// that was started since.
    bool open();
    void close();
    bool isOpen() const { return m_id != 0; }

    /// Whether the device is still there; to be asked now and then while it is open.
    bool isPresent();

    const std::string &problem() const { return m_problem; }

private:
    bool connectServer();
    void disconnectServer();
    bool hasDevice();
    bool openDevice();
    bool fail(const std::string &problem);
    static void callback(void *gate, std::uint8_t *bytes, int size);

    AudioGate &m_gate;
    bool m_isConnected = false;
    std::uint32_t m_id = 0; // 0 for none
    std::string m_problem;
};
