#include "cli/Playback.h"

#include "cli/Console.h"
#include "model/Signals.h"

#include <QMetaType>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

using std::chrono::milliseconds;
using Seconds = std::chrono::duration<double>;

constexpr int Rate = 48000; // any would do to tell ticks in seconds

constexpr milliseconds LongestStart{10000};
/// Whatever an instrument says.
constexpr Seconds LongestFade{3600.0};
/// What an output holds of the music that the player has made: the last of a fade is heard, too.
constexpr milliseconds OutputDelay{100};
/// In which what sounds becomes silent without a click.
constexpr milliseconds SilenceDelay{60};

QString trackId(int number)
{
    return QStringLiteral("T%1").arg(number + 1);
}

double inSeconds(quint64 frames)
{
    return static_cast<double>(frames) / Rate;
}

TrackInfo beginning(const Part &part)
{
    TrackInfo info;
    info.track = part.track;
    info.instrument = part.instrument;
    info.ticksPerMinute = part.track.ticksPerMinute();
    return info;
}

/// When `tick` is reached, in seconds from the beginning. Moves `info` on to it.
double timeOf(TrackInfo &info, quint64 tick)
{
    for (; !info.isScheduled(); ++info.nextEvent) {
        const TrackEvent &event = std::as_const(info.track).event(static_cast<int>(info.nextEvent));
        if (event.time() > tick)
            break;
        if (event.type() == TrackEvent::Tempo)
            info.passTempo(event, Rate);
    }
    return inSeconds(info.dspOfTick(tick, Rate));
}

double lengthOf(const Part &part)
{
    TrackInfo info = beginning(part);
    return timeOf(info, part.track.length());
}

/// "1:02:03", without hours "2:03".
QString clockText(double seconds)
{
    const auto whole = static_cast<qint64>(std::min(seconds, 1e15));
    const QString hours =
        whole < 3600 ? QString() : QString::number(whole / 3600) + QLatin1Char(':');
    const QString minutes = QString::number(whole / 60 % 60);
    return hours + (hours.isEmpty() ? minutes : minutes.rightJustified(2, QLatin1Char('0')))
        + QLatin1Char(':') + QString::number(whole % 60).rightJustified(2, QLatin1Char('0'));
}

} // namespace

Playback::Playback(const QVector<Part> &parts, Console &console)
    : m_parts(parts)
    , m_console(console)
    , m_playing(parts.size())
{
    for (QTimer *const timer : {&m_startLimit, &m_end}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer, &QTimer::timeout, &m_loop, &QEventLoop::quit);
    }
    measure();
}

void Playback::measure()
{
    for (int i = 0; i < m_parts.size(); ++i) {
        const Part &part = m_parts.at(i);
        const double length = lengthOf(part);
        if (length > m_length)
            m_longest = i;
        m_length = std::max(m_length, length);
        m_fadeEnd = std::max(m_fadeEnd, inSeconds(beginning(part).endDsp(Rate)));
    }
    if (!m_parts.isEmpty())
        m_shown = beginning(m_parts.at(m_longest));
}

void Playback::run()
{
    prepare();
    TrackPlayer player;
    const SignalWatch watch; // gone before the player, so that a signal ends a slow farewell
    listen(player);
    QObject::connect(&watch, &SignalWatch::interrupted, &player, [this, &player] {
        player.stopAll();
        endWithin(SilenceDelay);
    });
    start(player);
    m_loop.exec();
    m_console.clearProgress();
    if (watch.received() != 0)
        SignalWatch::dieBy(watch.received());
    if (!m_isStarted)
        throw QStringLiteral("Nothing was played: the sound system does not start. %1")
            .arg(player.soundProblem());
}

void Playback::prepare()
{
    qRegisterMetaType<Track>("Track"); // they cross to the player's thread
    qRegisterMetaType<Instrument>("Instrument");
    // What is wrong with the output is the player's soundProblem().
    m_console.leaveOut("Sound/LiveOutput");
}

void Playback::listen(TrackPlayer &player)
{
    QObject *const context = &m_loop;
    QObject::connect(&player, &TrackPlayer::trackStarted, context,
                     [this, &player] { onTrackStarted(player); });
    QObject::connect(&player, &TrackPlayer::trackStopped, context, [this] { onTrackStopped(); });
    QObject::connect(&player, &TrackPlayer::soundProblemChanged, context,
                     [this, &player] { tellProblem(player); });
    QObject::connect(&player, &TrackPlayer::notePressed, context, [this] { ++m_notes; });
    QObject::connect(&player, &TrackPlayer::trackPositionChanged, context,
                     [this](const QString &id, quint64 ticks) { onPositionChanged(id, ticks); });
}

void Playback::start(TrackPlayer &player)
{
    m_startLimit.start(LongestStart);
    for (int i = 0; i < m_parts.size(); ++i) {
        const Part &part = m_parts.at(i);
        player.playTrack(trackId(i), QStringLiteral("Main"), part.instrument, part.track, false,
                         part.volume, part.pan);
    }
}

void Playback::onTrackStarted(const TrackPlayer &player)
{
    if (m_isStarted)
        return;
    m_isStarted = true;
    m_startLimit.stop();
    tellProblem(player);
    showPosition(0.0);
}

void Playback::onTrackStopped()
{
    if (--m_playing > 0)
        return;
    const Seconds fade(std::clamp(m_fadeEnd - m_length, 0.0, LongestFade.count()));
    endWithin(std::chrono::ceil<milliseconds>(fade) + OutputDelay);
}

void Playback::onPositionChanged(const QString &id, quint64 ticks)
{
    if (id == trackId(m_longest))
        showPosition(timeOf(m_shown, ticks));
}

/// An outage once. One that ends before the music begins is none.
void Playback::tellProblem(const TrackPlayer &player)
{
    if (!m_isStarted)
        return;
    const QString problem = player.soundProblem();
    if (!problem.isEmpty() && !m_isSilent)
        m_console.message(problem + QStringLiteral(" The music goes on in silence."));
    m_isSilent = !problem.isEmpty();
}

void Playback::showPosition(double seconds)
{
    m_console.progress(QStringLiteral("Playing: %1 / %2")
                           .arg(clockText(std::min(seconds, m_length)), clockText(m_length)));
}

void Playback::endWithin(milliseconds time)
{
    if (!m_end.isActive() || time < m_end.remainingTimeAsDuration())
        m_end.start(time);
}
