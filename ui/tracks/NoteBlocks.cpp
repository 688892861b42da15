#include "ui/tracks/NoteBlocks.h"

#include <limits>

NoteBlocks::NoteBlocks(const QVector<TrackEvent> &events)
{
    constexpr double Never = std::numeric_limits<double>::infinity();
    m_blocks.reserve(static_cast<size_t>(events.size()) / Size + 1);
    for (int i = 0; i < events.size(); ++i) {
        if (i % Size == 0)
            m_blocks.push_back({Never, -Never});
        const TrackEvent &event = events.at(i);
        if (!event.isNote())
            continue;
        // As floating-point numbers, in which the end of no note overflows.
        const auto start = static_cast<double>(event.time());
        Block &block = m_blocks.back();
        block.start = qMin(block.start, start);
        block.end = qMax(block.end, start + static_cast<double>(event.duration()));
    }
}
