#include "PlayerStage.h"

#include "support/Thrown.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTimer>

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

QStringList lines(const std::vector<const char *> &texts)
{
    QStringList list;
    for (const char *const line : texts)
        list.append(text(line));
    return list;
}

PlayerStage::PlayerStage(int rate)
    : worker(new PlayerWorker)
{
    fake.setOutputRate(rate);
    const auto note = [this](const char *what) {
        return [this, what](const QString &id) { signalLog.append(text(what) + id); };
    };
    const auto noteEvent = [this](const char *what) {
        return [this, what](const QString &id, uint event) {
            signalLog.append(text(what) + id + QLatin1Char(' ') + QString::number(event));
        };
    };
    PlayerWorker *const from = worker;
    QObject::connect(from, &PlayerWorker::trackStarted, note("started "));
    QObject::connect(from, &PlayerWorker::trackStopped, note("stopped "));
    QObject::connect(from, &PlayerWorker::notePressed, noteEvent("pressed "));
    QObject::connect(from, &PlayerWorker::noteReleased, noteEvent("released "));
    QObject::connect(from, &PlayerWorker::allTracksStopped,
                     [this] { signalLog.append(text("all stopped")); });
    QObject::connect(from, &PlayerWorker::finished, [this] { signalLog.append(text("finished")); });
    QObject::connect(from, &PlayerWorker::soundProblemChanged,
                     [this](const QString &problem) { signalLog.append(problem); });
    QObject::connect(from, &PlayerWorker::trackPositionChanged,
                     [this](const QString &id, quint64 position) {
                         positions.append(id + QLatin1Char(' ') + QString::number(position));
                     });
    worker->initialize();
    fake.clearCalls();
}

PlayerStage::~PlayerStage()
{
    if (worker)
        worker->terminate();
    delete worker;
}

void PlayerStage::play(const QString &trackId, const std::vector<TrackEvent> &events,
                       const Instrument &instrument)
{
    worker->playTrack(trackId, instrument, track(events), false, 0.5F, -0.25F);
}

void PlayerStage::passAt(quint64 clock)
{
    fake.setClock(clock);
    worker->update();
}

void PlayerStage::queuedPassAt(quint64 clock)
{
    fake.setClock(clock);
    QMetaObject::invokeMethod(worker, "update", Qt::QueuedConnection);
    QCoreApplication::sendPostedEvents(worker);
}

void PlayerStage::tickAt(quint64 clock)
{
    fake.setClock(clock);
    QMetaObject::invokeMethod(worker->findChild<QTimer *>(), "timeout");
}

QString PlayerStage::messageAt(quint64 clock)
{
    return thrownBy([&] { passAt(clock); });
}

QStringList PlayerStage::starts() const
{
    QStringList clocks;
    for (const QString &call : fake.calls(text("FMOD_Channel_SetDelay")))
        clocks.append(call.section(QLatin1Char(' '), -1).chopped(1));
    return clocks;
}

QStringList PlayerStage::channelCalls() const
{
    return fake.calls().filter(QRegularExpression(text("^FMOD_(Channel_|System_PlaySound)")));
}

Instrument PlayerStage::harp(const QByteArray &fadeout)
{
    return Instrument::fromBytes(text("harp"),
                                 "{\"fadeout\": " + fadeout
                                     + ", \"mapping\": {"
                                       "\"60\": {\"file\": \"/c.wav\", \"f\": 200},"
                                       "\"61\": {\"f\": 300},"
                                       "\"62\": {\"file\": \"/d.wav\", \"f\": 250}}}");
}

Track PlayerStage::track(const std::vector<TrackEvent> &events)
{
    Track track;
    for (const TrackEvent &event : events)
        track.addEvent(event);
    track.sortEvents();
    return track;
}

TrackEvent PlayerStage::quarter(quint32 pitch, quint64 time)
{
    return TrackEvent::makeNote(pitch, time, 30240);
}
