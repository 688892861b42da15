// What playing costs in real time: the share of a core that the player takes for 64 and for 512
// notes at a time, beside FluidSynth playing the same notes. And whether every note is on time
// while both cores are busy with something else.
//
// Neither program plays to a sound device: ours to a clock, FluidSynth to a file that keeps
// nothing.

#include "Busy.h"
#include "PeerProgram.h"
#include "Score.h"
#include "TimedOutput.h"
#include "VorbisTone.h"

#include "Player/TrackPlayer.h"
#include "Sound/BuiltinSystem.h"
#include "Sound/LiveStatus.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>

namespace {

constexpr int WarmUp = 5;
constexpr int Measured = 20;
constexpr int Loaded = 120;
constexpr int Parts = 8;
constexpr int Instruments = 4;
constexpr quint32 LowestPitch = 21;
constexpr quint32 AllPitches = 88;
constexpr std::size_t Tones = 16;

using Sounds = std::vector<std::vector<char>>;

/// Counts while a player plays.
struct Watch {
    std::shared_ptr<OutputDelays> delays = std::make_shared<OutputDelays>();
    std::shared_ptr<std::atomic<qint64>> longestPass = std::make_shared<std::atomic<qint64>>(0);
    FMOD::System *system = nullptr; // the player's
};

void wait(int seconds)
{
    QEventLoop loop;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(seconds * 1000);
    loop.exec();
}

/// `sounding` notes at a time in each part, for so many seconds. Some pitches more than that come
/// again and again, so that after a while all is heard that there is.
Score evenScore(int parts, int sounding, int length, int seconds)
{
    const auto pitchesInUse = static_cast<quint32>(sounding + 3);
    Score score;
    score.programs = {16, 17, 18, 19, 48, 49, 52, 60}; // they sound as long as the key is held
    score.length = length;
    score.step = length / sounding;
    const int notes = seconds * Score::TicksPerSecond / score.step;
    for (int part = 0; part < parts; ++part) {
        std::vector<quint32> pitches;
        pitches.reserve(static_cast<std::size_t>(notes));
        for (int i = 0; i < notes; ++i)
            pitches.push_back(LowestPitch + static_cast<quint32>(i + part) % pitchesInUse);
        score.parts.push_back(pitches);
    }
    return score;
}

Sounds makeSounds(int channels)
{
    Sounds sounds;
    for (std::size_t i = 0; i < Tones; ++i)
        sounds.push_back(VorbisTone::make(static_cast<int>(i), channels));
    return sounds;
}

void writeFile(const QString &name, const std::vector<char> &bytes)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly)
        || file.write(bytes.data(), static_cast<qint64>(bytes.size())) < 0)
        throw QStringLiteral("Cannot write %1").arg(name);
}

/// Every `apart` notes have a sound of their own, which those between borrow at another pitch.
Instrument makeInstrument(const QString &folder, const Sounds &sounds, quint32 apart)
{
    QDir().mkpath(folder);
    QStringList entries;
    for (quint32 note = LowestPitch; note < LowestPitch + AllPitches; ++note) {
        QString entry = QStringLiteral(R"("%1": {"f": %2)")
                            .arg(note)
                            .arg(440 * std::exp2((static_cast<int>(note) - 69) / 12.0));
        if ((note - LowestPitch) % apart == 0) {
            const QString file = QStringLiteral("%1.ogg").arg(note);
            writeFile(QDir(folder).filePath(file), sounds[note % Tones]);
            entry += QStringLiteral(R"(, "file": "%1")").arg(file);
        }
        entries << entry + QLatin1Char('}');
    }
    const QString tuning = QStringLiteral(R"({"fadeout": 0.25, "mapping": {%1}})");
    return Instrument::fromBytes(QStringLiteral("tone"),
                                 tuning.arg(entries.join(QLatin1Char(','))).toUtf8(),
                                 folder + QLatin1Char('/'));
}

std::vector<Instrument> makeInstruments(const QTemporaryDir &dir, const Sounds &sounds, int count,
                                        quint32 apart)
{
    std::vector<Instrument> instruments;
    instruments.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        instruments.push_back(
            makeInstrument(dir.filePath(QStringLiteral("%1-%2").arg(apart).arg(i)), sounds, apart));
    return instruments;
}

/// On the worker's thread: how long the event loop there, and with it the next pass, is delayed.
void watchPasses(const std::shared_ptr<std::atomic<qint64>> &longest)
{
    QTimer *const timer = std::make_unique<QTimer>().release(); // goes with its thread
    auto sinceLast = std::make_shared<QElapsedTimer>();
    sinceLast->start();
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer, &QTimer::timeout, timer, [longest, sinceLast] {
        *longest = std::max(longest->load(), sinceLast->nsecsElapsed());
        sinceLast->start();
    });
    QObject::connect(QThread::currentThread(), &QThread::finished, timer, &QObject::deleteLater);
    timer->start(1);
}

PlayerWorker::SystemFactory timedSystem(Watch &watch, bool watchesPasses)
{
    return [&watch, watchesPasses](FMOD::System **made) {
        if (watchesPasses)
            watchPasses(watch.longestPass);
        const auto delays = watch.delays;
        const FMOD_RESULT result =
            createBuiltinSystem(&watch.system, PreparePool::defaultThreads(),
                                [delays] { return std::make_unique<TimedOutput>(delays); });
        *made = watch.system;
        return result;
    };
}

void play(TrackPlayer &player, const std::vector<PlayedPart> &parts)
{
    for (std::size_t i = 0; i < parts.size(); ++i)
        player.playTrack(QString::number(i), QStringLiteral("Main"), parts[i].instrument,
                         parts[i].track, false, 0.01F, 0.0F);
}

/// Processor time per second.
double ownShare(const std::vector<PlayedPart> &parts)
{
    Watch watch;
    TrackPlayer player(nullptr, timedSystem(watch, false));
    play(player, parts);
    wait(WarmUp);
    QElapsedTimer timer;
    timer.start();
    const double start = Bench::ownSeconds();
    wait(Measured);
    return (Bench::ownSeconds() - start) / (static_cast<double>(timer.nsecsElapsed()) * 1e-9);
}

/// Nothing where it does not play to the end. A period of 480 frames is a whole number of
/// milliseconds, as which its clock takes it.
std::optional<double> fluidsynthShare(const QString &midi, const QStringList &options)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    const QStringList sink{QStringLiteral("-niq"),
                           QStringLiteral("-a"),
                           QStringLiteral("file"),
                           QStringLiteral("-r"),
                           QStringLiteral("48000"),
                           QStringLiteral("-z"),
                           QStringLiteral("480"),
                           QStringLiteral("-o"),
                           QStringLiteral("audio.file.name=/dev/null"),
                           QStringLiteral("-o"),
                           QStringLiteral("audio.file.type=raw"),
                           QStringLiteral("-o"),
                           QStringLiteral("synth.polyphony=8192")};
    process.start(QStringLiteral("fluidsynth"),
                  sink + options + QStringList{QString::fromLatin1(Bench::SoundFont), midi});
    process.waitForStarted();
    wait(WarmUp);
    QElapsedTimer timer;
    timer.start();
    const double start = Bench::processSeconds(process.processId());
    wait(Measured);
    const bool isPlaying = process.state() == QProcess::Running;
    const double spent = Bench::processSeconds(process.processId()) - start;
    const double passed = static_cast<double>(timer.nsecsElapsed()) * 1e-9;
    process.kill();
    process.waitForFinished();
    return isPlaying ? std::optional<double>(spent / passed) : std::nullopt;
}

void printShare(const char *name, double share, double ours)
{
    std::printf("%-46s %9.2f %% %9.1f x\n", name, share * 100, share / ours);
    std::fflush(stdout);
}

void printPeer(const char *name, const std::optional<double> &share, double ours)
{
    if (share)
        printShare(name, *share, ours);
    else
        std::printf("%-46s did not play\n", name);
}

void benchShare(int sounding, const std::vector<Instrument> &instruments, const QTemporaryDir &dir)
{
    std::printf("%d notes at a time\n", sounding);
    const Score score =
        evenScore(Parts, sounding / Parts, 2 * Score::TicksPerSecond, WarmUp + Measured + 2);
    const double ours = ownShare(playedParts(score, instruments));
    printShare("  this program", ours, ours);
    if (!Bench::hasFluidsynth())
        return;
    const QString midi = dir.filePath(QStringLiteral("even.mid"));
    const QByteArray bytes = midiFileOf(score);
    writeFile(midi, {bytes.begin(), bytes.end()});
    printPeer("  fluidsynth", fluidsynthShare(midi, {}), ours);
    printPeer("  fluidsynth, no reverb and chorus",
              fluidsynthShare(midi, {QStringLiteral("-R0"), QStringLiteral("-C0")}), ours);
}

double systemLoad()
{
    double load = 0.0;
    getloadavg(&load, 1);
    return load;
}

void printLateHeader()
{
    std::printf("%-26s %7s %6s %13s %9s %9s %9s %5s %9s %6s\n", "Two minutes beside two busy",
                "notes", "at a", "late in the", "missed", "worst", "worst", "gaps", "of a", "load");
    std::printf("%-26s %7s %6s %13s %9s %9s %9s %5s %9s\n", "processes", "", "time", "1st s, later",
                "frames", "pass, ms", "block, ms", "", "core");
}

unsigned long long lateStarts(const Watch &watch)
{
    return watch.system != nullptr ? LiveStatus::lateStarts(*watch.system) : 0;
}

void benchLate(const char *name, const std::vector<PlayedPart> &parts)
{
    Watch watch;
    TrackPlayer player(nullptr, timedSystem(watch, true));
    int notes = 0;
    int sounding = 0;
    int most = 0;
    QObject::connect(&player, &TrackPlayer::notePressed, &player, [&] {
        ++notes;
        most = std::max(most, ++sounding);
    });
    QObject::connect(&player, &TrackPlayer::noteReleased, &player, [&] { --sounding; });
    play(player, parts);
    const double start = Bench::ownSeconds();
    wait(1);
    const unsigned long long late = lateStarts(watch);
    wait(Loaded - 1);
    const double share = (Bench::ownSeconds() - start) / Loaded;
    std::printf("%-26s %7d %6d %6llu %6llu %9llu %9.1f %9.1f %5u %7.1f %% %6.1f\n", name, notes,
                most, late, lateStarts(watch) - late,
                static_cast<unsigned long long>(LiveStatus::missedFrames(*watch.system)),
                static_cast<double>(*watch.longestPass) * 1e-6, watch.delays->longest * 1e3,
                watch.delays->gaps.load(), share * 100, systemLoad());
    std::fflush(stdout);
}

/// Every note of it is a sound of five seconds that was not heard before; all parts strike
/// together.
Score unheardScore()
{
    Score score;
    score.step = Score::TicksPerSecond * Loaded / static_cast<int>(AllPitches);
    score.length = score.step;
    for (std::size_t part = 0; part < Tones; ++part) {
        score.parts.emplace_back();
        for (quint32 i = 0; i < AllPitches; ++i)
            score.parts.back().push_back(LowestPitch + i);
    }
    return score;
}

void benchDense(const QTemporaryDir &dir)
{
    const Score dense = evenScore(200, 10, Score::TicksPerSecond / 2, Loaded + 2);
    benchLate("  200 tracks", playedParts(dense, makeInstruments(dir, makeSounds(2), Parts, 5)));
}

void benchUnheard(const QTemporaryDir &dir)
{
    benchLate("  unheard chords of 16",
              playedParts(unheardScore(), makeInstruments(dir, makeSounds(2), Tones, 1)));
}

void benchShares(const QTemporaryDir &dir)
{
    // One channel, as FluidSynth's voices have, too.
    const std::vector<Instrument> instruments = makeInstruments(dir, makeSounds(1), Instruments, 5);
    std::printf("%-46s %11s %11s\n", "Processor time per second", "of a core", "ours = 1");
    for (const int sounding : {64, 512})
        benchShare(sounding, instruments, dir);
}

void run(const QStringList &tables)
{
    const QTemporaryDir dir;
    const auto isWanted = [&tables](const char *table) {
        return tables.isEmpty() || tables.contains(QLatin1String(table));
    };
    if (isWanted("share"))
        benchShares(dir);
    if (!isWanted("dense") && !isWanted("unheard"))
        return;
    const Busy busy(2, 4 * Loaded);
    printLateHeader();
    if (isWanted("dense"))
        benchDense(dir);
    if (isWanted("unheard"))
        benchUnheard(dir);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    try {
        run(QCoreApplication::arguments().mid(1));
    } catch (const QString &message) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        return 1;
    }
    return 0;
}
