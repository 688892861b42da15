#pragma once

#include "Player/PlayerWorker.h"
#include "support/FakeFmod.h"

#include <QPointer>
#include <QStringList>

#include <vector>

/// A worker on the fake sound library, on the test's own thread: its timer fires only in tick().
class PlayerStage {
public:
    /// `rate` is the output's. The calls of initialize() are not kept.
    explicit PlayerStage(int rate = 48000);
    ~PlayerStage();
    PlayerStage(const PlayerStage &) = delete;
    PlayerStage &operator=(const PlayerStage &) = delete;

    void play(const QString &trackId, const std::vector<TrackEvent> &events,
              const Instrument &instrument = harp());
    /// Calls update() at this clock, as any caller would.
    void passAt(quint64 clock);
    /// Queues update() and delivers it at this clock.
    void queuedPassAt(quint64 clock);
    /// Lets the worker's timer fire once at this clock.
    void tickAt(quint64 clock);
    /// What passAt() throws.
    QString messageAt(quint64 clock);

    /// The values of SetDelay so far: the clocks at which notes start.
    QStringList starts() const;
    /// The lines of the channels' functions and of what makes or stops them.
    QStringList channelCalls() const;

    /// Maps 60 to /c.wav, 61 to the same at one and a half times its rate, 62 to /d.wav; fades for
    /// a quarter of a second.
    static Instrument harp() { return harp("0.25"); }
    static Instrument harp(const QByteArray &fadeout);
    static Track track(const std::vector<TrackEvent> &events);
    /// 24000 frames long.
    static TrackEvent quarter(quint32 pitch, quint64 time);

    FakeFmod fake;
    QPointer<PlayerWorker> worker;
    QStringList signalLog; // "started T1", "pressed T1 0", …, without positions
    QStringList positions; // "T1 30240"
};

QString text(const char *latin1);
QStringList lines(const std::vector<const char *> &texts);
