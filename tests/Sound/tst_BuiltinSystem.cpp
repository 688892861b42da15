#include "Sound/BuiltinSystem.h"
#include "Sound/ChannelPool.h"
#include "Sound/PlannedFade.h"
#include "Sound/WaveOutput.h"
#include "SoundFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <limits>
#include <memory>

#include <sys/resource.h>

namespace {

constexpr FMOD_MODE FileMode = FMOD_2D | FMOD_SOFTWARE | FMOD_CREATESAMPLE;
constexpr FMOD_MODE MemoryMode = FileMode | FMOD_OPENMEMORY;
constexpr std::size_t Block = 1024;

struct ReleaseSystem {
    void operator()(FMOD::System *system) const { system->release(); }
};
using SystemPtr = std::unique_ptr<FMOD::System, ReleaseSystem>;

SystemPtr createSystem(unsigned threads = PreparePool::defaultThreads())
{
    FMOD::System *system = nullptr;
    if (createBuiltinSystem(&system, threads) != FMOD_OK)
        qFatal("no system");
    return SystemPtr(system);
}

FMOD_RESULT initSystem(FMOD::System &system, const QString &fileName)
{
    QByteArray name = QFile::encodeName(fileName);
    system.setSoftwareChannels(2048);
    system.setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT);
    return system.init(2048, FMOD_INIT_STREAM_FROM_UPDATE, name.data());
}

FMOD_CREATESOUNDEXINFO infoFor(const QByteArray &bytes)
{
    FMOD_CREATESOUNDEXINFO info = {};
    info.cbsize = 216;
    info.length = static_cast<unsigned int>(bytes.size());
    return info;
}

FMOD::Sound *load(FMOD::System &system, const QByteArray &bytes)
{
    FMOD_CREATESOUNDEXINFO info = infoFor(bytes);
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

quint64 clockOf(FMOD::System &system)
{
    unsigned int hi = 0;
    unsigned int lo = 0;
    system.getDSPClock(&hi, &lo);
    return (quint64{hi} << 32) | lo;
}

void update(FMOD::System &system, int blocks)
{
    for (int i = 0; i < blocks; ++i)
        if (system.update() != FMOD_OK)
            qFatal("update failed");
}

std::vector<short> ramp(int frames, int channels)
{
    std::vector<short> samples;
    samples.reserve(static_cast<std::size_t>(frames) * static_cast<std::size_t>(channels));
    for (int i = 0; i < frames * channels; ++i)
        samples.push_back(static_cast<short>(i * 37 % 65536 - 32768));
    return samples;
}

std::vector<float> sine(int frames, float step)
{
    std::vector<float> samples;
    samples.reserve(static_cast<std::size_t>(frames));
    for (int i = 0; i < frames; ++i)
        samples.push_back(0.1F * std::sin(step * static_cast<float>(i)));
    return samples;
}

QByteArray vorbis(int index)
{
    return SoundFiles::encode(SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 1,
                              sine(20000, 0.01F * static_cast<float>(index + 1)));
}

FMOD::Channel *playAt(FMOD::System &system, FMOD::Sound *sound, unsigned int clock)
{
    FMOD::Channel *const channel = open(system, sound);
    channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, clock);
    channel->setPaused(false);
    return channel;
}

void addThreadRows()
{
    QTest::addColumn<unsigned>("threads");
    QTest::newRow("no thread") << 0U;
    QTest::newRow("one thread") << 1U;
    QTest::newRow("eight threads") << 8U;
}

QByteArray contents(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

QStringList entries(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class tst_BuiltinSystem : public QObject {
    Q_OBJECT

private slots:
    void init();

    void settingsCanBeMadeBeforeInit();
    void callsBeforeInitFail();
    void nullPointersAreRefused();
    void otherOutputsAreRefused();
    void fileThatCannotBeWrittenFailsInit();
    void initIsDoneOnce();
    void formatIs48kHzStereo();

    void fileHasOneBlockPerUpdate();
    void fileWithoutUpdateHoldsNoSamples();
    void stereoComesBackBitByBit();
    void startIsExactToTheFrame();
    void startInThePastIsTheNextBlock();
    void pitchShiftsTheRate();
    void monoPanHasConstantPower_data();
    void monoPanHasConstantPower();
    void stereoPanIsBalance_data();
    void stereoPanIsBalance();
    void volumeIsClamped();
    void volumeChangesDoNotClick();
    void stopDoesNotClick();
    void plannedFadeIsExactToTheFrame();
    void plannedFadeIsForgottenWithItsNote();
    void everyNoteOfManyIsInTheFile();
    void sameCallsGiveTheSameBytes();
    void numberOfThreadsDoesNotChangeTheBytes();
    void firstChordOfManySoundsIsComplete_data();
    void firstChordOfManySoundsIsComplete();

    void soundComesFromAFileToo();
    void recordSizeOfTheSoundInfoIsChecked();
    void badSoundsAnswerErrors();
    void soundDamagedBehindItsHeaderIsSilent_data();
    void soundDamagedBehindItsHeaderIsSilent();
    void soundThatBreaksOffSoundsUpToThere();
    void noteThatIsTooLongIsSilent();
    void openFilesAreBounded();
    void emptySoundEndsAtOnce();
    void unknownModesAreRefused();
    void releasedSoundSoundsOnAndIsUnknown();
    void soundReleasedWhileItIsPreparedSoundsOn_data();
    void soundReleasedWhileItIsPreparedSoundsOn();
    void systemMayEndWhileSoundsArePrepared_data();
    void systemMayEndWhileSoundsArePrepared();
    void voiceStoppedWhileItIsPreparedIsSilent();
    void soundOfAnotherSystemIsUnknown();

    void endedChannelTouchesNoOtherVoice();
    void stoppedChannelIsUsedAgain();
    void channelsThatWereDroppedDoNotPileUp();
    void tooManyChannelsAreRefused();
    void channelRefusesAbsurdValues();
    void soundingChannelKeepsItsRate();

    void reportTellsFramesPeakAndClipping();
    void abandonedFileIsDropped();
    void failedWriteStopsTheClock();
    void unfinishedSystemOverwritesNothing();

private:
    SystemPtr start(unsigned threads = PreparePool::defaultThreads());
    QByteArray manyNotes(unsigned threads);
    SoundFiles::Contents finish(SystemPtr &system);

    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_file;
};

void tst_BuiltinSystem::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    m_file = m_directory->filePath(QStringLiteral("out.wav"));
}

SystemPtr tst_BuiltinSystem::start(unsigned threads)
{
    SystemPtr system = createSystem(threads);
    if (initSystem(*system, m_file) != FMOD_OK)
        qFatal("init failed");
    return system;
}

SoundFiles::Contents tst_BuiltinSystem::finish(SystemPtr &system)
{
    if (system.release()->release() != FMOD_OK)
        qFatal("release failed");
    return SoundFiles::read(m_file);
}

void tst_BuiltinSystem::settingsCanBeMadeBeforeInit()
{
    const SystemPtr system = createSystem();
    QCOMPARE(system->setSoftwareChannels(2048), FMOD_OK);
    QCOMPARE(system->setSoftwareChannels(-1), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(system->setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT), FMOD_OK);
    QCOMPARE(initSystem(*system, m_file), FMOD_OK);
    QCOMPARE(system->setSoftwareChannels(2048), FMOD_ERR_INITIALIZED);
    QCOMPARE(system->setOutput(FMOD_OUTPUTTYPE_AUTODETECT), FMOD_ERR_INITIALIZED);
}

void tst_BuiltinSystem::callsBeforeInitFail()
{
    const SystemPtr system = createSystem();
    unsigned int hi = 0;
    unsigned int lo = 0;
    FMOD::Sound *sound = nullptr;
    FMOD::Channel *channel = nullptr;
    FMOD::ChannelGroup *group = nullptr;
    QCOMPARE(system->update(), FMOD_ERR_INITIALIZATION);
    QCOMPARE(system->getDSPClock(&hi, &lo), FMOD_ERR_INITIALIZATION);
    QCOMPARE(system->createSound("x", FileMode, nullptr, &sound), FMOD_ERR_INITIALIZATION);
    QCOMPARE(system->createChannelGroup("x", &group), FMOD_ERR_INITIALIZATION);
    QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, sound, true, &channel), FMOD_ERR_INITIALIZATION);
    QVERIFY(!WaveOutput::report(*system).has_value());
    QVERIFY(!WaveOutput::abandon(*system));
}

void tst_BuiltinSystem::nullPointersAreRefused()
{
    QCOMPARE(createBuiltinSystem(nullptr), FMOD_ERR_INVALID_PARAM);
    SystemPtr system = createSystem();
    system->setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT);
    QCOMPARE(system->init(2048, 1, nullptr), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(system->init(-1, 1, nullptr), FMOD_ERR_INVALID_PARAM);
    system = start();
    FMOD::Sound *sound = nullptr;
    FMOD::Channel *channel = nullptr;
    FMOD::ChannelGroup *group = nullptr;
    QCOMPARE(system->getDSPClock(nullptr, nullptr), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(system->createSound(nullptr, FileMode, nullptr, &sound), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(system->createSound("x", FileMode, nullptr, nullptr), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(system->createSound("x", MemoryMode, nullptr, &sound), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(system->createChannelGroup(nullptr, &group), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(system->createChannelGroup("x", nullptr), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, nullptr, true, &channel), FMOD_ERR_INVALID_PARAM);
    sound = load(*system, SoundFiles::encode16(48000, 1, {1, 2, 3}));
    QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, sound, true, nullptr), FMOD_ERR_INVALID_PARAM);
    channel = open(*system, sound);
    QCOMPARE(channel->getFrequency(nullptr), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(channel->setChannelGroup(nullptr), FMOD_ERR_INVALID_PARAM);
}

void tst_BuiltinSystem::otherOutputsAreRefused()
{
    const SystemPtr system = createSystem();
    QCOMPARE(system->setOutput(static_cast<FMOD_OUTPUTTYPE>(2)), FMOD_OK);
    QCOMPARE(system->init(2048, FMOD_INIT_NORMAL, nullptr), FMOD_ERR_OUTPUT_INIT);
}

void tst_BuiltinSystem::fileThatCannotBeWrittenFailsInit()
{
    for (const char *const name : {"/nowhere/out.wav", "/tmp", "", "/dev/full"}) {
        const SystemPtr system = createSystem();
        QCOMPARE(initSystem(*system, QLatin1String(name)), FMOD_ERR_OUTPUT_INIT);
        QCOMPARE(system->update(), FMOD_ERR_INITIALIZATION);
    }
}

void tst_BuiltinSystem::initIsDoneOnce()
{
    const SystemPtr system = start();
    QCOMPARE(initSystem(*system, m_file), FMOD_ERR_INITIALIZED);
}

void tst_BuiltinSystem::formatIs48kHzStereo()
{
    const SystemPtr system = createSystem();
    int rate = 0;
    int channels = 0;
    int inputs = 0;
    int bits = 0;
    FMOD_SOUND_FORMAT format = FMOD_SOUND_FORMAT_NONE;
    FMOD_DSP_RESAMPLER resampler = FMOD_DSP_RESAMPLER_NOINTERP;
    QCOMPARE(system->getSoftwareFormat(&rate, &format, &channels, &inputs, &resampler, &bits),
             FMOD_OK);
    QCOMPARE(rate, 48000);
    QCOMPARE(channels, 2);
    QCOMPARE(bits, 16);
    QCOMPARE(system->getSoftwareFormat(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
             FMOD_OK);
}

void tst_BuiltinSystem::fileHasOneBlockPerUpdate()
{
    SystemPtr system = start();
    QCOMPARE(clockOf(*system), quint64{0});
    for (quint64 block = 1; block <= 3; ++block) {
        QCOMPARE(system->update(), FMOD_OK);
        QCOMPARE(clockOf(*system), block * Block);
    }
    const SoundFiles::Contents file = finish(system);
    QCOMPARE(file.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    QCOMPARE(file.rate, 48000);
    QCOMPARE(file.channels, 2);
    QCOMPARE(file.frames, qint64{3 * Block});
    QVERIFY(file.samples == std::vector<short>(6 * Block, 0));
}

void tst_BuiltinSystem::fileWithoutUpdateHoldsNoSamples()
{
    SystemPtr system = start();
    const SoundFiles::Contents file = finish(system);
    QVERIFY(file.isValid);
    QCOMPARE(file.frames, qint64{0});
}

void tst_BuiltinSystem::stereoComesBackBitByBit()
{
    SystemPtr system = start();
    const std::vector<short> samples = ramp(3072, 2);
    FMOD::Channel *const channel =
        open(*system, load(*system, SoundFiles::encode16(48000, 2, samples)));
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    update(*system, 3);
    QVERIFY(finish(system).samples == samples);
}

void tst_BuiltinSystem::startIsExactToTheFrame()
{
    for (const unsigned int start : {0U, 1U, 1023U, 1024U, 1500U, 4800U}) {
        SystemPtr system = this->start();
        const std::vector<short> samples = ramp(700, 2);
        FMOD::Channel *const channel =
            open(*system, load(*system, SoundFiles::encode16(48000, 2, samples)));
        QCOMPARE(channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, start), FMOD_OK);
        QCOMPARE(channel->setPaused(false), FMOD_OK);
        update(*system, 6);
        std::vector<short> expected(6 * Block * 2, 0);
        std::copy(samples.begin(), samples.end(), expected.begin() + 2 * std::ptrdiff_t{start});
        QVERIFY(finish(system).samples == expected);
    }
}

void tst_BuiltinSystem::startInThePastIsTheNextBlock()
{
    SystemPtr system = start();
    update(*system, 2);
    FMOD::Channel *const channel =
        open(*system, load(*system, SoundFiles::encode16(48000, 2, {11, 12})));
    QCOMPARE(channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, 2000), FMOD_OK);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    update(*system, 1);
    const std::vector<short> samples = finish(system).samples;
    QCOMPARE(samples[4 * Block], short{11});
    QCOMPARE(samples[4 * Block + 1], short{12});
}

void tst_BuiltinSystem::pitchShiftsTheRate()
{
    SystemPtr system = start();
    std::vector<short> sine;
    sine.reserve(22050);
    for (int i = 0; i < 22050; ++i)
        sine.push_back(static_cast<short>(16000 * std::sin(2 * M_PI * 441 * i / 22050)));
    FMOD::Channel *const channel =
        open(*system, load(*system, SoundFiles::encode16(22050, 1, sine)));
    float frequency = 0;
    QCOMPARE(channel->getFrequency(&frequency), FMOD_OK);
    QCOMPARE(frequency, 22050.0F);
    QCOMPARE(channel->setFrequency(frequency * 2), FMOD_OK);
    QCOMPARE(channel->getFrequency(&frequency), FMOD_OK);
    QCOMPARE(frequency, 44100.0F);
    QCOMPARE(channel->setPan(-1), FMOD_OK);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    update(*system, 25);
    const std::vector<short> samples = finish(system).samples;
    for (int i = 500; i < 23500; ++i) {
        const double expected = 16000 * std::sin(2 * M_PI * 882 * i / 48000);
        QVERIFY(std::abs(samples[static_cast<std::size_t>(2 * i)] - expected) < 3);
    }
    QCOMPARE(samples[48010], short{0});
}

void tst_BuiltinSystem::monoPanHasConstantPower_data()
{
    QTest::addColumn<float>("pan");
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("right");
    QTest::newRow("left") << -1.0F << 10000 << 0;
    QTest::newRow("half left") << -0.5F << 9239 << 3827;
    QTest::newRow("centre") << 0.0F << 7071 << 7071;
    QTest::newRow("half right") << 0.5F << 3827 << 9239;
    QTest::newRow("right") << 1.0F << 0 << 10000;
    QTest::newRow("beyond right") << 7.0F << 0 << 10000;
}

void tst_BuiltinSystem::monoPanHasConstantPower()
{
    QFETCH(float, pan);
    QFETCH(int, left);
    QFETCH(int, right);
    SystemPtr system = start();
    FMOD::Channel *const channel =
        open(*system, load(*system, SoundFiles::encode16(48000, 1, {10000})));
    QCOMPARE(channel->setPan(pan), FMOD_OK);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    update(*system, 1);
    const std::vector<short> samples = finish(system).samples;
    QCOMPARE(int{samples[0]}, left);
    QCOMPARE(int{samples[1]}, right);
}

void tst_BuiltinSystem::stereoPanIsBalance_data()
{
    QTest::addColumn<float>("pan");
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("right");
    QTest::newRow("left") << -1.0F << 10000 << 0;
    QTest::newRow("half left") << -0.5F << 10000 << 4000;
    QTest::newRow("centre") << 0.0F << 10000 << 8000;
    QTest::newRow("half right") << 0.5F << 5000 << 8000;
    QTest::newRow("right") << 1.0F << 0 << 8000;
}

void tst_BuiltinSystem::stereoPanIsBalance()
{
    QFETCH(float, pan);
    QFETCH(int, left);
    QFETCH(int, right);
    SystemPtr system = start();
    FMOD::Channel *const channel =
        open(*system, load(*system, SoundFiles::encode16(48000, 2, {10000, 8000})));
    QCOMPARE(channel->setPan(pan), FMOD_OK);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    update(*system, 1);
    const std::vector<short> samples = finish(system).samples;
    QCOMPARE(int{samples[0]}, left);
    QCOMPARE(int{samples[1]}, right);
}

void tst_BuiltinSystem::volumeIsClamped()
{
    SystemPtr system = start();
    FMOD::Sound *const sound = load(*system, SoundFiles::encode16(48000, 2, {8000, 8000}));
    unsigned int time = 0;
    for (const float volume : {0.5F, 2.0F, -1.0F}) {
        FMOD::Channel *const channel = open(*system, sound);
        QCOMPARE(channel->setVolume(volume), FMOD_OK);
        QCOMPARE(channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, time++), FMOD_OK);
        QCOMPARE(channel->setPaused(false), FMOD_OK);
    }
    update(*system, 1);
    const std::vector<short> samples = finish(system).samples;
    QCOMPARE(samples[0], short{4000});
    QCOMPARE(samples[2], short{8000});
    QCOMPARE(samples[4], short{0});
}

void tst_BuiltinSystem::volumeChangesDoNotClick()
{
    SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(48000, 2, std::vector<short>(20 * Block, 32767)));
    FMOD::Channel *const channel = open(*system, sound);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    for (int i = 0; i < 10; ++i) {
        update(*system, 1);
        QCOMPARE(channel->setVolume(i % 2 == 0 ? 0.0F : 1.0F), FMOD_OK);
    }
    const std::vector<short> samples = finish(system).samples;
    for (std::size_t i = 2; i < 20 * Block; i += 2)
        QVERIFY(std::abs(samples[i] - samples[i - 2]) <= 33);
}

void tst_BuiltinSystem::plannedFadeIsExactToTheFrame()
{
    SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(48000, 2, std::vector<short>(20 * Block, 20000)));
    FMOD::Channel *const channel = open(*system, sound);
    PlannedFade::plan(*channel, 5, 5); // the last one counts
    PlannedFade::plan(*channel, 1500, 4000);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    PlannedFade::plan(*channel, 1600, 300); // too late
    for (int i = 0; i < 7; ++i) {
        update(*system, 1);
        QCOMPARE(channel->setVolume(i == 0 ? 1.0F : 0.1F), FMOD_OK);
    }
    QCOMPARE(channel->stop(), FMOD_OK);
    const std::vector<short> samples = finish(system).samples;
    for (std::size_t i = 0; i < 7 * Block; ++i) {
        const double gain = i < 1500 ? 1 : std::max(0.0, (5499 - static_cast<double>(i)) / 4000);
        QVERIFY(std::abs(samples[2 * i] - 20000 * gain) < 0.6);
    }
}

void tst_BuiltinSystem::plannedFadeIsForgottenWithItsNote()
{
    SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(48000, 2, std::vector<short>(4 * Block, 20000)));
    FMOD::Channel *const channel = open(*system, sound);
    PlannedFade::plan(*channel, 100, 300);
    QCOMPARE(channel->stop(), FMOD_OK);
    FMOD::Channel *const again = open(*system, sound);
    QVERIFY(again == channel);
    QCOMPARE(again->setPaused(false), FMOD_OK);
    update(*system, 1);
    QVERIFY(finish(system).samples == std::vector<short>(2 * Block, 20000));
}

void tst_BuiltinSystem::stopDoesNotClick()
{
    SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(48000, 2, std::vector<short>(20 * Block, 32767)));
    FMOD::Channel *const channel = open(*system, sound);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    update(*system, 1);
    QCOMPARE(channel->stop(), FMOD_OK);
    update(*system, 1);
    const std::vector<short> samples = finish(system).samples;
    for (std::size_t i = 2; i < 4 * Block; i += 2)
        QVERIFY(std::abs(samples[i] - samples[i - 2]) <= 129);
    QCOMPARE(samples[2 * (Block + 256)], short{0});
}

void tst_BuiltinSystem::everyNoteOfManyIsInTheFile()
{
    SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(48000, 2, std::vector<short>(10000, 1)));
    for (unsigned int i = 0; i < 5000; ++i) {
        FMOD::Channel *const channel = open(*system, sound);
        QCOMPARE(channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, i), FMOD_OK);
        QCOMPARE(channel->setPaused(false), FMOD_OK);
    }
    update(*system, 10);
    const std::vector<short> samples = finish(system).samples;
    for (int i = 0; i < 10000; ++i)
        QCOMPARE(int{samples[static_cast<std::size_t>(2 * i)]}, i < 5000 ? i + 1 : 9999 - i);
}

void tst_BuiltinSystem::sameCallsGiveTheSameBytes()
{
    QByteArray first;
    for (int round = 0; round < 2; ++round) {
        SystemPtr system = start();
        FMOD::Sound *const sound = load(*system, SoundFiles::encode16(44100, 1, ramp(5000, 1)));
        for (unsigned int i = 0; i < 50; ++i) {
            FMOD::Channel *const channel = open(*system, sound);
            channel->setFrequency(30000.0F + 500.0F * static_cast<float>(i));
            channel->setVolume(0.01F * static_cast<float>(i));
            channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, 100 * i);
            channel->setPaused(false);
        }
        update(*system, 12);
        finish(system);
        if (round == 0)
            first = contents(m_file);
    }
    QVERIFY(first.size() > 40000);
    QVERIFY(contents(m_file) == first);
}

/// Notes of several sounds and rates, some of them again and again, started on the way.
QByteArray tst_BuiltinSystem::manyNotes(unsigned threads)
{
    SystemPtr system = start(threads);
    std::array<FMOD::Sound *, 6> sounds{};
    for (std::size_t i = 0; i < sounds.size(); ++i)
        sounds[i] = load(*system, vorbis(static_cast<int>(i)));
    for (unsigned int block = 0; block < 30; ++block) {
        for (unsigned int i = 0; i < 6; ++i) {
            FMOD::Channel *const channel = open(*system, sounds[(block + i) % 6]);
            channel->setFrequency(40000.0F + 700.0F * static_cast<float>(block * i % 17));
            channel->setVolume(0.37F);
            channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, block * unsigned{Block} + 900U * i);
            channel->setPaused(false);
        }
        update(*system, 1);
    }
    update(*system, 20);
    finish(system);
    return contents(m_file);
}

void tst_BuiltinSystem::numberOfThreadsDoesNotChangeTheBytes()
{
    const QByteArray expected = manyNotes(0);
    QVERIFY(expected.size() > 200000);
    for (const unsigned threads : {1U, 2U, 8U, 8U})
        QVERIFY(manyNotes(threads) == expected);
}

void tst_BuiltinSystem::firstChordOfManySoundsIsComplete_data()
{
    addThreadRows();
}

void tst_BuiltinSystem::firstChordOfManySoundsIsComplete()
{
    QFETCH(unsigned, threads);
    SystemPtr system = start(threads);
    for (short i = 0; i < 300; ++i) {
        std::vector<short> tone(6000, 1);
        tone[0] = static_cast<short>(i + 2);
        playAt(*system, load(*system, SoundFiles::encode16(48000, 2, tone)),
               static_cast<unsigned int>(500 + 2 * i));
    }
    update(*system, 4);
    const std::vector<short> samples = finish(system).samples;
    QCOMPARE(samples[998], short{0});
    for (std::size_t i = 0; i < 300; ++i) {
        const std::size_t place = 2 * (500 + 2 * i);
        QCOMPARE(static_cast<std::size_t>(samples[place]), 2 * i + 2);
        QCOMPARE(static_cast<std::size_t>(samples[place + 2]), i + 1);
    }
}

void tst_BuiltinSystem::soundComesFromAFileToo()
{
    const QString name = m_directory->filePath(QStringLiteral("sound.wav"));
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(SoundFiles::encode16(48000, 2, {5, 6, 7, 8}));
    file.close();
    SystemPtr system = start();
    FMOD::Sound *sound = nullptr;
    QCOMPARE(system->createSound(QFile::encodeName(name).constData(), FileMode, nullptr, &sound),
             FMOD_OK);
    FMOD::Channel *channel = nullptr;
    QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, sound, false, &channel), FMOD_OK);
    update(*system, 1);
    const std::vector<short> samples = finish(system).samples;
    QCOMPARE(samples[2], short{7});
    QCOMPARE(samples[3], short{8});
}

void tst_BuiltinSystem::recordSizeOfTheSoundInfoIsChecked()
{
    const SystemPtr system = start();
    const QByteArray bytes = SoundFiles::encode16(48000, 1, {1});
    FMOD_CREATESOUNDEXINFO info = infoFor(bytes);
    FMOD::Sound *sound = nullptr;
    for (const int size : {0, 215, 217, -216}) {
        info.cbsize = size;
        QCOMPARE(system->createSound(bytes.constData(), MemoryMode, &info, &sound),
                 FMOD_ERR_INVALID_PARAM);
        QVERIFY(sound == nullptr);
    }
    info.cbsize = 216;
    QCOMPARE(system->createSound(bytes.constData(), MemoryMode, &info, &sound), FMOD_OK);
}

void tst_BuiltinSystem::badSoundsAnswerErrors()
{
    const SystemPtr system = start();
    FMOD::Sound *sound = nullptr;
    QCOMPARE(system->createSound("/nowhere/x.wav", FileMode, nullptr, &sound),
             FMOD_ERR_FILE_NOTFOUND);
    QCOMPARE(system->createSound("/tmp", FileMode, nullptr, &sound), FMOD_ERR_FILE_BAD);
    const QByteArray text("no sound");
    FMOD_CREATESOUNDEXINFO info = infoFor(text);
    QCOMPARE(system->createSound(text.constData(), MemoryMode, &info, &sound), FMOD_ERR_FORMAT);
    info.length = 0;
    QCOMPARE(system->createSound(text.constData(), MemoryMode, &info, &sound), FMOD_ERR_FORMAT);
    QVERIFY(sound == nullptr);
}

void tst_BuiltinSystem::soundDamagedBehindItsHeaderIsSilent_data()
{
    addThreadRows();
}

void tst_BuiltinSystem::soundDamagedBehindItsHeaderIsSilent()
{
    QFETCH(unsigned, threads);
    QByteArray bytes = vorbis(0);
    const int audio = bytes.indexOf("OggS", bytes.indexOf("vorbis", 100));
    for (int i = audio + 100; i < bytes.size(); ++i)
        bytes[i] = '\x55';
    SystemPtr system = start(threads);
    FMOD::Channel *const channel = playAt(*system, load(*system, bytes), 0);
    playAt(*system, load(*system, SoundFiles::encode16(48000, 2, {5, 6})), 0);
    update(*system, 3);
    QCOMPARE(channel->setVolume(0.5F), FMOD_OK);
    const std::vector<short> samples = finish(system).samples;
    QCOMPARE(samples[0], short{5});
    QCOMPARE(samples[1], short{6});
    QCOMPARE(std::count(samples.begin() + 2, samples.end(), 0), std::ptrdiff_t{6 * Block - 2});
}

void tst_BuiltinSystem::soundThatBreaksOffSoundsUpToThere()
{
    QByteArray bytes = SoundFiles::encode16(48000, 2, std::vector<short>(4000, 77));
    bytes.truncate(bytes.size() - 4000);
    SystemPtr system = start();
    playAt(*system, load(*system, bytes), 0);
    update(*system, 2);
    const std::vector<short> samples = finish(system).samples;
    QCOMPARE(samples[1998], short{77});
    QCOMPARE(samples[2000], short{0});
}

void tst_BuiltinSystem::noteThatIsTooLongIsSilent()
{
    SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(48000, 1, std::vector<short>(400000, 99)));
    for (int i = 0; i < 2; ++i) {
        FMOD::Channel *const channel = open(*system, sound);
        QCOMPARE(channel->setFrequency(750), FMOD_OK); // 64 times as long
        QCOMPARE(channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, Block), FMOD_OK);
        QCOMPARE(channel->setPaused(false), FMOD_OK);
    }
    QCOMPARE(system->update(), FMOD_OK);
    QCOMPARE(system->update(), FMOD_ERR_MEMORY);
    QCOMPARE(clockOf(*system), quint64{2 * Block});
    QCOMPARE(system->update(), FMOD_OK);
    QVERIFY(finish(system).samples == std::vector<short>(6 * Block, 0));
}

void tst_BuiltinSystem::openFilesAreBounded()
{
    const QString name = m_directory->filePath(QStringLiteral("sound.wav"));
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(SoundFiles::encode16(48000, 2, {5, 6}));
    file.close();
    SystemPtr system = start(0);
    rlimit before = {};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit limit = {100, before.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &limit), 0);
    int made = 0;
    for (int i = 0; i < 300; ++i) {
        FMOD::Sound *sound = nullptr;
        if (system->createSound(QFile::encodeName(name).constData(), FileMode, nullptr, &sound)
            == FMOD_OK)
            ++made;
    }
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &before), 0);
    QCOMPARE(made, 300);
}

void tst_BuiltinSystem::emptySoundEndsAtOnce()
{
    SystemPtr system = start();
    FMOD::Channel *const channel = open(*system, load(*system, SoundFiles::encode16(48000, 1, {})));
    QCOMPARE(channel->setFrequency(30000), FMOD_OK);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    update(*system, 1);
    QCOMPARE(channel->setVolume(1), FMOD_OK);
    QVERIFY(finish(system).samples == std::vector<short>(2 * Block, 0));
}

void tst_BuiltinSystem::unknownModesAreRefused()
{
    const SystemPtr system = start();
    FMOD::Sound *sound = nullptr;
    QCOMPARE(system->createSound("x", FileMode | 0x2, nullptr, &sound), FMOD_ERR_INVALID_PARAM);
    FMOD::Channel *channel = nullptr;
    sound = load(*system, SoundFiles::encode16(48000, 1, {1}));
    QCOMPARE(system->playSound(static_cast<FMOD_CHANNELINDEX>(-2), sound, true, &channel),
             FMOD_ERR_INVALID_PARAM);
    QVERIFY(channel == nullptr);
    channel = open(*system, sound);
    QCOMPARE(channel->setDelay(static_cast<FMOD_DELAYTYPE>(0), 0, 0), FMOD_ERR_INVALID_PARAM);
}

void tst_BuiltinSystem::releasedSoundSoundsOnAndIsUnknown()
{
    SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(24000, 2, std::vector<short>(4000, 9000)));
    FMOD::Channel *const sounding = open(*system, sound);
    FMOD::Channel *const waiting = open(*system, sound);
    QCOMPARE(sounding->setPaused(false), FMOD_OK);
    QCOMPARE(sound->release(), FMOD_OK);
    QCOMPARE(waiting->setPaused(false), FMOD_OK);
    FMOD::Channel *channel = nullptr;
    QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, sound, true, &channel), FMOD_ERR_INVALID_HANDLE);
    update(*system, 2);
    QVERIFY(std::abs(finish(system).samples[4000] - 18000) < 10);
}

void tst_BuiltinSystem::soundReleasedWhileItIsPreparedSoundsOn_data()
{
    addThreadRows();
}

void tst_BuiltinSystem::soundReleasedWhileItIsPreparedSoundsOn()
{
    QFETCH(unsigned, threads);
    QByteArray files[2];
    for (int round = 0; round < 2; ++round) {
        SystemPtr system = start(threads);
        for (int i = 0; i < 12; ++i) {
            FMOD::Sound *const sound = load(*system, vorbis(i % 3));
            if (i % 3 != 0)
                playAt(*system, sound, static_cast<unsigned int>(i * 400));
            if (i % 3 == 0 || round == 1)
                QCOMPARE(sound->release(), FMOD_OK);
        }
        update(*system, 20);
        finish(system);
        files[round] = contents(m_file);
    }
    QVERIFY(files[0] == files[1]);
}

void tst_BuiltinSystem::systemMayEndWhileSoundsArePrepared_data()
{
    addThreadRows();
}

void tst_BuiltinSystem::systemMayEndWhileSoundsArePrepared()
{
    QFETCH(unsigned, threads);
    const QByteArray bytes = vorbis(1);
    for (int round = 0; round < 20; ++round) {
        SystemPtr system = start(threads);
        for (int i = 0; i < round; ++i) {
            FMOD::Channel *const channel = open(*system, load(*system, bytes));
            channel->setFrequency(30000);
            channel->setPaused(false);
        }
        QVERIFY(finish(system).samples.empty());
    }
}

void tst_BuiltinSystem::voiceStoppedWhileItIsPreparedIsSilent()
{
    SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(48000, 2, std::vector<short>(2 * Block, 500)));
    FMOD::Channel *const stopped = playAt(*system, sound, 0);
    QCOMPARE(stopped->stop(), FMOD_OK);
    FMOD::Channel *const again = playAt(*system, sound, Block);
    QVERIFY(again == stopped);
    update(*system, 3);
    const std::vector<short> samples = finish(system).samples;
    QVERIFY(std::vector<short>(samples.begin(), samples.begin() + 2 * Block)
            == std::vector<short>(2 * Block, 0));
    QVERIFY(std::vector<short>(samples.begin() + 2 * Block, samples.begin() + 4 * Block)
            == std::vector<short>(2 * Block, 500));
}

void tst_BuiltinSystem::soundOfAnotherSystemIsUnknown()
{
    const SystemPtr system = start();
    const SystemPtr other = createSystem();
    QCOMPARE(initSystem(*other, m_directory->filePath(QStringLiteral("other.wav"))), FMOD_OK);
    FMOD::Channel *channel = nullptr;
    QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, load(*other, SoundFiles::encode16(48000, 1, {1})),
                               true, &channel),
             FMOD_ERR_INVALID_HANDLE);
}

void tst_BuiltinSystem::endedChannelTouchesNoOtherVoice()
{
    SystemPtr system = start();
    FMOD::Sound *const brief = load(*system, SoundFiles::encode16(48000, 2, {1, 1}));
    FMOD::Sound *const longer =
        load(*system, SoundFiles::encode16(48000, 2, std::vector<short>(8 * Block, 500)));
    FMOD::Channel *const ended = open(*system, brief);
    ended->setPaused(false);
    update(*system, 1);
    FMOD::Channel *const other = open(*system, longer);
    QVERIFY(other != ended);
    other->setPaused(false);
    update(*system, 1);
    float frequency = 0;
    QCOMPARE(ended->setVolume(0), FMOD_OK);
    QCOMPARE(ended->setPan(0), FMOD_OK);
    QCOMPARE(ended->setFrequency(48000), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(ended->getFrequency(&frequency), FMOD_OK);
    QCOMPARE(ended->setPaused(false), FMOD_OK);
    QCOMPARE(ended->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, 0), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(ended->stop(), FMOD_OK);
    QCOMPARE(ended->stop(), FMOD_ERR_INVALID_HANDLE);
    update(*system, 2);
    const std::vector<short> samples = finish(system).samples;
    QVERIFY(std::vector<short>(samples.begin() + 2048, samples.end())
            == std::vector<short>(6 * Block, 500));
}

void tst_BuiltinSystem::stoppedChannelIsUsedAgain()
{
    const SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(48000, 2, std::vector<short>(8 * Block, 500)));
    FMOD::Channel *const channel = open(*system, sound);
    channel->setVolume(0.5F);
    channel->setFrequency(20000);
    channel->setPaused(false);
    QCOMPARE(channel->stop(), FMOD_OK);
    FMOD::Channel *const again = open(*system, sound);
    QVERIFY(again == channel);
    float frequency = 0;
    QCOMPARE(again->getFrequency(&frequency), FMOD_OK);
    QCOMPARE(frequency, 48000.0F);
}

void tst_BuiltinSystem::channelsThatWereDroppedDoNotPileUp()
{
    const SystemPtr system = start();
    FMOD::Sound *const sound = load(*system, SoundFiles::encode16(48000, 2, {1, 1}));
    FMOD::Channel *const first = open(*system, sound);
    first->setPaused(false);
    const auto dropOneBlockOfNotes = [&] {
        bool sawFirst = false;
        for (int i = 0; i < 8192; ++i) {
            FMOD::Channel *const channel = open(*system, sound);
            sawFirst = sawFirst || channel == first;
            channel->setPaused(false);
        }
        update(*system, 1);
        return sawFirst;
    };
    // Its caller may still hold it while as many other notes end as can sound at once.
    for (int i = 0; i < 8; ++i)
        QVERIFY(!dropOneBlockOfNotes());
    QVERIFY(dropOneBlockOfNotes() || dropOneBlockOfNotes());
}

void tst_BuiltinSystem::tooManyChannelsAreRefused()
{
    const SystemPtr system = start();
    FMOD::Sound *const sound =
        load(*system, SoundFiles::encode16(48000, 2, std::vector<short>(4 * Block, 0)));
    FMOD::Channel *last = nullptr;
    for (std::size_t i = 0; i < ChannelPool::MaxVoices; ++i) {
        last = open(*system, sound);
        if (i % 2 == 0)
            last->setPaused(false);
    }
    FMOD::Channel *channel = nullptr;
    QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, sound, true, &channel), FMOD_ERR_CHANNEL_ALLOC);
    QVERIFY(channel == nullptr);
    QCOMPARE(last->stop(), FMOD_OK);
    QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, sound, true, &channel), FMOD_OK);
    update(*system, 2);
    QCOMPARE(system->playSound(FMOD_CHANNEL_FREE, sound, true, &channel), FMOD_OK);
}

void tst_BuiltinSystem::channelRefusesAbsurdValues()
{
    const SystemPtr system = start();
    FMOD::Channel *const channel =
        open(*system, load(*system, SoundFiles::encode16(48000, 1, {1, 2})));
    const float infinity = std::numeric_limits<float>::infinity();
    const float none = std::numeric_limits<float>::quiet_NaN();
    for (const float value : {infinity, -infinity, none}) {
        QCOMPARE(channel->setVolume(value), FMOD_ERR_INVALID_PARAM);
        QCOMPARE(channel->setPan(value), FMOD_ERR_INVALID_PARAM);
        QCOMPARE(channel->setFrequency(value), FMOD_ERR_INVALID_PARAM);
    }
    for (const float value : {0.0F, -48000.0F, 749.0F, 3073000.0F})
        QCOMPARE(channel->setFrequency(value), FMOD_ERR_INVALID_PARAM);
    float frequency = 0;
    QCOMPARE(channel->getFrequency(&frequency), FMOD_OK);
    QCOMPARE(frequency, 48000.0F);
}

void tst_BuiltinSystem::soundingChannelKeepsItsRate()
{
    const SystemPtr system = start();
    FMOD::Channel *const channel =
        open(*system, load(*system, SoundFiles::encode16(48000, 1, {1, 2})));
    QCOMPARE(channel->setPaused(true), FMOD_OK);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    QCOMPARE(channel->setPaused(false), FMOD_OK);
    QCOMPARE(channel->setPaused(true), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(channel->setFrequency(24000), FMOD_ERR_INVALID_PARAM);
    QCOMPARE(channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, 1), FMOD_ERR_INVALID_PARAM);
    FMOD::ChannelGroup *group = nullptr;
    QCOMPARE(system->createChannelGroup("T1", &group), FMOD_OK);
    QCOMPARE(channel->setChannelGroup(group), FMOD_OK);
    QCOMPARE(group->release(), FMOD_OK);
}

void tst_BuiltinSystem::reportTellsFramesPeakAndClipping()
{
    SystemPtr system = start();
    FMOD::Sound *const sound = load(*system, SoundFiles::encode16(48000, 2, {16384, -24576, 0, 0}));
    for (int i = 0; i < 3; ++i)
        open(*system, sound)->setPaused(false);
    update(*system, 2);
    const auto report = WaveOutput::report(*system);
    QVERIFY(report.has_value());
    QCOMPARE(report->frames, std::uint64_t{2 * Block});
    QCOMPARE(report->peak, 2.25F);
    QCOMPARE(report->clipped, std::uint64_t{2});
    const std::vector<short> samples = finish(system).samples;
    QCOMPARE(samples[0], short{32767});
    QCOMPARE(samples[1], short{-32768});
}

void tst_BuiltinSystem::abandonedFileIsDropped()
{
    SystemPtr system = start();
    update(*system, 3);
    QVERIFY(WaveOutput::abandon(*system));
    QCOMPARE(system.release()->release(), FMOD_OK);
    QCOMPARE(entries(m_directory->path()), QStringList());
}

void tst_BuiltinSystem::failedWriteStopsTheClock()
{
    QFile old(m_file);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("older song");
    old.close();
    SystemPtr system = start();
    update(*system, 2);

    // A limit on the size of files does what a full disk does.
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limit = {9000, before.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const FMOD_RESULT first = system->update();
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);

    QCOMPARE(first, FMOD_ERR_FILE_BAD);
    QCOMPARE(clockOf(*system), quint64{2 * Block});
    QCOMPARE(system->update(), FMOD_ERR_FILE_BAD);
    QCOMPARE(clockOf(*system), quint64{2 * Block});
    QCOMPARE(WaveOutput::report(*system)->frames, std::uint64_t{2 * Block});
    QCOMPARE(system.release()->release(), FMOD_ERR_FILE_BAD);
    QCOMPARE(contents(m_file), QByteArray("older song"));
    QCOMPARE(entries(m_directory->path()), QStringList{QStringLiteral("out.wav")});
}

void tst_BuiltinSystem::unfinishedSystemOverwritesNothing()
{
    const SystemPtr system = start();
    update(*system, 3);
    QVERIFY(!QFile::exists(m_file));
}

QTEST_APPLESS_MAIN(tst_BuiltinSystem)
#include "tst_BuiltinSystem.moc"
