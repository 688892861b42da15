#pragma once

#include "Sound/AudioGate.h"
#include "Sound/AudioOutput.h"
#include "Sound/DeviceKeeper.h"
#include "Sound/SilentClock.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

/// The machine's sound device, with a silent clock that stands in whenever there is none.
///
/// A device that vanishes or stops pulling is replaced by the clock within 200 ms (one that stops
/// without a word and always came less often than that: within one and a half of its pauses), and
/// looked for again: sound comes back by itself, within a second. The beginning of each such
/// outage is logged.
///
/// start() waits for the first block of the device, up to 180 ms, so that what is played at once
/// is heard from its beginning. stop() takes some tens of milliseconds, and up to 200 where the
/// sound server hangs.
class LiveOutput final : public AudioOutput {
public:
    LiveOutput() = default;
    ~LiveOutput() override { stop(); }
    LiveOutput(const LiveOutput &) = delete;
    LiveOutput &operator=(const LiveOutput &) = delete;

    bool start(AudioSource &source) override;
    void stop() override;
    std::string problem() const override;

private:
    void startThreads();
    void awaitDecision() const;
    void stopLogging();
    void logOutages();

    // From start() to stop().
    std::shared_ptr<AudioGate> m_gate;
    std::shared_ptr<DeviceKeeper> m_keeper;
    std::unique_ptr<SilentClock> m_clock;
    std::thread m_logger;
    bool m_lacksThreads = false;

    std::mutex m_mutex; // for m_isStopping; never taken where sound is made
    std::condition_variable m_changed;
    bool m_isStopping = false;
};
