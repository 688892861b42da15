#pragma once

#include "Player/FmodCheck.h"

#include <QString>
#include <QtGlobal>

#include <vector>

/// A note that was handed to the sound system and is not finished yet. Clocks and lengths are
/// output frames.
struct ActiveNote {
    FMOD::Channel *channel = nullptr; ///< null when the note could not be played: it is silent
    quint64 releaseDsp = 0;           ///< clock of its end, where it begins to fade
    quint64 fadeSamples = 0;          ///< length of the fade
    quint64 fadeEndDsp = 0;           ///< releaseDsp + fadeSamples
    float volume = 1.0F;              ///< the track's volume when the note was scheduled
    QString trackId;
    quint64 startDsp = 0;   ///< clock of its start
    quint32 eventIndex = 0; ///< its event in the track
    bool pressed = false;   ///< its start was reported
    bool released = false;  ///< its end was reported
};

/// In the order of scheduling.
using ActiveNotes = std::vector<ActiveNote>;

/// Hears when a scheduled note begins and ends to sound. Must not change the list of notes.
class NoteObserver {
public:
    virtual void notePressed(const QString &trackId, quint32 eventIndex) = 0;
    virtual void noteReleased(const QString &trackId, quint32 eventIndex) = 0;

protected:
    ~NoteObserver() = default;
};

/// One pass over the notes at the clock `now`: reports starts and ends, lowers the volume of
/// ended notes along a straight line to silence, stops and removes those whose fade is over.
///
/// The end of a note is never reported in the pass that reports its start, unless the note is
/// over with its fade in that pass. A fade of length 0 is silence at the note's end.
void fadeAndStop(ActiveNotes &notes, quint64 now, const FmodCheck &check,
                 NoteObserver *observer = nullptr);
