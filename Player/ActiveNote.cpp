#include "Player/ActiveNote.h"

#include <cstddef>
#include <utility>

namespace {

/// One pass over one note after the other.
class FadePass {
public:
    FadePass(quint64 now, const FmodCheck &check, NoteObserver *observer)
        : m_now(now)
        , m_check(check)
        , m_observer(observer)
    {
    }

    /// Whether the note is over.
    bool finishes(ActiveNote &note) const
    {
        const bool pressedNow = press(note);
        if (m_now < note.releaseDsp)
            return false;
        if (!pressedNow)
            release(note);
        if (m_now <= note.fadeEndDsp) {
            fade(note);
            return false;
        }
        stop(note);
        release(note);
        return true;
    }

private:
    bool press(ActiveNote &note) const
    {
        if (note.pressed || m_now < note.startDsp)
            return false;
        note.pressed = true;
        if (m_observer)
            m_observer->notePressed(note.trackId, note.eventIndex);
        return true;
    }

    void release(ActiveNote &note) const
    {
        if (note.released)
            return;
        note.released = true;
        if (m_observer)
            m_observer->noteReleased(note.trackId, note.eventIndex);
    }

    void fade(const ActiveNote &note) const
    {
        if (note.channel)
            m_check(note.channel->setVolume(note.volume * remaining(note)));
    }

    float remaining(const ActiveNote &note) const
    {
        const quint64 elapsed = m_now - note.releaseDsp;
        if (elapsed >= note.fadeSamples)
            return 0.0F;
        return static_cast<float>(
            1.0 - static_cast<double>(elapsed) / static_cast<double>(note.fadeSamples));
    }

    void stop(const ActiveNote &note) const
    {
        if (note.channel)
            m_check(note.channel->stop());
    }

    quint64 m_now;
    const FmodCheck &m_check;
    NoteObserver *m_observer;
};

} // namespace

void fadeAndStop(ActiveNotes &notes, quint64 now, const FmodCheck &check, NoteObserver *observer)
{
    const FadePass pass(now, check, observer);
    std::size_t kept = 0; // not std::remove_if(), whose order of visits is nobody's promise
    for (std::size_t i = 0; i < notes.size(); ++i) {
        if (!pass.finishes(notes[i]))
            std::swap(notes[kept++], notes[i]);
    }
    notes.resize(kept);
}
