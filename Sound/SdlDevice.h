#pragma once

#include "Sound/AudioGate.h"

#include <cstdint>
#include <string>

/// The machine's default sound device, through SDL.
///
/// Each object is for one thread; those of several threads take turns. open() and close() are
/// stuck for as long as a sound server does not answer.
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

    /// Whether the open device is still there. Waits for nothing.
    bool isPresent() const;

    /// Never opens a device again that comes from the present one's kind of server.
    void distrust();

    const std::string &problem() const { return m_problem; }

private:
    bool connectServer();
    void disconnectServer();
    bool hasDevice() const;
    bool openDevice();
    bool fail(const std::string &problem);
    static void callback(void *gate, std::uint8_t *bytes, int size);

    AudioGate &m_gate;
    bool m_isConnected = false;
    std::uint32_t m_id = 0; // 0 for none
    std::string m_distrusted;
    std::string m_problem;
};
