#include "Sound/SampleSupply.h"

#include <algorithm>

SampleSupply::SampleSupply(SampleCache &cache, std::size_t slots)
    : m_cache(cache)
    , m_voices(slots)
{
}

void SampleSupply::add(Slot slot, const Sample &source, const Sample &prepared, std::uint64_t clock)
{
    m_voices[slot] = {source, prepared, clock};
    m_growing.push_back(slot);
}

void SampleSupply::remove(Slot slot)
{
    m_voices[slot] = {};
}

void SampleSupply::makeUpTo(std::uint64_t clock)
{
    // First what no thread is at: the others finish theirs meanwhile.
    forAllShort(clock, [](const Sample &sample, std::size_t frames) { sample->run(frames); });
    forAllShort(clock, [](const Sample &sample, std::size_t frames) { sample->makeUpTo(frames); });
}

void SampleSupply::ask(std::uint64_t clock)
{
    forAllShort(clock, [this](const Sample &sample, std::size_t frames) {
        m_cache.ask(sample, frames + PieceFrames);
    });
}

/// One frame more than is heard shows whether it was the last one.
template <typename Act> void SampleSupply::forAllShort(std::uint64_t clock, const Act &act)
{
    for (const Slot slot : m_growing) {
        const Voice &voice = m_voices[slot];
        if (voice.prepared == nullptr || voice.begin >= clock)
            continue;
        const auto frames = static_cast<std::size_t>(clock - voice.begin) + 1;
        if (!voice.prepared->sample().has(frames))
            act(voice.prepared, frames);
    }
}

FMOD_RESULT SampleSupply::settle()
{
    FMOD_RESULT result = FMOD_OK;
    const auto isSettled = [&](Slot slot) {
        Voice &voice = m_voices[slot];
        if (voice.prepared == nullptr)
            return true;
        if (!voice.prepared->sample().isComplete())
            return false;
        for (const Sample *sample : {&voice.source, &voice.prepared}) {
            const FMOD_RESULT error = (*sample)->takeError();
            result = result == FMOD_OK ? error : result;
        }
        voice = {};
        return true;
    };
    m_growing.erase(std::remove_if(m_growing.begin(), m_growing.end(), isSettled), m_growing.end());
    return result;
}
