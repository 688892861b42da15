// Times the way of a song into a wave file: each demo song from nothing, and a dense score of
// 30,000 notes beside FluidSynth playing the same notes from a MIDI file.

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
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr int Parts = 15;
constexpr int NotesPerPart = 2000;
constexpr int AllNotes = Parts * NotesPerPart;
constexpr int MidiTicksPerQuarter = 480;
constexpr int MidiStep = 60; // a thirty-second: 62.5 ms at 120 beats a minute
constexpr int MidiLength = 240;
constexpr quint64 TicksPerMidiTick = Ticks::PerQuarterNote / MidiTicksPerQuarter;
const char *const SoundFont = "/usr/share/sounds/sf2/TimGM6mb.sf2";

struct Voice {
    Track track;
    Instrument instrument;
};

struct Timing {
    RenderResult result;
    double seconds = 0.0;
};

Timing render(const std::vector<Voice> &voices, const QString &fileName)
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
    for (const Voice &voice : voices)
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

std::vector<Voice> voicesOf(const QDir &song, const QuillmoorInstrumentSet &set)
{
    std::vector<Voice> voices;
    for (const QFileInfo &part : song.entryInfoList({QStringLiteral("*.abc")}, QDir::Files)) {
        Voice voice;
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

Track trackOfPart(int part)
{
    Track track;
    quint64 time = 0;
    for (const quint32 pitch : pitchesOfPart(part)) {
        track.addEvent(TrackEvent::makeNote(pitch, time, MidiLength * TicksPerMidiTick));
        time += MidiStep * TicksPerMidiTick;
    }
    track.sortEvents();
    return track;
}

void appendBigEndian(QByteArray &bytes, quint32 value, int count)
{
    for (int i = count - 1; i >= 0; --i)
        bytes.append(static_cast<char>(value >> (8 * i) & 0xFF));
}

void appendDelta(QByteArray &bytes, quint32 ticks)
{
    if (ticks >= 128)
        bytes.append(static_cast<char>(0x80 | ticks >> 7));
    bytes.append(static_cast<char>(ticks & 0x7F));
}

void appendNote(QByteArray &bytes, int status, quint32 pitch)
{
    bytes.append(static_cast<char>(status));
    bytes.append(static_cast<char>(pitch));
    bytes.append(static_cast<char>(80));
}

QByteArray midiChunk(const char *type, const QByteArray &contents)
{
    QByteArray chunk(type);
    appendBigEndian(chunk, static_cast<quint32>(contents.size()), 4);
    return chunk + contents;
}

/// Each note ends four steps after its start, just before the start of another one.
QByteArray midiTrackOfPart(int part)
{
    const int channel = part < 9 ? part : part + 1; // channel 10 is the drums'
    constexpr std::size_t steps = MidiLength / MidiStep;
    const std::vector<quint32> pitches = pitchesOfPart(part);
    QByteArray events;
    appendDelta(events, 0);
    events.append(static_cast<char>(0xC0 | channel)).append(static_cast<char>(part * 7));
    for (std::size_t i = 0; i < pitches.size() + steps; ++i) {
        quint32 delta = i == 0 ? 0 : MidiStep;
        if (i >= steps) {
            appendDelta(events, delta);
            appendNote(events, 0x80 | channel, pitches[i - steps]);
            delta = 0;
        }
        if (i < pitches.size()) {
            appendDelta(events, delta);
            appendNote(events, 0x90 | channel, pitches[i]);
        }
    }
    events.append(QByteArray::fromHex("00ff2f00"));
    return midiChunk("MTrk", events);
}

QByteArray midiFile()
{
    QByteArray header;
    appendBigEndian(header, 1, 2);
    appendBigEndian(header, Parts, 2);
    appendBigEndian(header, MidiTicksPerQuarter, 2);
    QByteArray bytes = midiChunk("MThd", header);
    for (int part = 0; part < Parts; ++part)
        bytes += midiTrackOfPart(part);
    return bytes;
}

/// The instruments that map the whole score, in turn.
std::vector<Voice> denseVoices(const QuillmoorInstrumentSet &set)
{
    std::vector<Instrument> instruments;
    for (const QString &name : set.names()) {
        if (UnmappedNotes::findUnmapped(trackOfPart(0), set.instrument(name)).isEmpty())
            instruments.push_back(set.instrument(name));
    }
    std::vector<Voice> voices;
    for (int part = 0; part < Parts && !instruments.empty(); ++part) {
        const auto index = static_cast<std::size_t>(part) % instruments.size();
        voices.push_back({trackOfPart(part), instruments[index]});
    }
    return voices;
}

double fluidsynthSeconds(const QTemporaryDir &dir)
{
    const QString midi = dir.filePath(QStringLiteral("dense.mid"));
    QFile file(midi);
    if (!file.open(QIODevice::WriteOnly))
        return 0.0;
    file.write(midiFile());
    file.close();

    QElapsedTimer timer;
    timer.start();
    const int status = QProcess::execute(QStringLiteral("timeout"),
                                         {QStringLiteral("600"), QStringLiteral("fluidsynth"),
                                          QStringLiteral("-niq"), QStringLiteral("-F"),
                                          dir.filePath(QStringLiteral("fluidsynth.wav")),
                                          QString::fromLatin1(SoundFont), midi});
    return status == 0 ? static_cast<double>(timer.nsecsElapsed()) * 1e-9 : 0.0;
}

void benchDenseScore(const QuillmoorInstrumentSet &set, const QTemporaryDir &dir,
                     const QString &out)
{
    std::printf("A dense score of %d notes\n", AllNotes);
    const Timing ours = render(denseVoices(set), out);
    printRow(QStringLiteral("this program"), ours.result.notes, ours.result.seconds, ours.seconds);
    if (!QFile::exists(QString::fromLatin1(SoundFont))
        || QStandardPaths::findExecutable(QStringLiteral("fluidsynth")).isEmpty()) {
        std::printf("%-34s not installed\n", "fluidsynth");
        return;
    }
    const double theirs = fluidsynthSeconds(dir);
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
