#include "support/VirtualClock.h"

#include <utility>

class VirtualClock::Output final : public AudioOutput {
public:
    explicit Output(VirtualClock &clock)
        : m_clock(clock)
    {
    }
    ~Output() override { m_clock.stop(); }

    bool start(AudioSource &source) override { return m_clock.start(source); }
    void stop() override { m_clock.stop(); }
    std::string problem() const override { return m_clock.m_problem; }

private:
    VirtualClock &m_clock;
};

VirtualClock::~VirtualClock()
{
    m_isEnding = true;
    if (m_thread.joinable())
        m_thread.join();
}

AudioOutputFactory VirtualClock::outputs()
{
    return [this] { return std::make_unique<Output>(*this); };
}

bool VirtualClock::isRunning() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_source != nullptr;
}

std::vector<float> VirtualClock::pull(std::size_t frames)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    // Not silent before: the source writes, it does not add.
    std::vector<float> samples(m_source != nullptr ? AudioOutput::Channels * frames : 0, 99.0F);
    if (m_source != nullptr)
        m_source->fill(samples.data(), frames);
    return samples;
}

void VirtualClock::runFreely(std::size_t blockFrames)
{
    m_thread = std::thread([this, blockFrames] { pullOnAndOn(blockFrames); });
}

bool VirtualClock::start(AudioSource &source)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_refuses)
        m_source = &source;
    return !m_refuses;
}

void VirtualClock::stop()
{
    ++m_waiting;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_source = nullptr;
    --m_waiting;
}

void VirtualClock::pullOnAndOn(std::size_t blockFrames)
{
    while (!m_isEnding) {
        if (m_waiting == 0 && !pull(blockFrames).empty())
            ++m_blocks;
        std::this_thread::yield();
    }
}
