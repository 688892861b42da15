#pragma once

#include "Sound/AudioGate.h"
#include "Sound/AudioOutput.h"
#include "Sound/SilentClock.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

class SdlDevice;

/// The machine's sound device, with a silent clock that stands in whenever there is none.
///
/// A device that vanishes or stops pulling is replaced by the clock within 200 ms, and looked for
/// again every second: sound comes back by itself. What happened is logged once.
class LiveOutput final : public AudioOutput {
public:
    LiveOutput();
    ~LiveOutput() override;

    bool start(AudioSource &source) override;
    void stop() override;
    std::string problem() const override;

private:
    enum class Device { Open, Lost, Unusable };

    void run();
    void tryDevice(SdlDevice &device);
    void useDevice(SdlDevice &device);
    Device watchDevice(SdlDevice &device);
    static bool keepsTime(std::uint64_t frames, std::chrono::steady_clock::duration elapsed);
    /// False when the output is being stopped.
    bool waitFor(std::chrono::milliseconds time);
    void report(const std::string &problem);

    std::unique_ptr<AudioGate> m_gate; // from start() to stop(), as what follows
    std::unique_ptr<SilentClock> m_clock;
    std::thread m_keeper; // opens, watches and closes the device, which may each take a while
    bool m_isUnusable = false;

    mutable std::mutex m_mutex; // for the rest; never taken where sound is made
    std::condition_variable m_changed;
    bool m_isStopping = false;
    std::string m_problem;
};
