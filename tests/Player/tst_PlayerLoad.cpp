#include "PlayerStage.h"
#include "Sound/BuiltinSystem.h"
#include "Sound/LiveStatus.h"
#include "support/VirtualClock.h"

#include <QElapsedTimer>
#include <QHash>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

namespace {

constexpr int Tracks = 200;
constexpr quint64 NotesPerTrack = 400;
constexpr quint64 Apart = 2520;     // ticks: 2000 frames
constexpr quint64 Sounding = 25200; // ticks: ten of them at a time
constexpr std::size_t BlockFrames = 512;

/// Two seconds of a constant level.
QByteArray wave()
{
    const char header[] = "RIFF\x24\xee\x02\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x80\xbb\0\0\0\x77\x01"
                          "\0\x02\0\x10\0data\0\xee\x02\0";
    return QByteArray(header, sizeof header - 1) + QByteArray(192000, '\1');
}

Instrument instrumentIn(const QTemporaryDir &dir)
{
    QFile file(dir.filePath(text("a.wav")));
    if (!file.open(QIODevice::WriteOnly) || file.write(wave()) < 0)
        qFatal("no sample");
    return Instrument::fromBytes(text("organ"),
                                 "{\"fadeout\": 0, \"mapping\": {"
                                 "\"60\": {\"file\": \"a.wav\", \"f\": 200}}}",
                                 dir.path() + QLatin1Char('/'));
}

Track denseTrack()
{
    std::vector<TrackEvent> events;
    for (quint64 i = 0; i < NotesPerTrack; ++i)
        events.push_back(TrackEvent::makeNote(60, i * Apart, Sounding));
    return PlayerStage::track(events);
}

} // namespace

/// 200 tracks at once, of which 2000 notes sound at any time.
class tst_PlayerLoad : public QObject {
    Q_OBJECT

private slots:
    void everyNoteStartsOnItsClock();
    void positionsComeAtMostOnceIn25Milliseconds();
};

void tst_PlayerLoad::everyNoteStartsOnItsClock()
{
    QTemporaryDir dir;
    const Instrument instrument = instrumentIn(dir);
    VirtualClock clock;
    FMOD::System *system = nullptr;
    PlayerWorker worker([&](FMOD::System **made) {
        const FMOD_RESULT result = createBuiltinSystem(&system, 0, clock.outputs());
        *made = system;
        return result;
    });
    worker.initialize();
    int pressed = 0;
    int most = 0;
    int sounding = 0;
    connect(&worker, &PlayerWorker::notePressed, this, [&] {
        ++pressed;
        most = std::max(most, ++sounding);
    });
    connect(&worker, &PlayerWorker::noteReleased, this, [&] { --sounding; });
    QSignalSpy stopped(&worker, &PlayerWorker::trackStopped);
    for (int i = 0; i < Tracks; ++i)
        worker.playTrack(QStringLiteral("T%1").arg(i), text("Main"), instrument, denseTrack(),
                         false, 0.001F, -1.0F);
    // In the first ten notes each adds 200 voices of the same level: a stair of exact steps.
    std::vector<float> heard;
    while (stopped.size() < Tracks) {
        worker.update();
        worker.update(); // makes the sample that the first has asked for
        const std::vector<float> block = clock.pull(BlockFrames);
        heard.insert(heard.end(), block.begin(), block.end());
        QVERIFY(heard.size() / 2 < 1000000);
    }
    QCOMPARE(LiveStatus::lateStarts(*system), std::uint64_t{0});
    QCOMPARE(pressed, Tracks * static_cast<int>(NotesPerTrack));
    QVERIFY(most >= 2000);
    for (std::size_t step = 0; step < 10; ++step) {
        const std::size_t start = 4800 + 2000 * step;
        const float before = heard.at(2 * (start - 1));
        const float at = heard.at(2 * start);
        QCOMPARE(heard.at(2 * (start + 1999)), at);
        QVERIFY(std::abs(at - before - 200 * 0.001F * 257 / 32768) < 1e-6F);
    }
    worker.terminate();
}

void tst_PlayerLoad::positionsComeAtMostOnceIn25Milliseconds()
{
    PlayerStage stage;
    for (int i = 0; i < Tracks; ++i)
        stage.play(QStringLiteral("T%1").arg(i), {PlayerStage::quarter(60, 0)});
    QHash<QString, int> reports;
    connect(stage.worker, &PlayerWorker::trackPositionChanged, this,
            [&](const QString &id) { ++reports[id]; });
    QElapsedTimer whole;
    whole.start();
    while (reports.value(text("T0")) < 5)
        stage.passAt(0);
    const qint64 most = whole.elapsed() / 25 + 1; // of the first there may be one at once
    QVERIFY(most >= 5);
    QCOMPARE(reports.size(), Tracks);
    for (const int count : qAsConst(reports))
        QVERIFY2(count <= most, qPrintable(QString::number(count)));
}

QTEST_GUILESS_MAIN(tst_PlayerLoad)
#include "tst_PlayerLoad.moc"
