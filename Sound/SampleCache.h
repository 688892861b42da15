#pragma once

#include "Sound/PreparePool.h"

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <utility>
#include <vector>

/// Sounds made ready for the mixer, that is at the output's rate, by sound and playback rate.
///
/// A note of an instrument always sounds at one rate, so it is resampled when it is first
/// played and found here from then on, even while it is still being made. What was used least
/// recently goes first when the cache is full; what somebody still holds lives on outside. For
/// one thread; only the samples are made by those of the pool.
class SampleCache {
public:
    using Sample = std::shared_ptr<Preparation>;

    /// The pool must outlive the cache.
    SampleCache(double outputRate, std::size_t maxBytes, PreparePool &pool);

    /// `source` played at `frequency` of its frames per second, as a Resampler makes it; `source`
    /// itself where the rates are equal. Its head is queued; at once only FMOD_ERR_INVALID_PARAM
    /// is known (`prepared` is then unchanged). An error of the source is not repeated by what is
    /// made of it.
    FMOD_RESULT prepare(const Sample &source, double frequency, Sample &prepared);

    /// Drops everything made of `source`.
    void forget(const Sample &source);

    /// Has the pool make what is missing of the first `frames` frames.
    void ask(const Sample &prepared, std::size_t frames) { m_pool.ask(prepared, frames); }

    /// Counts what has been made since and drops what has no room.
    void settle();

    /// What the cache holds, without the sources and without what is not made or counted yet. Of a
    /// sample that is not complete what was made counts, and what is needed to go on.
    std::size_t bytes() const { return m_bytes; }
    std::size_t count() const { return m_entries.size(); }

private:
    using Key = std::pair<const Preparation *, double>;

    struct Entry {
        Key key;
        Sample source; // held, so that no other sound can come to lie at the key's address
        Sample prepared;
        bool isCounted = false; // something is made of it
        std::size_t bytes = 0;
    };
    using Entries = std::list<Entry>;

    Sample add(const Sample &source, double frequency);
    bool count(Entry &entry);
    void remove(Entries::iterator entry);
    void shrink();

    double m_outputRate;
    std::size_t m_maxBytes;
    PreparePool &m_pool;
    std::size_t m_bytes = 0;
    Entries m_entries; // the most recently used one first
    std::map<Key, Entries::iterator> m_index;
    std::vector<Entry *> m_growing; // those not complete when they were counted
};
