#pragma once

#include "ABC/ABCTokenizer.h"
#include "model/TrackEvent.h"

#include <deque>
#include <map>
#include <optional>

class Track;

/// The tied notes of a tune that wait for their continuation, by pitch.
///
/// All notes waiting at one pitch start at the same time: another joins them only while it
/// starts together with the first. Beyond MaxWaiting a note no longer waits but becomes an event,
/// so that the work for a chord stays small however many chords are written at one time.
class PendingTies {
public:
    static constexpr size_t MaxWaiting = 8;

    /// A sounding note, single or of a chord: it waits when `isTied`, continues or ends the tie
    /// of its pitch where that note ends, and else becomes an event of `track`. A note that
    /// meets a pending tie of its pitch anywhere else makes that an event and is dropped.
    void add(const TrackEvent &note, bool isTied, Track &track);

    /// As add(), for a note that is not in a chord; remembers it for breakOff().
    void addSingle(const TrackEvent &note, bool isTied, Track &track);

    /// If the single note just before is still waiting, has another pitch than `pitch` and ends
    /// at `time`, it becomes an event as it stands and the answer is true. Forgets that note.
    bool breakOff(qint64 pitch, quint64 time, Track &track);
    void forgetSingle() { m_single.reset(); }

    /// Multiplies the durations of the notes that start at `time`.
    void scale(quint64 time, ABCTokenizer::Length factor);

    /// Makes every waiting note an event as it stands.
    void release(Track &track);

private:
    using Queue = std::deque<TrackEvent>;
    enum class Place { Front, Back };
    struct Single {
        quint32 pitch;
        Place place;
    };

    /// Where the note still waits, if it does.
    std::optional<Place> join(const TrackEvent &note, bool isTied, Track &track);
    static TrackEvent take(Queue &queue, Place place);

    std::map<quint32, Queue> m_queues; // none is empty
    std::optional<Single> m_single;
};

/// `ticks` multiplied by `factor`, in 64 bits; 0 for a denominator of 0.
constexpr quint64 scaledTicks(quint64 ticks, ABCTokenizer::Length factor)
{
    return factor.den == 0 ? 0 : ticks * factor.num / factor.den;
}
