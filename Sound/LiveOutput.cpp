#include "Sound/LiveOutput.h"

#include "model/MessageLog.h"

#include <chrono>
#include <system_error>

namespace {

using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

constexpr milliseconds LongestStart{180}; // with the clock's first block less than 200
constexpr milliseconds LongestClose{150};
constexpr milliseconds LogInterval{50};

} // namespace

bool LiveOutput::start(AudioSource &source)
{
    m_gate = std::make_shared<AudioGate>(source);
    m_keeper = std::make_shared<DeviceKeeper>(m_gate);
    m_clock = std::make_unique<SilentClock>(*m_gate);
    m_isStopping = false;
    m_lacksThreads = false;
    try {
        startThreads();
    } catch (const std::system_error &) {
        stop();
        m_lacksThreads = true;
    }
    return !m_lacksThreads;
}

void LiveOutput::startThreads()
{
    DeviceKeeper::start(m_keeper);
    m_logger = std::thread([this] { logOutages(); });
    awaitDecision();
    m_clock->start();
}

void LiveOutput::awaitDecision() const
{
    const SteadyClock::time_point end = SteadyClock::now() + LongestStart;
    while (!m_keeper->isDecided() && SteadyClock::now() < end)
        std::this_thread::sleep_for(milliseconds(1));
}

void LiveOutput::stop()
{
    if (m_gate == nullptr)
        return;
    m_gate->shut(); // whatever the threads still do, nothing is pulled any more
    m_clock.reset();
    stopLogging();
    m_keeper->stop(LongestClose);
    m_keeper.reset();
    m_gate.reset();
}

void LiveOutput::stopLogging()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
    if (m_logger.joinable())
        m_logger.join();
}

std::string LiveOutput::problem() const
{
    if (m_lacksThreads)
        return "The system has no more threads to play sound.";
    return m_keeper != nullptr ? m_keeper->problem() : std::string();
}

/// Here, as nothing else has the time to wait for the log.
void LiveOutput::logOutages()
{
    bool isTold = false;
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_changed.wait_for(lock, LogInterval, [this] { return m_isStopping; })) {
        const std::string problem = m_keeper->problem();
        if (!problem.empty() && !isTold)
            MessageLog::warning("Sound/LiveOutput", "void LiveOutput::logOutages()",
                                QString::fromStdString(problem));
        isTold = !problem.empty();
    }
}
