#pragma once

#include "Sound/AudioOutput.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// The output of a live system whose time passes when the test says so: in pull(), on the test's
/// thread, or on a thread of its own that pulls as fast as it can. It must outlive the system.
class VirtualClock {
public:
    ~VirtualClock();

    /// Outputs that play by this clock, one at a time.
    AudioOutputFactory outputs();
    /// Makes the outputs' start() fail from now on.
    void refuse() { m_refuses = true; }
    /// What the outputs give as their problem.
    void setProblem(const std::string &problem) { m_problem = problem; }

    /// Between an output's start() and its stop().
    bool isRunning() const;
    /// The next frames as pairs of left and right; nothing while not running.
    std::vector<float> pull(std::size_t frames);

    /// Begins to pull blocks of this size on another thread, whenever an output runs.
    void runFreely(std::size_t blockFrames);
    /// Blocks that thread has pulled.
    std::size_t blocks() const { return m_blocks; }

private:
    class Output;

    bool start(AudioSource &source);
    void stop();
    void pullOnAndOn(std::size_t blockFrames);

    mutable std::mutex m_mutex; // for the source
    AudioSource *m_source = nullptr;
    std::string m_problem;
    bool m_refuses = false;
    std::atomic<std::size_t> m_blocks{0};
    std::atomic<bool> m_isEnding{false};
    std::atomic<int> m_waiting{0}; // threads that want the mutex more than the pulling one does
    std::thread m_thread;
};
