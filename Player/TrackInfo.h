#pragma once

#include "Quillmoor/Instrument.h"
#include "Sound/Fmod.h"
#include "model/Ticks.h"
#include "model/Track.h"

#include <QtGlobal>

#include <optional>

/// A track on its way through the output: what plays it, and how its ticks lie on the output clock.
///
/// The origin ties one tick to one instant of the clock; from there on time runs at the current
/// tempo. A tempo of 0 means none: the default tempo is in force then. `rate` is everywhere the
/// output's frames per second.
struct TrackInfo {
    Track track;
    Instrument instrument;
    quint64 originDsp = 0;  ///< output clock at which originTick sounds
    quint64 originTick = 0; ///< events before it are not played
    quint32 nextEvent = 0;  ///< the first event that is not scheduled yet
    quint64 ticksPerMinute = Ticks::DefaultPerMinute;
    FMOD::ChannelGroup *channelGroup = nullptr; ///< null for none
    bool muted = false;
    bool unplayable = false; ///< silent like a muted one, for its instrument maps no note at all
    std::optional<quint32> failedEvent; ///< could not be scheduled, and is to be passed over
    float volume = 1.0F;                ///< 0 to 1, for notes scheduled from now on
    float pan = 0.0F;                   ///< -1 to 1, for notes scheduled from now on

    /// The clock at which `tick` sounds, truncated and kept within 64 bits. A tick before the
    /// origin comes before its clock, at 0 at the earliest.
    quint64 dspOfTick(quint64 tick, int rate) const;
    /// The tick that sounds at `dsp`, truncated and kept within 64 bits; 0 if that were negative.
    /// Time stands still at the origin for a rate that is not positive.
    quint64 tickOfDsp(quint64 dsp, int rate) const;

    /// Puts the tempo of a Tempo event into force, and moves the origin to the event unless it
    /// lies before the origin. An event with tempo 0 changes nothing.
    void passTempo(const TrackEvent &event, int rate);

    /// The clock at which all of the track is over, notes and fade, as seen from its beginning
    /// (a TrackInfo that has passed no tempo yet).
    quint64 endDsp(int rate) const;

    /// Whether no event is left to schedule.
    bool isScheduled() const;

private:
    double samplesPerTick(int rate) const;
};
