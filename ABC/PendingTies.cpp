#include "ABC/PendingTies.h"

#include "model/Track.h"

namespace {

quint64 endOf(const TrackEvent &note)
{
    return note.time() + note.duration();
}

} // namespace

void PendingTies::add(const TrackEvent &note, bool isTied, Track &track)
{
    join(note, isTied, track);
}

void PendingTies::addSingle(const TrackEvent &note, bool isTied, Track &track)
{
    m_single.reset();
    if (const auto place = join(note, isTied, track))
        m_single = Single{note.note(), *place};
}

std::optional<PendingTies::Place> PendingTies::join(const TrackEvent &note, bool isTied,
                                                    Track &track)
{
    const auto found = m_queues.find(note.note());
    if (found == m_queues.end() || found->second.front().time() == note.time()) {
        if (!isTied || (found != m_queues.end() && found->second.size() >= MaxWaiting)) {
            track.addEvent(note);
            return std::nullopt;
        }
        m_queues[note.note()].push_back(note);
        return Place::Back;
    }

    TrackEvent &head = found->second.front();
    if (endOf(head) == note.time()) {
        head.addDuration(note.duration());
        if (isTied)
            return Place::Front;
    }
    track.addEvent(take(found->second, Place::Front));
    if (found->second.empty())
        m_queues.erase(found);
    return std::nullopt;
}

bool PendingTies::breakOff(qint64 pitch, quint64 time, Track &track)
{
    const std::optional<Single> single = std::exchange(m_single, std::nullopt);
    if (!single || single->pitch == pitch)
        return false;
    const auto found = m_queues.find(single->pitch);
    if (found == m_queues.end())
        return false;
    Queue &queue = found->second;
    if (endOf(single->place == Place::Front ? queue.front() : queue.back()) != time)
        return false;
    track.addEvent(take(queue, single->place));
    if (queue.empty())
        m_queues.erase(found);
    return true;
}

TrackEvent PendingTies::take(Queue &queue, Place place)
{
    const TrackEvent note = place == Place::Front ? queue.front() : queue.back();
    if (place == Place::Front)
        queue.pop_front();
    else
        queue.pop_back();
    return note;
}

void PendingTies::scale(quint64 time, ABCTokenizer::Length factor)
{
    if (factor.num == factor.den && factor.den != 0)
        return;
    for (auto &[pitch, queue] : m_queues) {
        if (queue.front().time() != time)
            continue;
        for (TrackEvent &note : queue)
            note.setDuration(scaledTicks(note.duration(), factor));
    }
}

void PendingTies::release(Track &track)
{
    for (const auto &[pitch, queue] : m_queues) {
        for (const TrackEvent &note : queue)
            track.addEvent(note);
    }
    m_queues.clear();
    m_single.reset();
}
