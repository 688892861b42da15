#include "model/TrackMerge.h"

#include <QHash>

namespace {

/// The merged track while it grows.
class Merger {
public:
    explicit Merger(const Track &first);

    void append(const Track &later);
    Track finished();

private:
    void requireTempo(const TrackEvent &change) const;

    Track m_merged;
    QHash<quint64, TrackEvent> m_tempos; // of the first track, by their time
};

[[noreturn]] void refuse()
{
    throw QStringLiteral("Cannot merge tracks with different tempos");
}

Merger::Merger(const Track &first)
{
    m_merged.setAllHeaders(first.allHeaders());
    m_merged.setTicksPerMinute(first.ticksPerMinute());
    m_merged.setMeasure(first.measureLength(), first.beatsPerMeasure());
    for (const TrackEvent &event : first.events()) {
        if (event.type() == TrackEvent::Tempo)
            m_tempos.insert(event.time(), event);
        m_merged.addEvent(event);
    }
}

void Merger::append(const Track &later)
{
    if (later.ticksPerMinute() != m_merged.ticksPerMinute())
        refuse();
    for (const TrackEvent &event : later.events()) {
        if (event.type() == TrackEvent::Tempo)
            requireTempo(event);
        else
            m_merged.addEvent(event);
    }
}

void Merger::requireTempo(const TrackEvent &change) const
{
    const auto known = m_tempos.constFind(change.time());
    if (known == m_tempos.constEnd() || known->ticksPerMinute() != change.ticksPerMinute())
        refuse();
}

Track Merger::finished()
{
    m_merged.setHeader(QStringLiteral("X"), QStringLiteral("1"));
    m_merged.sortEvents();
    return m_merged;
}

} // namespace

Track mergeTracks(const QList<Track> &tracks)
{
    Q_ASSERT(!tracks.isEmpty());
    Merger merger(tracks.first());
    for (const Track &later : tracks.mid(1))
        merger.append(later);
    return merger.finished();
}
