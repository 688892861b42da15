#include "Sound/DeviceKeeper.h"

#include "Sound/SdlDevice.h"

#include <thread>

namespace {

using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

constexpr milliseconds RetryInterval{500};
constexpr milliseconds WatchInterval{20};
constexpr milliseconds LongestAnswer{1000};
// Then the device is opened anew. An idle null sink of PulseAudio first pauses for 2 s.
constexpr milliseconds LongestStandstill{3000};

} // namespace

void DeviceKeeper::start(const std::shared_ptr<DeviceKeeper> &keeper)
{
    keeper->m_isGone = false;
    std::thread([keeper] { keeper->run(); }).detach();
}

void DeviceKeeper::stop(milliseconds patience)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_isStopping = true;
    m_changed.notify_all();
    m_changed.wait_for(lock, patience, [this] { return m_isGone; });
}

bool DeviceKeeper::isDecided() const
{
    return m_gate->isDevicePulling() || !problem().empty();
}

std::string DeviceKeeper::problem() const
{
    if (m_gate->isDevicePulling())
        return {};
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_asked && SteadyClock::now() - *m_asked > LongestAnswer)
        return "The sound server does not answer.";
    return m_problem;
}

void DeviceKeeper::run()
{
    {
        SdlDevice device(*m_gate);
        do
            tryDevice(device);
        while (waitFor(RetryInterval));
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isGone = true;
    m_changed.notify_all();
}

void DeviceKeeper::tryDevice(SdlDevice &device)
{
    bool isOpen = false;
    ask([&] { isOpen = device.open(); });
    if (!isOpen) {
        setProblem(device.problem());
        return;
    }
    useDevice(device);
    ask([&] { device.close(); });
}

void DeviceKeeper::useDevice(SdlDevice &device)
{
    TimePoint lastSeen = SteadyClock::now();
    while (waitFor(WatchInterval) && isWorthKeeping(device, lastSeen)) { }
}

bool DeviceKeeper::isWorthKeeping(SdlDevice &device, TimePoint &lastSeen)
{
    if (!device.isPresent()) {
        setProblem("The sound device was lost.");
        return false;
    }
    if (m_gate->isDeviceRacing()) {
        setProblem("The sound device does not keep time.");
        device.distrust();
        return false;
    }
    const TimePoint now = SteadyClock::now();
    if (m_gate->isDevicePulling()) {
        setProblem(std::string());
        lastSeen = now;
    } else if (now - lastSeen > AudioGate::Patience) {
        setProblem("The sound device has stopped.");
    }
    return now - lastSeen <= LongestStandstill;
}

/// Whatever may be stuck in the server.
template <typename Work> void DeviceKeeper::ask(const Work &work)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_asked = SteadyClock::now();
    }
    work();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_asked.reset();
}

bool DeviceKeeper::waitFor(milliseconds time)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_changed.wait_for(lock, time, [this] { return m_isStopping; });
}

void DeviceKeeper::setProblem(const std::string &problem)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_problem = problem;
}
