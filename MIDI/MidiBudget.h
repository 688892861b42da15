#pragma once

#include <QtGlobal>

#include <QString>

/// Limits what one MIDI file can make. A pitch bend of three bytes can cut 88 notes, and each of
/// a million tracks gets each tempo of the file, so the file's size is no limit.
class MidiBudget {
public:
    /// Far beyond any music, and 80 MB.
    static constexpr quint64 LargestCount = 2000000;

    /// What takes more memory than an event counts for more.
    static constexpr quint64 EventsPerTitle = 16;
    static constexpr quint64 EventsPerTrack = 16;

    /// To be called before `count` more events are stored. Throws "The MIDI file has too many
    /// events.".
    void spend(quint64 count)
    {
        if (count > m_left)
            throw QStringLiteral("The MIDI file has too many events.");
        m_left -= count;
    }

private:
    quint64 m_left = LargestCount;
};
