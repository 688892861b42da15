#include "Sound/SampleCache.h"

#include "Sound/Resampler.h"

#include <algorithm>
#include <limits>

SampleCache::SampleCache(double outputRate, std::size_t maxBytes, PreparePool &pool)
    : m_outputRate(outputRate)
    , m_maxBytes(maxBytes)
    , m_pool(pool)
{
}

FMOD_RESULT SampleCache::prepare(const Sample &source, double frequency, Sample &prepared)
{
    if (frequency == m_outputRate) {
        prepared = source;
        return FMOD_OK;
    }
    // Checked before the look-up: a frequency that is no number has no place in the order.
    if (!Resampler::isPlayable(frequency, m_outputRate))
        return FMOD_ERR_INVALID_PARAM;
    const auto found = m_index.find({source.get(), frequency});
    if (found == m_index.end()) {
        prepared = add(source, frequency);
    } else {
        m_entries.splice(m_entries.begin(), m_entries, found->second);
        prepared = found->second->prepared;
    }
    settle();
    return FMOD_OK;
}

void SampleCache::forget(const Sample &source)
{
    const auto first =
        m_index.lower_bound({source.get(), -std::numeric_limits<double>::infinity()});
    for (auto it = first; it != m_index.end() && it->first.first == source.get();)
        remove((it++)->second);
}

void SampleCache::settle()
{
    const auto rest = std::remove_if(m_uncounted.begin(), m_uncounted.end(),
                                     [this](const Key &key) { return count(key); });
    m_uncounted.erase(rest, m_uncounted.end());
    shrink();
}

SampleCache::Sample SampleCache::add(const Sample &source, double frequency)
{
    const double outputRate = m_outputRate;
    Sample made = m_pool.add([source, frequency, outputRate](AudioSample &result) {
        return Resampler::resample(source->sample(), frequency, outputRate, result);
    });
    const Key key = {source.get(), frequency};
    m_uncounted.push_back(key);
    m_entries.push_front({key, source, made});
    m_index.emplace(key, m_entries.begin());
    return made;
}

/// Answers whether nothing is left to count under the key.
bool SampleCache::count(const Key &key)
{
    const auto found = m_index.find(key);
    if (found == m_index.end() || found->second->isCounted)
        return true;
    Entry &entry = *found->second;
    if (!entry.prepared->isDone())
        return false;
    entry.isCounted = true;
    entry.bytes = entry.prepared->sample().bytes();
    m_bytes += entry.bytes;
    return true;
}

void SampleCache::remove(Entries::iterator entry)
{
    m_bytes -= entry->bytes;
    m_index.erase(entry->key);
    m_entries.erase(entry);
}

/// What is not counted stays: dropping it makes no room, and it might be made twice.
void SampleCache::shrink()
{
    for (auto entry = m_entries.end(); m_bytes > m_maxBytes && entry != m_entries.begin();) {
        const auto last = std::prev(entry);
        if (last->isCounted)
            remove(last);
        else
            entry = last;
    }
}
