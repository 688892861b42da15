#pragma once

#include "model/TrackEvent.h"

#include <QVector>

#include <vector>

/// Finds the notes of a stretch of time without a look at all of them: the events in blocks of
/// which the earliest start and the latest end of a note are known.
///
/// The events may be in any order, and notes of any length. Costs a few bytes per block.
class NoteBlocks {
public:
    NoteBlocks() = default;
    explicit NoteBlocks(const QVector<TrackEvent> &events);

    /// Calls `visit` with the notes of `events`, those that the blocks were made of, in their
    /// order: with all that touch the time from `from` to `to` in ticks, and with some others.
    template <typename Visit>
    void visit(const QVector<TrackEvent> &events, double from, double to, Visit visit) const;

private:
    struct Block {
        double start;
        double end;
    };
    static constexpr int Size = 64;

    std::vector<Block> m_blocks;
};

template <typename Visit>
void NoteBlocks::visit(const QVector<TrackEvent> &events, double from, double to, Visit visit) const
{
    int first = 0;
    for (const Block &block : m_blocks) {
        const int end = qMin(first + Size, events.size());
        if (block.end >= from && block.start <= to) {
            for (int i = first; i < end; ++i) {
                if (events.at(i).isNote())
                    visit(events.at(i));
            }
        }
        first = end;
    }
}
