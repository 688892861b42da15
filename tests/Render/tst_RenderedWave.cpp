#include "Quillmoor/PakWriter.h"
#include "Render/RenderWorker.h"
#include "Render/TrackRenderer.h"

#include <QDir>
#include <QSignalSpy>
#include <QtTest>

#include <sndfile.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

using Frames = std::vector<short>; // left and right alternating

constexpr short Level = 8192;

/// A stereo sound at 48 kHz that holds `level` on both sides: it is heard from its first frame to
/// its last, and comes out as it is.
QByteArray soundOf(std::size_t frames, short level = Level)
{
    QTemporaryDir dir;
    const QString fileName = dir.filePath(QStringLiteral("sound.wav"));
    SF_INFO info = {};
    info.samplerate = 48000;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE *const file = sf_open(QFile::encodeName(fileName).constData(), SFM_WRITE, &info);
    const Frames samples(frames * 2, level);
    sf_writef_short(file, samples.data(), static_cast<sf_count_t>(frames));
    sf_close(file);
    QFile written(fileName);
    return written.open(QIODevice::ReadOnly) ? written.readAll() : QByteArray();
}

void writeFile(const QString &fileName, const QByteArray &contents)
{
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), qint64(contents.size()));
}

QByteArray bytesOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

Frames framesOf(const QString &fileName)
{
    SF_INFO info = {};
    SNDFILE *const file = sf_open(QFile::encodeName(fileName).constData(), SFM_READ, &info);
    if (!file || info.channels != 2 || info.samplerate != 48000)
        return {};
    Frames frames(static_cast<std::size_t>(info.frames) * 2);
    sf_readf_short(file, frames.data(), info.frames);
    sf_close(file);
    return frames;
}

int leftAt(const Frames &frames, std::size_t frame)
{
    return frames.at(frame * 2);
}

/// The frames at which sound follows silence.
std::vector<std::size_t> onsets(const Frames &frames)
{
    std::vector<std::size_t> found;
    bool silent = true;
    for (std::size_t i = 0; i < frames.size() / 2; ++i) {
        const bool nowSilent = frames[i * 2] == 0 && frames[i * 2 + 1] == 0;
        if (silent && !nowSilent)
            found.push_back(i);
        silent = nowSilent;
    }
    return found;
}

std::size_t lastSound(const Frames &frames)
{
    std::size_t last = frames.size();
    while (last > 0 && frames[last - 1] == 0)
        --last;
    return last == 0 ? 0 : (last - 1) / 2;
}

TrackEvent quarter(quint64 time, quint32 pitch = 60)
{
    return TrackEvent::makeNote(pitch, time, 30240);
}

Track trackOf(const QVector<TrackEvent> &events)
{
    Track track;
    for (const TrackEvent &event : events)
        track.addEvent(event);
    track.sortEvents();
    return track;
}

/// A folder with samples, an instrument of them, and the file to render.
class Studio {
public:
    explicit Studio(const QByteArray &sound = soundOf(500))
    {
        writeFile(dir.filePath(QStringLiteral("c.wav")), sound);
    }

    /// Maps 60, and 72 at twice the rate.
    Instrument instrument(const QByteArray &fadeout = "0") const
    {
        return Instrument::fromBytes(QStringLiteral("test"),
                                     "{\"fadeout\": " + fadeout
                                         + ", \"mapping\": {"
                                           "\"60\": {\"file\": \"/c.wav\", \"f\": 200},"
                                           "\"72\": {\"f\": 400}}}",
                                     dir.path());
    }

    /// The message of the failure; empty for success.
    QString render(const QVector<TrackEvent> &events, const Instrument &with, float volume = 1.0F,
                   float pan = 0.0F)
    {
        const std::unique_ptr<RenderWorker> worker = std::make_unique<RenderWorker>(fileName);
        QSignalSpy failed(worker.get(), &RenderWorker::renderFailed);
        QSignalSpy measured(worker.get(), &RenderWorker::measured);
        if (!events.isEmpty())
            worker->addTrack(trackOf(events), with, volume, pan);
        worker->render();
        if (!measured.isEmpty())
            result = measured.constFirst().constFirst().value<RenderResult>();
        return failed.isEmpty() ? QString() : failed.constFirst().constFirst().toString();
    }

    Frames rendered(const QVector<TrackEvent> &events)
    {
        return render(events, instrument()).isEmpty() ? framesOf(fileName) : Frames();
    }

    QStringList files() const { return QDir(dir.path()).entryList(QDir::Files | QDir::Hidden); }

    QTemporaryDir dir;
    QString fileName = dir.filePath(QStringLiteral("out.wav"));
    RenderResult result;
};

using Starts = std::vector<std::size_t>;

} // namespace

class tst_RenderedWave : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void holdsNoSamplesWithoutTracks();
    void startsNotesAtTheirFrames();
    void followsTempoChanges();
    void holdsTheSampleAsItIs();
    void appliesVolumeAndPan();
    void playsDerivedNotesAtTheirPitch();
    void endsWithTheFadeTail();
    void fadesInAStraightLine();
    void fadesANoteWithoutLength();
    void stopsANoteWithoutFadeoutSoonAfterItsEnd();
    void tellsLengthPeakAndClipping();
    void givesTheSameBytesTwice();
    void rendersASampleOfAPackage();
    void goesOnWithoutAMissingSample();
    void keepsTheOlderFileAtAnUnmappedNote();
    void replacesTheOlderFile();
    void failsInAFolderThatIsNotThere();
    void tellsOfAFullDisk();
    void keepsTheOlderFileWhenCancelled();
    void keepsTheOlderFileWhenDestroyed();
};

void tst_RenderedWave::initTestCase()
{
    qputenv("QUILLMOOR_SOUND", "builtin");
}

void tst_RenderedWave::holdsNoSamplesWithoutTracks()
{
    Studio studio;
    QCOMPARE(studio.render({}, Instrument()), QString());
    SF_INFO info = {};
    SNDFILE *const file = sf_open(QFile::encodeName(studio.fileName).constData(), SFM_READ, &info);
    QVERIFY(file);
    QCOMPARE(info.frames, sf_count_t(0));
    sf_close(file);
    QCOMPARE(studio.result.frames, quint64(0));
    QCOMPARE(studio.result.seconds, 0.0);
}

void tst_RenderedWave::startsNotesAtTheirFrames()
{
    Studio studio;
    const Frames frames =
        studio.rendered({quarter(0), quarter(30240), quarter(60482), quarter(120967)});
    QVERIFY((onsets(frames) == Starts{0, 24000, 48001, 96005}));
}

void tst_RenderedWave::followsTempoChanges()
{
    Studio studio;
    const Frames frames = studio.rendered(
        {quarter(0), TrackEvent::makeTempo(30240, 1, 4, 240), quarter(30240), quarter(60480),
         TrackEvent::makeTempo(75600, 1, 4, 60), quarter(90720), quarter(120960)});
    // 24000 frames a quarter, then 12000, then half a quarter more and 48000.
    QVERIFY((onsets(frames) == Starts{0, 24000, 36000, 66000, 114000}));
}

void tst_RenderedWave::holdsTheSampleAsItIs()
{
    Studio studio;
    const Frames frames = studio.rendered({quarter(30240)});
    QCOMPARE(leftAt(frames, 23999), 0);
    for (std::size_t i = 24000; i < 24500; ++i)
        QCOMPARE(leftAt(frames, i), int(Level));
    QCOMPARE(leftAt(frames, 24500), 0);
    QCOMPARE(studio.result.notes, quint64(1));
}

void tst_RenderedWave::appliesVolumeAndPan()
{
    Studio studio;
    QCOMPARE(studio.render({quarter(0)}, studio.instrument(), 0.5F, -1.0F), QString());
    const Frames frames = framesOf(studio.fileName);
    QCOMPARE(int(frames.at(200)), Level / 2);
    QCOMPARE(int(frames.at(201)), 0);
}

void tst_RenderedWave::playsDerivedNotesAtTheirPitch()
{
    Studio studio(soundOf(4800));
    const std::size_t last = lastSound(studio.rendered({quarter(0, 72)}));
    QVERIFY2(last > 2380 && last < 2500, QByteArray::number(qulonglong(last)).constData());
}

void tst_RenderedWave::endsWithTheFadeTail()
{
    Studio studio(soundOf(100000));
    QCOMPARE(studio.render({quarter(0)}, studio.instrument("1")), QString());
    // It ends at 24000 and fades until 72000; the first step behind that is at 72704.
    QCOMPARE(studio.result.frames, quint64(73728));
    QCOMPARE(studio.result.seconds, 1.536);
    const Frames frames = framesOf(studio.fileName);
    QCOMPARE(frames.size(), std::size_t(73728 * 2));
    const std::size_t last = lastSound(frames);
    QVERIFY2(last > 70000 && last <= 73728, QByteArray::number(qulonglong(last)).constData());
}

void tst_RenderedWave::fadesInAStraightLine()
{
    Studio studio(soundOf(100000));
    QCOMPARE(studio.render({quarter(0)}, studio.instrument("1")), QString());
    const Frames frames = framesOf(studio.fileName);
    QCOMPARE(leftAt(frames, 23999), int(Level));
    for (std::size_t i = 24000; i < 72000; ++i) {
        const double expected = Level * static_cast<double>(71999 - i) / 48000;
        QVERIFY(std::abs(leftAt(frames, i) - expected) < 0.6);
    }
    for (std::size_t i = 72000; i < frames.size() / 2; ++i)
        QCOMPARE(leftAt(frames, i), 0);
}

void tst_RenderedWave::fadesANoteWithoutLength()
{
    Studio studio(soundOf(100000));
    QCOMPARE(studio.render({TrackEvent::makeNote(60, 1260, 0)}, studio.instrument("0.1")),
             QString());
    const Frames frames = framesOf(studio.fileName);
    QVERIFY((onsets(frames) == Starts{1000}));
    QVERIFY(std::abs(leftAt(frames, 1000 + 2399) - Level / 2) <= 1);
    QVERIFY(std::abs(int(lastSound(frames)) - 5799) <= 2);
}

void tst_RenderedWave::stopsANoteWithoutFadeoutSoonAfterItsEnd()
{
    Studio studio(soundOf(100000));
    const Frames frames = studio.rendered({quarter(0)});
    const std::size_t last = lastSound(frames);
    QVERIFY2(last >= 24000 && last < 24000 + 256, QByteArray::number(qulonglong(last)).constData());
}

void tst_RenderedWave::tellsLengthPeakAndClipping()
{
    Studio studio(soundOf(500, 16384));
    QCOMPARE(studio.render({quarter(0), quarter(0), quarter(0)}, studio.instrument()), QString());
    QCOMPARE(studio.result.notes, quint64(3));
    QCOMPARE(studio.result.peak, 1.5F);
    QCOMPARE(studio.result.clipped, quint64(1000));
    QCOMPARE(studio.result.frames * 2, quint64(framesOf(studio.fileName).size()));
}

void tst_RenderedWave::givesTheSameBytesTwice()
{
    Studio studio;
    for (const int number : {1, 2, 3})
        writeFile(studio.dir.filePath(QStringLiteral("%1.wav").arg(number)),
                  soundOf(300, static_cast<short>(number * 1000)));
    const Instrument drums = Instrument::fromBytes(
        QStringLiteral("drums"),
        "{\"mapping\": {\"60\": {\"files\": [\"/1.wav\", \"/2.wav\", \"/3.wav\"], \"f\": 1}}}",
        studio.dir.path());
    QVector<TrackEvent> events;
    for (quint64 i = 0; i < 50; ++i)
        events.append(quarter(i * 5000));

    std::srand(1);
    QCOMPARE(studio.render(events, drums), QString());
    const QByteArray first = bytesOf(studio.fileName);
    std::srand(2);
    QCOMPARE(studio.render(events, drums), QString());
    QVERIFY(bytesOf(studio.fileName) == first);
    QVERIFY(first.size() > 100000);
}

void tst_RenderedWave::rendersASampleOfAPackage()
{
    Studio studio;
    PakWriter writer;
    writer.add(QStringLiteral("/sfx/c.wav"), soundOf(500));
    const QString package = studio.dir.filePath(QStringLiteral("packed.pak"));
    writer.save(package);
    const Instrument packed = Instrument::fromBytes(
        QStringLiteral("packed"), "{\"mapping\": {\"60\": {\"file\": \"/sfx/c.wav\", \"f\": 1}}}",
        QStringLiteral("pak://%1::").arg(package));
    QCOMPARE(studio.render({quarter(30240)}, packed), QString());
    QVERIFY((onsets(framesOf(studio.fileName)) == Starts{24000}));
}

void tst_RenderedWave::goesOnWithoutAMissingSample()
{
    Studio studio;
    const Instrument broken =
        Instrument::fromBytes(QStringLiteral("broken"),
                              "{\"mapping\": {\"60\": {\"file\": \"/c.wav\", \"f\": 1},"
                              " \"61\": {\"file\": \"/missing.wav\", \"f\": 1}}}",
                              studio.dir.path());
    QTest::ignoreMessage(QtCriticalMsg, "FMOD Error: There is no such file.\n");
    QCOMPARE(studio.render({quarter(0, 61), quarter(30240), quarter(60480, 61)}, broken),
             QString());
    QVERIFY((onsets(framesOf(studio.fileName)) == Starts{24000}));
}

void tst_RenderedWave::keepsTheOlderFileAtAnUnmappedNote()
{
    Studio studio;
    QCOMPARE(studio.render({quarter(0), quarter(302400, 99)}, studio.instrument()),
             QStringLiteral("Invalid note index"));
    QCOMPARE(studio.files(), QStringList(QStringLiteral("c.wav")));

    writeFile(studio.fileName, "older");
    QCOMPARE(studio.render({quarter(0), quarter(302400, 99)}, studio.instrument()),
             QStringLiteral("Invalid note index"));
    QCOMPARE(bytesOf(studio.fileName), QByteArray("older"));
    QCOMPARE(studio.files().size(), 2);
}

void tst_RenderedWave::replacesTheOlderFile()
{
    Studio studio;
    writeFile(studio.fileName, "older");
    QVERIFY((onsets(studio.rendered({quarter(0)})) == Starts{0}));
}

void tst_RenderedWave::failsInAFolderThatIsNotThere()
{
    Studio studio;
    studio.fileName = studio.dir.filePath(QStringLiteral("missing/out.wav"));
    QTest::ignoreMessage(QtCriticalMsg, "FMOD Error: The sound output could not be opened.\n");
    QCOMPARE(studio.render({quarter(0)}, studio.instrument()),
             QStringLiteral("Could not write %1: No such file or directory").arg(studio.fileName));
}

void tst_RenderedWave::tellsOfAFullDisk()
{
    Studio studio;
    studio.fileName = QStringLiteral("/dev/full");
    QTest::ignoreMessage(QtCriticalMsg, "FMOD Error: The sound output could not be opened.\n");
    QCOMPARE(studio.render({quarter(0)}, studio.instrument()),
             QStringLiteral("Could not write /dev/full: No space left on device"));
}

void tst_RenderedWave::keepsTheOlderFileWhenCancelled()
{
    Studio studio;
    writeFile(studio.fileName, "older");
    TrackRenderer renderer(studio.fileName);
    renderer.addTrack(trackOf({quarter(0), quarter(30240000)}), studio.instrument(), 1.0F, 0.0F);
    QEventLoop loop;
    QObject::connect(&renderer, &TrackRenderer::renderProgress, &renderer, &TrackRenderer::cancel);
    QObject::connect(&renderer, &TrackRenderer::renderFinished, &loop, &QEventLoop::quit);
    QString message;
    QObject::connect(&renderer, &TrackRenderer::renderFailed, &loop, [&](const QString &text) {
        message = text;
        loop.quit();
    });
    renderer.start();
    loop.exec();
    QCOMPARE(message, QStringLiteral("The rendering was cancelled."));
    QCOMPARE(bytesOf(studio.fileName), QByteArray("older"));
    QCOMPARE(studio.files().size(), 2);
}

void tst_RenderedWave::keepsTheOlderFileWhenDestroyed()
{
    Studio studio;
    writeFile(studio.fileName, "older");
    {
        TrackRenderer renderer(studio.fileName);
        renderer.addTrack(trackOf({quarter(0), quarter(30240000)}), studio.instrument(), 1.0F,
                          0.0F);
        renderer.start();
    }
    QCOMPARE(bytesOf(studio.fileName), QByteArray("older"));
    QCOMPARE(studio.files().size(), 2);
}

QTEST_GUILESS_MAIN(tst_RenderedWave)
#include "tst_RenderedWave.moc"
