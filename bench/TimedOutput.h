#pragma once

#include "Sound/AudioOutput.h"

#include <array>
#include <atomic>
#include <memory>
#include <thread>

/// What a TimedOutput has seen. Outlives the output.
struct OutputDelays {
    std::atomic<double> longest{0.0}; ///< seconds
    std::atomic<unsigned> gaps{0};    ///< blocks that were so late that the device ran empty
};

/// A device that costs nothing and that nobody hears. It pulls a block whenever one is due, on a
/// thread that is preferred as a device's is, and sees how late each is. It holds two blocks: one
/// that is later than that makes a gap, and time goes on from there.
class TimedOutput final : public AudioOutput {
public:
    explicit TimedOutput(std::shared_ptr<OutputDelays> delays)
        : m_delays(std::move(delays))
    {
    }
    ~TimedOutput() override { end(); }
    TimedOutput(const TimedOutput &) = delete;
    TimedOutput &operator=(const TimedOutput &) = delete;

    bool start(AudioSource &source) override;
    void stop() override { end(); }
    std::string problem() const override { return {}; }

private:
    void run(AudioSource &source);
    bool isGap(double delay);
    void end();

    std::shared_ptr<OutputDelays> m_delays;
    std::atomic<bool> m_isStopping{false};
    std::array<float, BlockFrames * Channels> m_block{};
    std::thread m_thread;
};
