#include "ABC/ABCParser.h"
#include "Player/PlayerWorker.h"
#include "Quillmoor/InstrumentChoice.h"
#include "Quillmoor/PakReader.h"
#include "Quillmoor/QuillmoorInstrumentSet.h"
#include "Render/TrackRenderer.h"
#include "Sound/BuiltinSystem.h"
#include "Sound/LiveStatus.h"
#include "demo/DemoGame.h"
#include "support/VirtualClock.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

using Frames = std::vector<short>; // left and right alternating

constexpr std::size_t DeviceBlock = 512;
constexpr std::size_t WriterBlock = 1024;
constexpr std::size_t OddBlock = 701;
constexpr std::size_t BusyBlock = 3001; // what passes while a worker does not get to its work
constexpr std::size_t Lead = 4800;      // from the command to a track's first tick

struct Part {
    Track track;
    Instrument instrument;
    float pan;
};
using Song = std::vector<Part>;

/// Everything of an instrument but the choice between several samples of a note, which is random
/// and another one for player and renderer: it has the first of them.
Instrument withoutChoice(const Instrument &instrument, const QString &package)
{
    const QString path = QStringLiteral("/sfx/instruments/%1/tuning.config").arg(instrument.name());
    QString tuning = QString::fromUtf8(PakReader(package).getFile(path));
    tuning.replace(QRegularExpression(QStringLiteral("\"files\": \\[([^,\\]]*)[^\\]]*\\]")),
                   QStringLiteral("\"file\": \\1"));
    return Instrument::fromBytes(instrument.name(), tuning.toUtf8(),
                                 QStringLiteral("pak://%1::").arg(package));
}

Frames readWave(const QString &fileName)
{
    SF_INFO info = {};
    SNDFILE *const file = sf_open(QFile::encodeName(fileName).constData(), SFM_READ, &info);
    if (!file || info.channels != 2 || info.samplerate != 48000)
        qFatal("no wave");
    Frames frames(static_cast<std::size_t>(info.frames) * 2);
    sf_readf_short(file, frames.data(), info.frames);
    sf_close(file);
    return frames;
}

Frames rendered(const Song &song)
{
    QTemporaryDir dir;
    const QString fileName = dir.filePath(QStringLiteral("song.wav"));
    TrackRenderer renderer(fileName);
    for (const Part &part : song)
        renderer.addTrack(part.track, part.instrument, 0.5F, part.pan);
    QSignalSpy finished(&renderer, &TrackRenderer::renderFinished);
    renderer.start();
    if (!finished.wait(100000))
        qFatal("no render");
    return readWave(fileName);
}

/// A song on its way through the worker and the built-in engine, as the test lets time pass.
class Playing {
public:
    explicit Playing(const Song &song)
    {
        worker.initialize();
        char id = 'a';
        for (const Part &part : song)
            worker.playTrack(QString(QLatin1Char(id++)), QStringLiteral("Main"), part.instrument,
                             part.track, false, 0.5F, part.pan);
    }
    ~Playing() { worker.terminate(); }
    Playing(const Playing &) = delete;
    Playing &operator=(const Playing &) = delete;

    /// What a 16-bit file has of the next frames.
    void play(std::size_t frames, Frames &heard)
    {
        for (int i = 0; i < 8; ++i) // each makes one sample
            worker.update();
        for (const float sample : clock.pull(frames))
            heard.push_back(static_cast<short>(std::lrint(std::min(sample * 32768.0F, 32767.0F))));
    }

    /// Whole blocks from the first tick on, at least so many frames.
    Frames playAll(std::size_t frames, std::size_t block)
    {
        Frames heard;
        play(Lead % block, heard);
        while (heard.size() < 2 * (Lead + frames))
            play(block, heard);
        heard.erase(heard.begin(), heard.begin() + 2 * Lead);
        heard.resize(2 * frames);
        return heard;
    }

    quint64 lateStarts() const { return LiveStatus::lateStarts(*system); }

    VirtualClock clock;
    FMOD::System *system = nullptr;
    PlayerWorker worker{[this](FMOD::System **made) {
        // Without threads every sample is made by who needs it: what is ready when is no accident.
        const FMOD_RESULT result = createBuiltinSystem(&system, 0, clock.outputs());
        *made = system;
        return result;
    }};
};

int largestDifference(const Frames &a, const Frames &b)
{
    int largest = a.size() == b.size() ? 0 : 65536;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

} // namespace

class tst_PlayedSong : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void isTheRenderedWave_data();
    void isTheRenderedWave();

private:
    Song songIn(const QString &name) const;

    QTemporaryDir m_dir;
    std::unique_ptr<QuillmoorInstrumentSet> m_instruments;
};

void tst_PlayedSong::initTestCase()
{
    DemoGame().write(m_dir.filePath(QStringLiteral("game")));
    writeDemoSongs(m_dir.filePath(QStringLiteral("songs")));
    m_instruments = std::make_unique<QuillmoorInstrumentSet>(
        QDir(m_dir.filePath(QStringLiteral("game"))), false);
}

Song tst_PlayedSong::songIn(const QString &name) const
{
    Song song;
    const QDir folder(m_dir.filePath(QStringLiteral("songs/") + name));
    for (const QString &fileName : folder.entryList(QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(fileName));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("no song");
        Part part;
        part.track = ABCParser().parse(QString::fromUtf8(file.readAll()));
        const QStringList &names = m_instruments->names();
        const int choice = chooseInstrument(part.track.headers(QStringLiteral("I")), names, 0);
        part.instrument = withoutChoice(m_instruments->instrument(names.at(choice)),
                                        m_dir.filePath(QStringLiteral("game/assets/packed.pak")));
        part.pan = static_cast<float>(song.size()) / 4 - 0.5F;
        song.push_back(part);
    }
    return song;
}

void tst_PlayedSong::isTheRenderedWave_data()
{
    QTest::addColumn<QString>("name");
    const QDir songs(m_dir.filePath(QStringLiteral("songs")));
    for (const QString &name : songs.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
        QTest::newRow(qPrintable(name)) << name;
}

/// How far apart the passes are makes no difference, not even to the fades.
void tst_PlayedSong::isTheRenderedWave()
{
    QFETCH(QString, name);
    const Song song = songIn(name);
    const Frames wave = rendered(song);
    for (const std::size_t block : {WriterBlock, DeviceBlock, OddBlock, BusyBlock}) {
        Playing playing(song);
        const Frames played = playing.playAll(wave.size() / 2, block);
        QCOMPARE(largestDifference(wave, played), 0);
        QCOMPARE(playing.lateStarts(), quint64(0));
    }
}

QTEST_MAIN(tst_PlayedSong)
#include "tst_PlayedSong.moc"
