#include "Render/RenderWorker.h"

#include "Player/DspClock.h"
#include "Player/ThrownMessage.h"
#include "Sound/WaveMeasure.h"
#include "Sound/WaveOutput.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace {

constexpr int Channels = 2048;

QString textOf(FMOD_RESULT result)
{
    return QString::fromLatin1(FMOD::errorString(result));
}

} // namespace

RenderWorker::RenderWorker(const QString &fileName)
    : m_fileName(fileName)
    , m_sounds(check())
    , m_scheduler(m_sounds, check(),
                  [this](const InstrumentSample &sample) { return chooseFile(sample); })
{
}

void RenderWorker::addTrack(const Track &track, const Instrument &instrument, float volume,
                            float pan)
{
    TrackInfo info;
    info.track = track;
    info.instrument = instrument;
    info.ticksPerMinute = track.ticksPerMinute();
    info.volume = volume;
    info.pan = pan;
    m_tracks.push_back(std::move(info));
    m_totalTicks = std::max(m_totalTicks, track.length());
}

void RenderWorker::render()
{
    RenderResult result;
    const std::optional<QString> message = messageThrownBy([&] { result = renderFile(); });
    if (message)
        dropOutput();
    deleteLater();
    if (message) {
        emit renderFailed(*message);
        return;
    }
    emit measured(result);
    emit finished();
}

RenderResult RenderWorker::renderFile()
{
    createSystem();
    openOutput();
    return closeOutput(mixTracks());
}

void RenderWorker::createSystem()
{
    const FMOD_RESULT result = FMOD::System_Create(&m_system);
    checkErrors(result);
    if (result != FMOD_OK)
        m_system = nullptr;
    if (!m_system)
        throw QStringLiteral("Could not start the sound system: %1").arg(textOf(result));
}

void RenderWorker::openOutput()
{
    checkErrors(m_system->setSoftwareChannels(Channels));
    checkErrors(m_system->setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT));
    m_touchesFile = !QFileInfo::exists(m_fileName);
    QByteArray fileName = m_fileName.toLocal8Bit();
    const FMOD_RESULT result =
        m_system->init(Channels, FMOD_INIT_STREAM_FROM_UPDATE, fileName.data());
    checkErrors(result);
    if (result != FMOD_OK)
        throw failure(result);
    m_touchesFile = true;
}

int RenderWorker::mixTracks()
{
    PassClock clock = PassClock::of(*m_system, check());
    requireEnd(clock);
    while (!m_tracks.empty() || !m_notes.empty()) {
        scheduleTracks(clock);
        fadeAndStop(m_notes, clock.now, check());
        clock = advance(clock);
    }
    return clock.rate;
}

void RenderWorker::requireEnd(const PassClock &clock) const
{
    if (clock.rate <= 0)
        throw failure(QStringLiteral("The output has no sample rate."));
    const quint64 limit = DspClock::frames(MaximumHours * 3600.0, clock.rate);
    for (const TrackInfo &info : m_tracks) {
        if (info.endDsp(clock.rate) > limit)
            throw failure(
                QStringLiteral("It would sound for more than %1 hours.").arg(MaximumHours));
    }
}

void RenderWorker::scheduleTracks(const PassClock &clock)
{
    quint64 currentTick = std::numeric_limits<quint64>::max();
    for (auto info = m_tracks.begin(); info != m_tracks.end();) {
        currentTick = std::min(currentTick, info->tickOfDsp(clock.horizon(), clock.rate));
        if (info->isScheduled()) {
            info = m_tracks.erase(info);
            continue;
        }
        m_noteCount +=
            static_cast<quint64>(m_scheduler.schedule(*m_system, QString(), *info, clock, m_notes));
        emit progress(currentTick, m_totalTicks);
        ++info;
    }
}

PassClock RenderWorker::advance(const PassClock &clock)
{
    if (QThread::currentThread()->isInterruptionRequested())
        throw QStringLiteral("The rendering was cancelled.");
    const FMOD_RESULT result = m_system->update();
    checkErrors(result);
    const PassClock next = PassClock::of(*m_system, check());
    if (next.now > clock.now)
        return next;
    throw result == FMOD_OK ? failure(QStringLiteral("The output stands still.")) : failure(result);
}

RenderResult RenderWorker::closeOutput(int rate)
{
    const std::optional<WaveOutput::Report> report = WaveOutput::report(*m_system);
    m_keepsOlderFile = report.has_value();
    const FMOD_RESULT released = releaseSystem();
    if (released != FMOD_OK)
        throw failure(released);
    RenderResult result = report ? RenderResult::of(*report, rate) : measureFile();
    result.notes = m_noteCount;
    return result;
}

RenderResult RenderWorker::measureFile() const
{
    const auto measure = WaveMeasure::ofFile(m_fileName.toLocal8Bit().constData());
    if (!measure)
        throw failure(QStringLiteral("The file cannot be read back."));
    return RenderResult::of({measure->frames, measure->peak, measure->clipped},
                            measure->sampleRate);
}

void RenderWorker::dropOutput()
{
    m_tracks.clear();
    m_notes.clear();
    if (m_system) {
        m_keepsOlderFile = WaveOutput::abandon(*m_system);
        releaseSystem();
    }
    if (m_touchesFile && !m_keepsOlderFile)
        removeFile();
}

FMOD_RESULT RenderWorker::releaseSystem()
{
    m_sounds.releaseAll();
    const FMOD_RESULT result = m_system->release();
    checkErrors(result);
    m_system = nullptr;
    return result;
}

/// Leaves devices, pipes and directories alone.
void RenderWorker::removeFile() const
{
    if (QFileInfo(m_fileName).isFile())
        QFile::remove(m_fileName);
}

QString RenderWorker::chooseFile(const InstrumentSample &sample)
{
    const auto count = static_cast<quint32>(sample.files().size());
    return count == 0 ? QString() : sample.files().at(static_cast<int>(m_random() % count));
}

QString RenderWorker::failure(const QString &reason) const
{
    return QStringLiteral("Could not write %1: %2").arg(m_fileName, reason);
}

QString RenderWorker::failure(FMOD_RESULT result) const
{
    const std::string reason = m_system ? WaveOutput::failureReason(*m_system) : std::string();
    return failure(reason.empty() ? textOf(result) : QString::fromStdString(reason));
}

FmodCheck RenderWorker::check() const
{
    return [this](FMOD_RESULT result) { checkErrors(result); };
}

void RenderWorker::checkErrors(FMOD_RESULT result) const
{
    logFmodError("Render/RenderWorker", "void RenderWorker::checkErrors(FMOD_RESULT) const",
                 result);
}
