// Times the way of a song into a wave file: each demo song from nothing, and a dense score of
// 30,000 notes beside FluidSynth playing the same notes from a MIDI file.

#include "PeerProgram.h"
#include "Score.h"

#include "ABC/ABCParser.h"
#include "Quillmoor/InstrumentChoice.h"
#include "Quillmoor/QuillmoorInstrumentSet.h"
#include "Render/RenderWorker.h"
#include "Render/UnmappedNotes.h"
#include "demo/DemoGame.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr int Parts = 15;
constexpr int NotesPerPart = 2000;
constexpr int AllNotes = Parts * NotesPerPart;

struct Timing {
    RenderResult result;
    double seconds = 0.0;
};

Timing render(const std::vector<PlayedPart> &voices, const QString &fileName)
{
    Timing timing;
    QElapsedTimer timer;
    timer.start();
    const std::unique_ptr<RenderWorker> worker = std::make_unique<RenderWorker>(fileName);
    QObject::connect(worker.get(), &RenderWorker::measured,
                     [&timing](const RenderResult &result) { timing.result = result; });
    QString failure;
    QObject::connect(worker.get(), &RenderWorker::renderFailed,
                     [&failure](const QString &message) { failure = message; });
    for (const PlayedPart &voice : voices)
        worker->addTrack(voice.track, voice.instrument, 0.3F, 0.0F);
    worker->render();
    if (!failure.isEmpty())
        throw QString(failure);
    timing.seconds = static_cast<double>(timer.nsecsElapsed()) * 1e-9;
    return timing;
}

void printRow(const QString &name, quint64 notes, double length, double seconds)
{
    std::printf("%-34s %7llu %9.1f s %9.3f s %9.1f x\n", qPrintable(name),
                static_cast<unsigned long long>(notes), length, seconds, length / seconds);
}

QByteArray contentsOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::vector<PlayedPart> voicesOf(const QDir &song, const QuillmoorInstrumentSet &set)
{
    std::vector<PlayedPart> voices;
    for (const QFileInfo &part : song.entryInfoList({QStringLiteral("*.abc")}, QDir::Files)) {
        PlayedPart voice;
        voice.track = ABCParser().parse(QString::fromUtf8(contentsOf(part.filePath())));
        const int index =
            chooseInstrument(voice.track.headers(QStringLiteral("I")), set.names(), 0);
        voice.instrument = set.instrument(set.names().at(index));
        voices.push_back(voice);
    }
    return voices;
}

void benchSongs(const QDir &songs, const QuillmoorInstrumentSet &set, const QString &out)
{
    std::printf("The demo songs, each with nothing loaded before\n");
    for (const QFileInfo &song : songs.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const Timing timing = render(voicesOf(QDir(song.filePath()), set), out);
        printRow(song.fileName(), timing.result.notes, timing.result.seconds, timing.seconds);
    }
}

/// The pitches of one part: a walk over white keys that never strikes a sounding one.
std::vector<quint32> pitchesOfPart(int part)
{
    static const quint32 scale[] = {48, 50, 52, 53, 55, 57, 59, 60, 62, 64, 65,
                                    67, 69, 71, 72, 74, 76, 77, 79, 81, 83, 84};
    std::minstd_rand random(static_cast<unsigned>(part + 1));
    std::vector<quint32> pitches;
    auto place = static_cast<std::size_t>(random() % 22);
    for (int i = 0; i < NotesPerPart; ++i) {
        place = (place + 1 + random() % 4) % 22;
        pitches.push_back(scale[place]);
    }
    return pitches;
}

/// The programs are far from each other.
Score denseScore()
{
    Score score;
    for (int part = 0; part < Parts; ++part) {
        score.parts.push_back(pitchesOfPart(part));
        score.programs.push_back(part * 7);
    }
    return score;
}

/// Those that map the whole score.
std::vector<Instrument> instrumentsFor(const Track &track, const QuillmoorInstrumentSet &set)
{
    std::vector<Instrument> instruments;
    for (const QString &name : set.names()) {
        if (UnmappedNotes::findUnmapped(track, set.instrument(name)).isEmpty())
            instruments.push_back(set.instrument(name));
    }
    return instruments;
}

double fluidsynthSeconds(const Score &score, const QTemporaryDir &dir)
{
    const QString midi = dir.filePath(QStringLiteral("dense.mid"));
    QFile file(midi);
    if (!file.open(QIODevice::WriteOnly))
        return 0.0;
    file.write(midiFileOf(score));
    file.close();

    QElapsedTimer timer;
    timer.start();
    const int status = QProcess::execute(QStringLiteral("timeout"),
                                         {QStringLiteral("600"), QStringLiteral("fluidsynth"),
                                          QStringLiteral("-niq"), QStringLiteral("-F"),
                                          dir.filePath(QStringLiteral("fluidsynth.wav")),
                                          QString::fromLatin1(Bench::SoundFont), midi});
    return status == 0 ? static_cast<double>(timer.nsecsElapsed()) * 1e-9 : 0.0;
}

void benchDenseScore(const QuillmoorInstrumentSet &set, const QTemporaryDir &dir,
                     const QString &out)
{
    std::printf("A dense score of %d notes\n", AllNotes);
    const Score score = denseScore();
    const Timing ours = render(playedParts(score, instrumentsFor(trackOf(score, 0), set)), out);
    printRow(QStringLiteral("this program"), ours.result.notes, ours.result.seconds, ours.seconds);
    if (!Bench::hasFluidsynth())
        return;
    const double theirs = fluidsynthSeconds(score, dir);
    printRow(QStringLiteral("fluidsynth -F"), AllNotes, ours.result.seconds, theirs);
    std::printf("%-34s %39.1f x\n", "ratio", theirs / ours.seconds);
}

void run()
{
    const QTemporaryDir dir;
    const QString game = dir.filePath(QStringLiteral("game"));
    const QString songs = dir.filePath(QStringLiteral("songs"));
    const QString out = dir.filePath(QStringLiteral("out.wav"));
    DemoGame().write(game);
    writeDemoSongs(songs);
    const QuillmoorInstrumentSet set{QDir(game), false};

    std::printf("%-34s %7s %11s %11s %11s\n", "", "notes", "length", "time", "real time");
    benchSongs(QDir(songs), set, out);
    benchDenseScore(set, dir, out);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QUILLMOOR_SOUND", "builtin");
    const QGuiApplication application(argc, argv);
    try {
        run();
    } catch (const QString &message) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        return 1;
    }
    return 0;
}
