#pragma once

#include "Player/DspClock.h"
#include "Player/SoundCache.h"
#include "Player/TrackInfo.h"

#include <QHash>
#include <QMap>
#include <QString>

/// Has the samples of coming notes loaded and prepared seconds before these are scheduled, so that
/// a chord of unheard sounds is not late on a busy machine.
///
/// Only where the sound system prepares samples ahead of time; another one would do all the work at
/// once, and the notes of that instant would suffer. What cannot be loaded is left for the
/// scheduler to find out.
class SampleForesight {
public:
    using Tracks = QMap<QString, TrackInfo>;

    /// `sounds` must outlive this.
    explicit SampleForesight(SoundCache &sounds)
        : m_sounds(sounds)
    {
    }

    /// Looks a little further in each track, up to Reach seconds, and loads one file at most.
    void look(FMOD::System &system, const Tracks &tracks, const PassClock &clock);
    /// A track begins, or goes on elsewhere.
    void restart(const QString &trackId);
    void restartAll();

private:
    static constexpr double Reach = 2.0;
    static constexpr double Step = 0.05; // in a pass, so that no track gets far ahead of others

    bool lookAt(FMOD::System &system, const QString &trackId, const TrackInfo &info,
                const PassClock &target);
    bool prepare(FMOD::System &system, const TrackInfo &info, const TrackEvent &event);
    bool prepareFile(FMOD::System &system, const QString &path, double pitch);

    SoundCache &m_sounds;
    QHash<QString, quint32> m_next; // the first event of each track that was not looked at
    quint64 m_reached = 0;          // the clock up to which all tracks were looked at
    bool m_mayLoad = false;         // in this pass
};
