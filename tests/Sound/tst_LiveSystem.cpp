#include "Sound/BuiltinSystem.h"
#include "Sound/ChannelPool.h"
#include "Sound/LiveStatus.h"
#include "Sound/WaveOutput.h"
#include "SoundFiles.h"
#include "support/VirtualClock.h"

#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

namespace {

using Samples = std::vector<float>;

constexpr FMOD_MODE MemoryMode = FMOD_2D | FMOD_SOFTWARE | FMOD_CREATESAMPLE | FMOD_OPENMEMORY;
constexpr short Half = 16384; // of full scale

struct ReleaseSystem {
    void operator()(FMOD::System *system) const { system->release(); }
};
using SystemPtr = std::unique_ptr<FMOD::System, ReleaseSystem>;

/// Without threads every update() makes the next sample: what is ready when is up to the test.
SystemPtr createSystem(VirtualClock &clock, unsigned threads = 0)
{
    FMOD::System *system = nullptr;
    if (createBuiltinSystem(&system, threads, clock.outputs()) != FMOD_OK)
        qFatal("no system");
    return SystemPtr(system);
}

FMOD_RESULT init(FMOD::System &system)
{
    return system.init(2048, FMOD_INIT_NORMAL, nullptr);
}

SystemPtr start(VirtualClock &clock, unsigned threads = 0)
{
    SystemPtr system = createSystem(clock, threads);
    if (init(*system) != FMOD_OK)
        qFatal("init failed");
    return system;
}

FMOD::Sound *load(FMOD::System &system, const std::vector<short> &samples)
{
    const QByteArray bytes = SoundFiles::encode16(48000, 1, samples);
    FMOD_CREATESOUNDEXINFO info = {};
    info.cbsize = 216;
    info.length = static_cast<unsigned int>(bytes.size());
    FMOD::Sound *sound = nullptr;
    if (system.createSound(bytes.constData(), MemoryMode, &info, &sound) != FMOD_OK)
        qFatal("no sound");
    return sound;
}

FMOD::Channel *open(FMOD::System &system, FMOD::Sound *sound)
{
    FMOD::Channel *channel = nullptr;
    if (system.playSound(FMOD_CHANNEL_FREE, sound, true, &channel) != FMOD_OK)
        qFatal("no channel");
    return channel;
}

/// On the left alone, in full.
FMOD::Channel *playAt(FMOD::System &system, FMOD::Sound *sound, quint64 clock)
{
    FMOD::Channel *const channel = open(system, sound);
    channel->setPan(-1);
    channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, static_cast<unsigned int>(clock >> 32),
                      static_cast<unsigned int>(clock));
    channel->setPaused(false);
    return channel;
}

quint64 clockOf(FMOD::System &system)
{
    unsigned int hi = 0;
    unsigned int lo = 0;
    if (system.getDSPClock(&hi, &lo) != FMOD_OK)
        qFatal("no clock");
    return (quint64{hi} << 32) | lo;
}

void update(FMOD::System &system, int times = 1)
{
    for (int i = 0; i < times; ++i)
        if (system.update() != FMOD_OK)
            qFatal("update failed");
}

/// The left side of the next frames.
Samples pull(VirtualClock &clock, std::size_t frames)
{
    const Samples both = clock.pull(frames);
    Samples left(frames);
    for (std::size_t i = 0; i < frames; ++i)
        left[i] = both.at(2 * i);
    return left;
}

/// What a 16-bit file has of it.
std::vector<short> asShorts(const Samples &samples)
{
    std::vector<short> all;
    for (const float sample : samples)
        all.push_back(static_cast<short>(std::lrint(std::min(sample * 32768.0F, 32767.0F))));
    return all;
}

} // namespace

class tst_LiveSystem : public QObject {
    Q_OBJECT

private slots:
    void defaultOutputPlaysLive();
    void outputThatFailsFailsInit();
    void problemIsThatOfTheOutput();
    void waveWriterIsNoLiveSystem();
    void clockMovesWithTheOutput();
    void startIsExactForEveryBlockSize();
    void noteForNowStartsWithTheNextBlock();
    void gainIsRamped();
    void stopIsRamped();
    void lateSampleStartsFromItsBeginning();
    void readySampleIsNotLate();
    void soundGoesOnInTimeAfterAGap();
    void failedSampleIsSilentAndToldOnce();
    void voicesUpToTheLimitSound();
    void endedChannelIsHarmless();
    void stoppedChannelIsUsedAgain();
    void thousandsOfStopsComeThrough();
    void soundIsTheWrittenOne();
    void releasedWhileItIsPulled_data();
    void releasedWhileItIsPulled();
    void everyNoteEndsWhileAnotherThreadPulls();
};

void tst_LiveSystem::defaultOutputPlaysLive()
{
    VirtualClock clock;
    SystemPtr system = createSystem(clock);
    QVERIFY(!clock.isRunning());
    QCOMPARE(system->setSoftwareChannels(2048), FMOD_OK);
    QCOMPARE(init(*system), FMOD_OK);
    QCOMPARE(init(*system), FMOD_ERR_INITIALIZED);
    QVERIFY(clock.isRunning());
    int rate = 0;
    QCOMPARE(system->getSoftwareFormat(&rate, nullptr, nullptr, nullptr, nullptr, nullptr),
             FMOD_OK);
    QCOMPARE(rate, 48000);
    QCOMPARE(system->update(), FMOD_OK);
    QVERIFY(!WaveOutput::report(*system).has_value());
    QVERIFY(!WaveOutput::abandon(*system));
    QCOMPARE(system.release()->release(), FMOD_OK);
    QVERIFY(!clock.isRunning());
}

void tst_LiveSystem::outputThatFailsFailsInit()
{
    VirtualClock clock;
    clock.refuse();
    clock.setProblem("The dog ate the loudspeaker.");
    const SystemPtr system = createSystem(clock);
    QCOMPARE(LiveStatus::problem(*system), std::string());
    QCOMPARE(init(*system), FMOD_ERR_OUTPUT_INIT);
    QCOMPARE(LiveStatus::problem(*system), std::string("The dog ate the loudspeaker."));
    QCOMPARE(LiveStatus::lateStarts(*system), std::uint64_t{0});
    QCOMPARE(system->update(), FMOD_ERR_INITIALIZATION);
}

void tst_LiveSystem::problemIsThatOfTheOutput()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    QCOMPARE(LiveStatus::problem(*system), std::string());
    clock.setProblem("The device is gone.");
    QCOMPARE(LiveStatus::problem(*system), std::string("The device is gone."));
}

void tst_LiveSystem::waveWriterIsNoLiveSystem()
{
    const QTemporaryDir directory;
    QByteArray name = QFile::encodeName(directory.filePath(QStringLiteral("out.wav")));
    VirtualClock clock;
    const SystemPtr system = createSystem(clock);
    system->setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT);
    QCOMPARE(system->init(2048, FMOD_INIT_STREAM_FROM_UPDATE, name.data()), FMOD_OK);
    QVERIFY(!clock.isRunning());
    QCOMPARE(LiveStatus::problem(*system), std::string());
    QCOMPARE(LiveStatus::lateStarts(*system), std::uint64_t{0});
    QCOMPARE(LiveStatus::missedFrames(*system), std::uint64_t{0});
}

void tst_LiveSystem::clockMovesWithTheOutput()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    update(*system, 3);
    QCOMPARE(clockOf(*system), quint64{0});
    clock.pull(512);
    clock.pull(5000);
    QCOMPARE(clockOf(*system), quint64{5512});
}

void tst_LiveSystem::startIsExactForEveryBlockSize()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    FMOD::Sound *const sound = load(*system, {Half, 1, 2, 3, -Half});
    for (std::size_t block = 1; block <= 4096; ++block) {
        const std::size_t wait = block * 37 % 600;
        FMOD::Channel *const channel = playAt(*system, sound, clockOf(*system) + wait);
        update(*system);
        Samples heard;
        while (heard.size() < wait + 5) {
            const Samples more = pull(clock, block);
            heard.insert(heard.end(), more.begin(), more.end());
        }
        Samples expected(heard.size(), 0.0F);
        const Samples note = {0.5F, 1 / 32768.0F, 2 / 32768.0F, 3 / 32768.0F, -0.5F};
        std::copy(note.begin(), note.end(), expected.begin() + static_cast<std::ptrdiff_t>(wait));
        QVERIFY2(heard == expected, qPrintable(QString::number(block)));
        channel->stop();
    }
    QCOMPARE(LiveStatus::lateStarts(*system), std::uint64_t{0});
}

void tst_LiveSystem::noteForNowStartsWithTheNextBlock()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    clock.pull(700);
    playAt(*system, load(*system, {Half, 5}), 0);
    update(*system);
    QVERIFY((pull(clock, 3) == Samples{0.5F, 5 / 32768.0F, 0}));
    QCOMPARE(LiveStatus::lateStarts(*system), std::uint64_t{0});
}

void tst_LiveSystem::gainIsRamped()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    FMOD::Channel *const channel =
        playAt(*system, load(*system, std::vector<short>(5000, Half)), 0);
    update(*system);
    QVERIFY(pull(clock, 512) == Samples(512, 0.5F));
    QCOMPARE(channel->setVolume(0.5F), FMOD_OK);
    update(*system);
    Samples heard = pull(clock, 512);
    const Samples more = pull(clock, 1000);
    heard.insert(heard.end(), more.begin(), more.end());
    for (std::size_t i = 0; i < heard.size(); ++i)
        QCOMPARE(heard[i],
                 0.5F - 0.25F * static_cast<float>(std::min<std::size_t>(i + 1, 1024)) / 1024);
}

void tst_LiveSystem::stopIsRamped()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    FMOD::Channel *const channel =
        playAt(*system, load(*system, std::vector<short>(5000, Half)), 0);
    update(*system);
    pull(clock, 512);
    QCOMPARE(channel->stop(), FMOD_OK);
    const Samples heard = pull(clock, 512);
    for (std::size_t i = 0; i < heard.size(); ++i)
        QCOMPARE(heard[i],
                 0.5F - 0.5F * static_cast<float>(std::min<std::size_t>(i + 1, 256)) / 256);
}

void tst_LiveSystem::lateSampleStartsFromItsBeginning()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    FMOD::Sound *const busy = load(*system, {1});
    playAt(*system, load(*system, {Half, 7, 9}), 100);
    update(*system); // makes the other sample
    QVERIFY(pull(clock, 512) == Samples(512, 0.0F));
    update(*system);
    QVERIFY((pull(clock, 4) == Samples{0.5F, 7 / 32768.0F, 9 / 32768.0F, 0}));
    QCOMPARE(LiveStatus::lateStarts(*system), std::uint64_t{1});
    QCOMPARE(busy->release(), FMOD_OK);
}

void tst_LiveSystem::readySampleIsNotLate()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    clock.pull(100);
    playAt(*system, load(*system, {Half, 7}), 100);
    update(*system);
    QVERIFY((pull(clock, 3) == Samples{0.5F, 7 / 32768.0F, 0}));
    QCOMPARE(LiveStatus::lateStarts(*system), std::uint64_t{0});
}

void tst_LiveSystem::soundGoesOnInTimeAfterAGap()
{
    constexpr std::size_t Length = 60000;
    VirtualClock clock;
    const SystemPtr system = start(clock);
    std::vector<short> samples(Length);
    for (std::size_t i = 0; i < Length; ++i)
        samples[i] = static_cast<short>(1 + i % 20000);
    playAt(*system, load(*system, samples), 0);
    update(*system);
    Samples heard = pull(clock, 30000); // in which nobody cares for the rest
    const auto made =
        static_cast<std::size_t>(std::find(heard.begin(), heard.end(), 0.0F) - heard.begin());
    QVERIFY(made >= 14400);
    QVERIFY(made < 20000);
    QCOMPARE(LiveStatus::missedFrames(*system), std::uint64_t{30000 - made});
    while (heard.size() < Length) {
        update(*system); // asks for more; the next one makes it
        const Samples more = pull(clock, 1000);
        heard.insert(heard.end(), more.begin(), more.end());
    }
    for (std::size_t i = 0; i < Length; ++i)
        QCOMPARE(heard[i], i < made || i >= 31000 ? static_cast<float>(samples[i]) / 32768 : 0.0F);
    QCOMPARE(LiveStatus::missedFrames(*system), std::uint64_t{31000 - made});
}

void tst_LiveSystem::failedSampleIsSilentAndToldOnce()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    FMOD::Sound *const sound = load(*system, std::vector<short>(400000, 99));
    std::vector<FMOD::Channel *> channels;
    for (int i = 0; i < 2; ++i) {
        channels.push_back(open(*system, sound));
        QCOMPARE(channels.back()->setFrequency(750), FMOD_OK); // 64 times as long, and too long
        QCOMPARE(channels.back()->setPaused(false), FMOD_OK);
    }
    playAt(*system, load(*system, {Half, 5}), 10);
    std::vector<FMOD_RESULT> errors;
    for (int i = 0; i < 5; ++i)
        if (const FMOD_RESULT result = system->update(); result != FMOD_OK)
            errors.push_back(result);
    QVERIFY((errors == std::vector<FMOD_RESULT>{FMOD_ERR_MEMORY}));
    const Samples heard = pull(clock, 20);
    QCOMPARE(std::count(heard.begin(), heard.end(), 0.0F), std::ptrdiff_t{18});
    QCOMPARE(heard[10], 0.5F);
    update(*system, 5);
    QCOMPARE(channels[0]->setVolume(0.5F), FMOD_OK);
    QCOMPARE(LiveStatus::lateStarts(*system), std::uint64_t{0});
}

void tst_LiveSystem::voicesUpToTheLimitSound()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    FMOD::Sound *const sound = load(*system, std::vector<short>(20, 1));
    for (int round = 0; round < 2; ++round) {
        const quint64 begin = clockOf(*system) + 3000;
        for (std::size_t i = 0; i < ChannelPool::MaxVoices; ++i)
            playAt(*system, sound, begin)->setVolume(0.125F);
        FMOD::Channel *one = nullptr;
        QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, sound, true, &one), FMOD_ERR_CHANNEL_ALLOC);
        while (clockOf(*system) < begin) {
            update(*system);
            clock.pull(100);
        }
        QVERIFY(pull(clock, 20) == Samples(20, 0.25F)); // 65536 times 1/32768 times 1/8
        update(*system);
    }
    QCOMPARE(LiveStatus::lateStarts(*system), std::uint64_t{0});
}

void tst_LiveSystem::endedChannelIsHarmless()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    FMOD::Sound *const sound = load(*system, std::vector<short>(100, Half));
    FMOD::Channel *const ended = playAt(*system, sound, 0);
    update(*system);
    pull(clock, 512);
    QCOMPARE(ended->setVolume(0.5F), FMOD_OK); // the system does not know yet
    update(*system);
    playAt(*system, sound, 0); // may take the same voice
    update(*system);
    QCOMPARE(ended->setVolume(0.1F), FMOD_OK);
    QCOMPARE(ended->setPan(1), FMOD_OK);
    QVERIFY(pull(clock, 100) == Samples(100, 0.5F));
    QCOMPARE(ended->stop(), FMOD_OK);
    QCOMPARE(ended->stop(), FMOD_ERR_INVALID_HANDLE);
}

void tst_LiveSystem::stoppedChannelIsUsedAgain()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    FMOD::Sound *const sound = load(*system, std::vector<short>(1000, Half));
    FMOD::Channel *const stopped = playAt(*system, sound, 0);
    update(*system);
    pull(clock, 100);
    stopped->stop();
    FMOD::Channel *const next = playAt(*system, sound, 400);
    QCOMPARE(next, stopped);
    update(*system);
    const Samples heard = pull(clock, 512);
    QCOMPARE(heard[255], 0.0F);
    QCOMPARE(heard[299], 0.0F);
    QCOMPARE(heard[300], 0.5F);
}

void tst_LiveSystem::thousandsOfStopsComeThrough()
{
    VirtualClock clock;
    const SystemPtr system = start(clock);
    FMOD::Sound *const sound = load(*system, std::vector<short>(20000, 1));
    std::vector<FMOD::Channel *> channels;
    channels.reserve(30000);
    for (int i = 0; i < 30000; ++i)
        channels.push_back(playAt(*system, sound, 0));
    for (int i = 0; i < 10; ++i) {
        update(*system);
        pull(clock, 100);
    }
    QCOMPARE(pull(clock, 1)[0], 30000 / 32768.0F);
    for (FMOD::Channel *const channel : channels)
        channel->stop();
    for (int i = 0; i < 10; ++i) {
        update(*system);
        pull(clock, 100);
    }
    QVERIFY(pull(clock, 100) == Samples(100, 0.0F));
}

void tst_LiveSystem::soundIsTheWrittenOne()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("out.wav"));
    QByteArray name = QFile::encodeName(file);
    VirtualClock clock;
    const SystemPtr live = start(clock);
    SystemPtr written = createSystem(clock);
    written->setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT);
    written->init(2048, FMOD_INIT_STREAM_FROM_UPDATE, name.data());
    for (FMOD::System *const system : {live.get(), written.get()})
        for (unsigned i = 0; i < 20; ++i)
            playAt(*system, load(*system, std::vector<short>(3000 + 100 * i, 1000)),
                   quint64{131} * i)
                ->setVolume(0.5F + 0.02F * static_cast<float>(i));
    update(*live, 40);
    update(*written, 5);
    written.release()->release();
    std::vector<short> expected = SoundFiles::read(file).samples;
    QVERIFY(asShorts(clock.pull(5120)) == expected);
    QCOMPARE(LiveStatus::lateStarts(*live), std::uint64_t{0});
}

void tst_LiveSystem::releasedWhileItIsPulled_data()
{
    QTest::addColumn<unsigned>("threads");
    QTest::newRow("no thread prepares") << 0U;
    QTest::newRow("two threads prepare") << 2U;
}

void tst_LiveSystem::releasedWhileItIsPulled()
{
    QFETCH(const unsigned, threads);
    VirtualClock clock;
    clock.runFreely(512);
    for (int round = 0; round < 20; ++round) {
        SystemPtr system = start(clock, threads);
        const std::size_t before = clock.blocks();
        for (int i = 0; i < 100; ++i)
            playAt(*system, load(*system, std::vector<short>(48000, 100)), 0);
        while (clock.blocks() < before + 3)
            update(*system);
        QCOMPARE(system.release()->release(), FMOD_OK);
        QVERIFY(!clock.isRunning());
    }
}

void tst_LiveSystem::everyNoteEndsWhileAnotherThreadPulls()
{
    constexpr std::size_t Notes = 20000;
    VirtualClock clock;
    clock.runFreely(64);
    const SystemPtr system = start(clock, 2);
    FMOD::Sound *const sound = load(*system, std::vector<short>(500, 100));
    std::vector<FMOD::Channel *> channels;
    for (std::size_t i = 0; i < Notes; ++i) {
        channels.push_back(playAt(*system, sound, clockOf(*system) + i % 300));
        channels[i / 2]->setVolume(0.5F);
        update(*system);
    }
    // As many as there can be: none of the voices before may have got lost.
    std::size_t free = 0;
    const auto isOpened = [&] {
        FMOD::Channel *channel = nullptr;
        return system->playSound(FMOD_CHANNEL_FREE, sound, true, &channel) == FMOD_OK;
    };
    while (free < ChannelPool::MaxVoices) {
        free += isOpened() ? 1 : 0;
        update(*system);
    }
    QVERIFY(!isOpened());
}

QTEST_APPLESS_MAIN(tst_LiveSystem)
#include "tst_LiveSystem.moc"
