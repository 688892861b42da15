#include "Sound/SampleCache.h"

#include "Sound/Resampler.h"

#include <iterator>
#include <limits>

SampleCache::SampleCache(double outputRate, std::size_t maxBytes)
    : m_outputRate(outputRate)
    , m_maxBytes(maxBytes)
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
    if (found == m_index.end())
        return add(source, frequency, prepared);
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    prepared = found->second->prepared;
    return FMOD_OK;
}

void SampleCache::forget(const Sample &source)
{
    const auto first =
        m_index.lower_bound({source.get(), -std::numeric_limits<double>::infinity()});
    for (auto it = first; it != m_index.end() && it->first.first == source.get();)
        remove((it++)->second);
}

FMOD_RESULT SampleCache::add(const Sample &source, double frequency, Sample &prepared)
{
    const auto made = std::make_shared<AudioSample>();
    const FMOD_RESULT result = Resampler::resample(*source, frequency, m_outputRate, *made);
    if (result != FMOD_OK)
        return result;
    const Key key = {source.get(), frequency};
    m_entries.push_front({key, source, made});
    m_index.emplace(key, m_entries.begin());
    m_bytes += made->bytes();
    shrink();
    prepared = made;
    return FMOD_OK;
}

void SampleCache::remove(Entries::iterator entry)
{
    m_bytes -= entry->prepared->bytes();
    m_index.erase(entry->key);
    m_entries.erase(entry);
}

void SampleCache::shrink()
{
    while (m_bytes > m_maxBytes)
        remove(std::prev(m_entries.end()));
}
