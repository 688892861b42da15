#include "Sound/Mixer.h"

#include <algorithm>

namespace {

/// A fade goes from point to point, each computed by itself: on the longest of lines no error adds
/// up, and a ramp stays short enough for its kernel.
constexpr std::uint64_t FadeStep = Mixer::GainRampFrames;

MixKernels::Source sourceAt(const Mixer::Voice &voice, std::size_t position)
{
    return {voice.left + position, voice.right + position, voice.gain};
}

std::size_t framesLeft(const Mixer::Voice &voice, std::size_t position)
{
    return voice.frames > position ? voice.frames - position : 0;
}

/// Of a fade that has begun.
std::uint64_t framesLeft(const Mixer::Fade &fade, std::uint64_t clock)
{
    const std::uint64_t elapsed = clock - fade.begin;
    return fade.frames > elapsed ? fade.frames - elapsed : 0;
}

bool isOver(const Mixer::Fade &fade, std::uint64_t clock)
{
    return clock >= fade.begin && framesLeft(fade, clock) == 0;
}

float rampedSide(float from, float to, unsigned done, unsigned length)
{
    return from + (to - from) / static_cast<float>(length) * static_cast<float>(done);
}

MixKernels::Gain currentGain(const MixKernels::Ramp &ramp)
{
    return {rampedSide(ramp.from.left, ramp.to.left, ramp.done, ramp.length),
            rampedSide(ramp.from.right, ramp.to.right, ramp.done, ramp.length)};
}

Mixer::Gain scaled(const Mixer::Gain &gain, double factor)
{
    return {static_cast<float>(double{gain.left} * factor),
            static_cast<float>(double{gain.right} * factor)};
}

Mixer::Gain faded(const Mixer::Gain &from, const Mixer::Fade &fade, std::uint64_t elapsed)
{
    return scaled(from,
                  static_cast<double>(fade.frames - elapsed) / static_cast<double>(fade.frames));
}

Mixer::Fade audible(const Mixer::Fade &fade)
{
    return {fade.begin, std::max<std::uint64_t>(fade.frames, Mixer::StopRampFrames)};
}

} // namespace

Mixer::Mixer(std::size_t slots, const MixKernels::Table &kernels)
    : m_kernels(kernels)
    , m_states(slots)
{
    m_active.reserve(slots);
    m_ended.reserve(slots);
}

void Mixer::start(Slot slot, const Voice &voice)
{
    if (slot >= m_states.size() || m_states[slot].inUse)
        return;
    m_states[slot] = State();
    m_states[slot].voice = voice;
    m_states[slot].voice.fade = audible(voice.fade);
    m_states[slot].inUse = true;
    m_active.push_back(slot);
}

void Mixer::await(Slot slot, std::uint64_t startClock, const Gain &gain, const Fade &fade)
{
    if (slot >= m_states.size() || m_states[slot].inUse)
        return;
    start(slot, {nullptr, nullptr, 0, startClock, gain, fade});
    m_states[slot].awaited = true;
}

void Mixer::provide(Slot slot, const AudioSample &sample)
{
    if (slot >= m_states.size() || !m_states[slot].awaited)
        return;
    State &state = m_states[slot];
    state.awaited = false;
    state.growing = &sample;
    grow(state);
    state.voice.left = sample.left();
    state.voice.right = sample.right();
    const std::uint64_t start = state.voice.startClock;
    if (start != 0 && start < m_clock && state.voice.frames > 0)
        ++m_lateStarts;
}

/// Takes in what has been made of the sample by now.
void Mixer::grow(State &state)
{
    const bool isComplete = state.growing->isComplete();
    state.voice.frames = state.growing->frames();
    if (isComplete)
        state.growing = nullptr;
}

void Mixer::setGain(Slot slot, const Gain &gain)
{
    if (slot >= m_states.size() || !m_states[slot].inUse || m_states[slot].stopping)
        return;
    State &state = m_states[slot];
    if (state.voice.fade.begin <= m_clock)
        return;
    if (state.position == 0)
        state.voice.gain = gain;
    else
        startRamp(state, gain, GainRampFrames);
}

void Mixer::stop(Slot slot)
{
    if (slot >= m_states.size() || !m_states[slot].inUse || m_states[slot].stopping)
        return;
    State &state = m_states[slot];
    if (state.fading && framesLeft(state.voice.fade, m_clock) <= StopRampFrames)
        return;
    state.stopping = true;
    state.awaited = false;
    if (state.position == 0) {
        state.voice.frames = 0;
        state.growing = nullptr;
    } else {
        startRamp(state, {}, StopRampFrames);
    }
}

void Mixer::startRamp(State &state, const Gain &target, unsigned frames)
{
    const Gain from = state.ramp.length == 0 ? state.voice.gain : currentGain(state.ramp);
    state.ramp = {from, target, 0, frames};
    state.voice.gain = target;
}

void Mixer::mix(float *left, float *right, std::size_t frames)
{
    std::fill_n(left, frames, 0.0F);
    std::fill_n(right, frames, 0.0F);
    std::size_t kept = 0;
    for (const Slot slot : m_active) {
        State &state = m_states[slot];
        if (mixVoice(state, left, right, frames)) {
            m_active[kept++] = slot;
        } else {
            state.inUse = false;
            m_ended.push_back(slot);
        }
    }
    flushBatch(left, right, frames);
    m_active.resize(kept);
    m_clock += frames;
}

/// Answers whether the voice goes on after this block.
bool Mixer::mixVoice(State &state, float *left, float *right, std::size_t frames)
{
    if (state.awaited)
        return true;
    if (state.growing != nullptr)
        grow(state);
    const Voice &voice = state.voice;
    const std::size_t rest = framesLeft(voice, state.position);
    const bool isConstant = state.ramp.length == 0 && voice.fade.begin >= m_clock + frames;
    if (voice.startClock <= m_clock && isConstant && rest >= frames) {
        addToBatch(state, left, right, frames);
        return state.position < voice.frames || state.growing != nullptr;
    }
    const bool goesOn = rest > 0 || state.growing != nullptr;
    const std::uint64_t wait = voice.startClock > m_clock ? voice.startClock - m_clock : 0;
    if (goesOn && wait >= frames)
        return true;
    flushBatch(left, right, frames);
    return goesOn && mixDue(state, left + wait, right + wait, frames - wait, m_clock + wait);
}

/// Mixes the frames of a voice that is due at `clock`, cut where its fade changes its slope.
bool Mixer::mixDue(State &state, float *left, float *right, std::size_t frames, std::uint64_t clock)
{
    for (std::size_t done = 0; done < frames;) {
        const std::uint64_t straight = followFade(state, clock + done);
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(frames - done, straight));
        if (count == 0 || !mixPiece(state, left + done, right + done, count))
            return false;
        done += count;
    }
    return !isOver(state.voice.fade, clock + frames);
}

/// Answers for how many frames the fade needs no further look; 0 when it is over.
std::uint64_t Mixer::followFade(State &state, std::uint64_t clock)
{
    const Fade &fade = state.voice.fade;
    if (state.stopping)
        return Fade::Never;
    if (clock < fade.begin)
        return fade.begin - clock;
    const std::uint64_t elapsed = clock - fade.begin;
    const std::uint64_t done = elapsed % FadeStep;
    const std::uint64_t straight = std::min(FadeStep - done, framesLeft(fade, clock));
    if (straight > 0 && (done == 0 || !state.fading))
        aimFade(state, elapsed, static_cast<unsigned>(straight));
    return straight;
}

/// From one point of the fade to the next.
void Mixer::aimFade(State &state, std::uint64_t elapsed, unsigned frames)
{
    if (!state.fading)
        beginFade(state, elapsed);
    startRamp(state, faded(state.fadeFrom, state.voice.fade, elapsed + frames), frames);
}

void Mixer::beginFade(State &state, std::uint64_t elapsed)
{
    state.fading = true;
    state.fadeFrom = state.voice.gain;
    if (state.position == 0)
        state.voice.gain = faded(state.fadeFrom, state.voice.fade, elapsed);
}

/// Mixes up to `frames` frames of a voice that is due, ramp first.
bool Mixer::mixPiece(State &state, float *left, float *right, std::size_t frames)
{
    const Voice &voice = state.voice;
    const std::size_t count = std::min(frames, framesLeft(voice, state.position));
    std::size_t done = 0;
    if (state.ramp.length > 0 && count > 0) {
        done = mixRamp(state, left, right, count);
        if (state.stopping && state.ramp.length == 0)
            return false;
    }
    if (count > done)
        m_kernels.add(left + done, right + done, sourceAt(voice, state.position), count - done);
    state.position += count - done;
    if (state.growing != nullptr)
        return miss(state, frames - count);
    return state.position < voice.frames;
}

/// Passes over frames that are not made yet. Answers whether the voice goes on.
bool Mixer::miss(State &state, std::size_t frames)
{
    state.position += frames;
    m_missedFrames += frames;
    MixKernels::Ramp &ramp = state.ramp;
    if (ramp.length == 0)
        return true;
    if (frames < ramp.length - ramp.done) {
        ramp.done += static_cast<unsigned>(frames);
        return true;
    }
    ramp = {};
    return !state.stopping;
}

/// Mixes along the ramp as far as it and the block go; answers the frames mixed.
std::size_t Mixer::mixRamp(State &state, float *left, float *right, std::size_t frames)
{
    MixKernels::Ramp &ramp = state.ramp;
    const std::size_t count = std::min<std::size_t>(frames, ramp.length - ramp.done);
    m_kernels.addRamp(left, right, sourceAt(state.voice, state.position), ramp, count);
    state.position += count;
    ramp.done += static_cast<unsigned>(count);
    if (ramp.done == ramp.length)
        ramp = {};
    return count;
}

void Mixer::addToBatch(State &state, float *left, float *right, std::size_t frames)
{
    m_batch[m_batchCount++] = sourceAt(state.voice, state.position);
    state.position += frames;
    if (m_batchCount == MixKernels::BatchSize) {
        m_kernels.addBatch(left, right, m_batch, frames);
        m_batchCount = 0;
    }
}

/// Before any voice that is not batched: the order of the sums must not depend on the blocks.
void Mixer::flushBatch(float *left, float *right, std::size_t frames)
{
    for (std::size_t i = 0; i < m_batchCount; ++i)
        m_kernels.add(left, right, m_batch[i], frames);
    m_batchCount = 0;
}
