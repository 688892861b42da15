#include "Sound/LiveOutput.h"

#include "Sound/SdlDevice.h"
#include "model/MessageLog.h"

#include <system_error>

namespace {

using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

constexpr milliseconds RetryInterval{1000};
constexpr milliseconds WatchInterval{20};

} // namespace

LiveOutput::LiveOutput() = default;

LiveOutput::~LiveOutput()
{
    stop();
}

bool LiveOutput::start(AudioSource &source)
{
    m_gate = std::make_unique<AudioGate>(source);
    m_clock = std::make_unique<SilentClock>(*m_gate);
    m_isStopping = false;
    m_isUnusable = false;
    m_problem.clear(); // not known yet
    if (!m_clock->start())
        return false;
    try {
        m_keeper = std::thread([this] { run(); });
    } catch (const std::system_error &) {
        report("There is no thread for the sound device.");
    }
    return true;
}

void LiveOutput::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
    if (m_keeper.joinable())
        m_keeper.join();
    m_clock.reset();
    m_gate.reset();
}

std::string LiveOutput::problem() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_problem;
}

void LiveOutput::run()
{
    SdlDevice device(*m_gate);
    do {
        if (!m_isUnusable)
            tryDevice(device);
    } while (waitFor(RetryInterval));
}

void LiveOutput::tryDevice(SdlDevice &device)
{
    if (!device.open()) {
        report(device.problem());
        return;
    }
    useDevice(device);
    device.close();
}

void LiveOutput::useDevice(SdlDevice &device)
{
    switch (watchDevice(device)) {
    case Device::Open:
        return;
    case Device::Lost:
        report("The sound device was lost.");
        return;
    case Device::Unusable:
        m_isUnusable = true; // and would be the next time
        report("The sound device does not keep time.");
        return;
    }
}

/// Until the device is of no use any more, or the output is being stopped (Open).
LiveOutput::Device LiveOutput::watchDevice(SdlDevice &device)
{
    const SteadyClock::time_point start = SteadyClock::now();
    while (waitFor(WatchInterval)) {
        if (!device.isPresent())
            return Device::Lost;
        if (!keepsTime(m_gate->deviceFrames(), SteadyClock::now() - start))
            return Device::Unusable;
        if (m_gate->isDevicePulling())
            report(std::string());
        else if (m_gate->deviceFrames() > 0)
            report("The sound device has stopped.");
    }
    return Device::Open;
}

/// A device that merely pretends pulls as fast as it can. A real one fills its buffers first.
bool LiveOutput::keepsTime(std::uint64_t frames, SteadyClock::duration elapsed)
{
    constexpr double Head = 3.0; // seconds
    constexpr double Tolerance = 1.2;
    const double seconds = std::chrono::duration<double>(elapsed).count();
    return static_cast<double>(frames) <= (seconds * Tolerance + Head) * Rate;
}

bool LiveOutput::waitFor(milliseconds time)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_changed.wait_for(lock, time, [this] { return m_isStopping; });
}

void LiveOutput::report(const std::string &problem)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_problem == problem)
            return;
        m_problem = problem;
    }
    if (!problem.empty())
        MessageLog::warning("Sound/LiveOutput", "void LiveOutput::report(const std::string &)",
                            QString::fromStdString(problem));
}
