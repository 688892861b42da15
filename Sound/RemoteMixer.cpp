#include "Sound/RemoteMixer.h"

RemoteMixer::RemoteMixer(std::size_t slots, std::size_t ringCommands)
    : m_gains(slots)
    , m_commands(ringCommands)
    , m_ended(slots)
    , m_mixer(slots)
{
    m_gainSlots.reserve(slots);
}

void RemoteMixer::await(Slot slot, std::uint64_t startClock, const Gain &gain, const Fade &fade)
{
    Command command;
    command.kind = Command::Kind::Await;
    command.slot = slot;
    command.startClock = startClock;
    command.gain = gain;
    command.fade = fade;
    dropGain(slot);
    send(command);
}

void RemoteMixer::provide(Slot slot, const AudioSample &sample)
{
    Command command;
    command.kind = Command::Kind::Provide;
    command.slot = slot;
    command.sample = &sample;
    send(command);
}

void RemoteMixer::setGain(Slot slot, const Gain &gain)
{
    if (slot >= m_gains.size())
        return;
    LatestGain &latest = m_gains[slot];
    latest.gain = gain;
    latest.isDue = true;
    if (!latest.isListed)
        m_gainSlots.push_back(slot);
    latest.isListed = true;
    flush();
}

/// A gain that still waits is of no use any more: the voice would ignore it.
void RemoteMixer::stop(Slot slot)
{
    Command command;
    command.kind = Command::Kind::Stop;
    command.slot = slot;
    dropGain(slot);
    send(command);
}

/// Gains come last: they change nothing that was not taken in before.
bool RemoteMixer::flush()
{
    return sendWaiting() && sendGains();
}

void RemoteMixer::runCommands() noexcept
{
    Command command;
    while (m_commands.pop(command))
        run(command);
}

void RemoteMixer::mix(float *left, float *right, std::size_t frames) noexcept
{
    runCommands();
    m_mixer.mix(left, right, frames);
    for (const Slot slot : m_mixer.ended())
        m_ended.push(slot);
    m_mixer.clearEnded();
    m_lateStarts.store(m_mixer.lateStarts(), std::memory_order_relaxed);
    m_missedFrames.store(m_mixer.missedFrames(), std::memory_order_relaxed);
    m_clock.store(m_mixer.clock(), std::memory_order_release);
}

void RemoteMixer::mixAfterAll(float *left, float *right, std::size_t frames)
{
    while (!flush())
        runCommands();
    mix(left, right, frames);
}

void RemoteMixer::send(const Command &command)
{
    if (!sendWaiting() || !m_commands.push(command))
        m_waiting.push_back(command);
}

bool RemoteMixer::sendWaiting()
{
    while (!m_waiting.empty() && m_commands.push(m_waiting.front()))
        m_waiting.pop_front();
    return m_waiting.empty();
}

bool RemoteMixer::sendGains()
{
    Command command;
    command.kind = Command::Kind::SetGain;
    for (; !m_gainSlots.empty(); m_gainSlots.pop_back()) {
        command.slot = m_gainSlots.back();
        LatestGain &latest = m_gains[command.slot];
        command.gain = latest.gain;
        if (latest.isDue && !m_commands.push(command))
            return false;
        latest.isDue = false;
        latest.isListed = false;
    }
    return true;
}

void RemoteMixer::dropGain(Slot slot)
{
    if (slot < m_gains.size())
        m_gains[slot].isDue = false;
}

void RemoteMixer::run(const Command &command) noexcept
{
    switch (command.kind) {
    case Command::Kind::Await:
        m_mixer.await(command.slot, command.startClock, command.gain, command.fade);
        break;
    case Command::Kind::Provide:
        m_mixer.provide(command.slot, *command.sample);
        break;
    case Command::Kind::SetGain:
        m_mixer.setGain(command.slot, command.gain);
        break;
    case Command::Kind::Stop:
        m_mixer.stop(command.slot);
        break;
    }
}
