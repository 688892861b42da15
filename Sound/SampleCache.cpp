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
    const auto rest = std::remove_if(m_growing.begin(), m_growing.end(),
                                     [this](Entry *entry) { return count(*entry); });
    m_growing.erase(rest, m_growing.end());
    shrink();
}

SampleCache::Sample SampleCache::add(const Sample &source, double frequency)
{
    const auto resampler = std::make_shared<Resampler>(source, frequency, m_outputRate);
    Sample made = m_pool.add([resampler](AudioSample &result, std::size_t frames) {
        return resampler->make(result, frames);
    });
    const Key key = {source.get(), frequency};
    m_entries.push_front({key, source, made});
    m_index.emplace(key, m_entries.begin());
    m_growing.push_back(&m_entries.front());
    return made;
}

/// Answers whether the entry is counted for good.
bool SampleCache::count(Entry &entry)
{
    const AudioSample &sample = entry.prepared->sample();
    const bool isComplete = sample.isComplete();
    std::size_t bytes = sample.bytes();
    if (!isComplete && bytes > 0)
        bytes += Resampler::WorkingBytes;
    m_bytes += bytes - entry.bytes;
    entry.bytes = bytes;
    entry.isCounted = isComplete || bytes > 0;
    return isComplete;
}

void SampleCache::remove(Entries::iterator entry)
{
    m_growing.erase(std::remove(m_growing.begin(), m_growing.end(), &*entry), m_growing.end());
    m_bytes -= entry->bytes;
    m_index.erase(entry->key);
    m_entries.erase(entry);
}

/// What is not begun stays: dropping it makes no room, and it might be made twice.
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
