#pragma once

#include "Sound/AudioGate.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

class SdlDevice;

/// Has the sound device pull from a gate whenever there is one: looks for it, watches it and
/// looks for it again, on a thread of its own.
///
/// That thread may be stuck for long where a sound server does not answer, so nobody waits for
/// it: it shares this object and the gate with its owner, and goes when it can.
class DeviceKeeper {
public:
    explicit DeviceKeeper(std::shared_ptr<AudioGate> gate)
        : m_gate(std::move(gate))
    {
    }

    /// Starts the thread. Throws std::system_error where there is none.
    static void start(const std::shared_ptr<DeviceKeeper> &keeper);
    /// Sends the thread off, and gives it so much time to close the device.
    void stop(std::chrono::milliseconds patience);

    /// Whether a device pulls, or there is a reason that none does.
    bool isDecided() const;
    /// The reason why no device pulls, as a sentence for the user. Empty while one does, and as
    /// long as it is not decided.
    std::string problem() const;

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    void run();
    void tryDevice(SdlDevice &device);
    void useDevice(SdlDevice &device);
    bool isWorthKeeping(SdlDevice &device, TimePoint &lastSeen);
    template <typename Work> void ask(const Work &work);
    /// False when the thread shall go.
    bool waitFor(std::chrono::milliseconds time);
    void setProblem(const std::string &problem);

    const std::shared_ptr<AudioGate> m_gate;

    mutable std::mutex m_mutex; // for the rest; never held while the server is asked
    std::condition_variable m_changed;
    bool m_isStopping = false;
    bool m_isGone = true;
    std::optional<TimePoint> m_asked; // when the server was, while it has not answered
    std::string m_problem;
};
