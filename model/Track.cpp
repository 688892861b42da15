#include "model/Track.h"

#include <algorithm>

namespace {

bool comesBefore(const TrackEvent &a, const TrackEvent &b)
{
    if (a.time() != b.time())
        return a.time() < b.time();
    return a.duration() < b.duration();
}

bool startsBefore(const TrackEvent &a, const TrackEvent &b)
{
    return a.time() < b.time();
}

using Events = QVector<TrackEvent>;

/// Sorts events whose times are in order, in time proportional to their number: only those that
/// start together can change places.
void sortSimultaneous(Events &events)
{
    for (auto first = events.begin(); first != events.end();) {
        const quint64 time = first->time();
        const auto end = std::find_if(
            first, events.end(), [time](const TrackEvent &event) { return event.time() != time; });
        if (!std::is_sorted(first, end, comesBefore))
            std::stable_sort(first, end, comesBefore);
        first = end;
    }
}

/// Most tracks are written in order, or nearly so.
void sort(Events &events)
{
    if (std::is_sorted(events.cbegin(), events.cend(), comesBefore))
        return;
    if (std::is_sorted(events.cbegin(), events.cend(), startsBefore))
        sortSimultaneous(events);
    else
        std::stable_sort(events.begin(), events.end(), comesBefore);
}

bool isReplacedBy(const TrackEvent &event, const TrackEvent &next)
{
    return event.type() == next.type() && event.time() == next.time();
}

} // namespace

void Track::setMeasure(quint32 length, quint32 beats)
{
    m_measureLength = length;
    m_beatsPerMeasure = beats;
}

double Track::duration() const
{
    if (m_ticksPerMinute == 0)
        return 0.0;
    return static_cast<double>(m_length) / static_cast<double>(m_ticksPerMinute) * 60.0;
}

void Track::addEvent(const TrackEvent &event)
{
    m_events.append(event);
    if (event.isNote())
        ++m_noteCount;
}

void Track::sortEvents()
{
    sort(m_events);

    m_length = 0;
    quint64 tempo = m_ticksPerMinute;
    int kept = 0;
    for (int i = 0; i < m_events.size(); ++i) {
        const TrackEvent event = m_events.at(i);
        m_length = std::max(m_length, event.time() + event.duration());
        if (!event.isNote()) {
            if (event.type() == TrackEvent::Tempo && event.ticksPerMinute() == tempo)
                continue;
            if (i + 1 < m_events.size() && isReplacedBy(event, m_events.at(i + 1)))
                continue;
            if (event.type() == TrackEvent::Tempo)
                tempo = event.ticksPerMinute();
        }
        m_events[kept++] = event;
    }
    m_events.resize(kept);
}

bool Track::hasHeader(const QString &key) const
{
    return m_headers.contains(key);
}

QString Track::header(const QString &key, const QString &fallback) const
{
    return m_headers.value(key, fallback);
}

QStringList Track::headers(const QString &key) const
{
    return m_headers.values(key);
}

void Track::addHeader(const QString &key, const QString &value)
{
    m_headers.insert(key, value);
}

void Track::setHeader(const QString &key, const QString &value)
{
    m_headers.remove(key);
    m_headers.insert(key, value);
}

bool Track::operator==(const Track &other) const
{
    return m_headers == other.m_headers && m_ticksPerMinute == other.m_ticksPerMinute
        && m_measureLength == other.m_measureLength && m_beatsPerMeasure == other.m_beatsPerMeasure
        && m_length == other.m_length && m_noteCount == other.m_noteCount
        && m_events == other.m_events && m_abc == other.m_abc && m_fileName == other.m_fileName;
}
