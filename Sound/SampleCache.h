#pragma once

#include "Sound/AudioSample.h"
#include "Sound/Fmod.h"

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <utility>

/// Sounds made ready for the mixer, that is at the output's rate, by sound and playback rate.
///
/// A note of an instrument always sounds at one rate, so it is resampled when it is first
/// played and found here from then on. What was used least recently goes first when the cache
/// is full; what somebody still holds lives on outside.
class SampleCache {
public:
    using Sample = std::shared_ptr<const AudioSample>;

    SampleCache(double outputRate, std::size_t maxBytes);

    /// `source` played at `frequency` of its frames per second, as Resampler::resample() makes
    /// it and with its error codes; `source` itself where the rates are equal. `prepared` is
    /// unchanged on an error.
    FMOD_RESULT prepare(const Sample &source, double frequency, Sample &prepared);

    /// Drops everything made of `source`.
    void forget(const Sample &source);

    /// What the cache holds, without the sources.
    std::size_t bytes() const { return m_bytes; }
    std::size_t count() const { return m_entries.size(); }

private:
    using Key = std::pair<const AudioSample *, double>;

    struct Entry {
        Key key;
        Sample source; // held, so that no other sound can come to lie at the key's address
        Sample prepared;
    };
    using Entries = std::list<Entry>;

    FMOD_RESULT add(const Sample &source, double frequency, Sample &prepared);
    void remove(Entries::iterator entry);
    void shrink();

    double m_outputRate;
    std::size_t m_maxBytes;
    std::size_t m_bytes = 0;
    Entries m_entries; // the most recently used one first
    std::map<Key, Entries::iterator> m_index;
};
