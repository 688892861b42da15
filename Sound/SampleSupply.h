#pragma once

#include "Sound/SampleCache.h"
#include "Sound/VoiceBank.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// Has the samples of sounding voices made ahead of them, as far as they are going to be heard.
/// For the thread that plays.
class SampleSupply {
public:
    using Slot = VoiceBank::Slot;
    using Sample = SampleCache::Sample;

    /// What is asked for at once beyond what is needed: 0.2 s at 48 kHz.
    static constexpr std::size_t PieceFrames = 9600;

    /// Slots are the numbers below `slots`.
    SampleSupply(SampleCache &cache, std::size_t slots);

    /// A voice that does not begin before `clock`, and whose sample is made of `source`.
    void add(Slot slot, const Sample &source, const Sample &prepared, std::uint64_t clock);
    /// When the voice has ended; ignored for one that was not added.
    void remove(Slot slot);

    /// Makes, here or by another thread, all that is heard before `clock`, so that voices which
    /// have no more frames than that are complete.
    void makeUpTo(std::uint64_t clock);
    /// Queues what is heard before `clock`, in the order in which the voices were added.
    void ask(std::uint64_t clock);

    /// Lets go of samples that are complete. Answers the first error of these, once.
    FMOD_RESULT settle();

private:
    struct Voice {
        Sample source;
        Sample prepared; // null while there is nothing to do
        std::uint64_t begin = 0;
    };

    template <typename Act> void forAllShort(std::uint64_t clock, const Act &act);

    SampleCache &m_cache;
    std::vector<Voice> m_voices; // by slot
    std::vector<Slot> m_growing;
};
