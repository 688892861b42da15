#include "Sound/InstalledLibrary.h"

#include "Sound/Fmod.h"
#include "Sound/InstalledSystem.h"
#include "support/FakeFmod.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

constexpr FMOD_MODE fileMode = FMOD_2D | FMOD_SOFTWARE | FMOD_CREATESAMPLE;
constexpr FMOD_MODE memoryMode = fileMode | FMOD_OPENMEMORY;

struct Release {
    void operator()(FMOD::System *system) const { system->release(); }
};
using SystemPointer = std::unique_ptr<FMOD::System, Release>;

SystemPointer makeSystem()
{
    FMOD::System *system = nullptr;
    const FMOD_RESULT result = FMOD::System_Create(&system);
    if (result != FMOD_OK)
        qFatal("No system: %d", result);
    return SystemPointer(system);
}

FMOD::Sound *makeSound(FMOD::System &system)
{
    FMOD::Sound *sound = nullptr;
    system.createSound("a.wav", fileMode, nullptr, &sound);
    return sound;
}

FMOD::Channel *play(FMOD::System &system, FMOD::Sound *sound)
{
    FMOD::Channel *channel = nullptr;
    system.playSound(FMOD_CHANNEL_FREE, sound, true, &channel);
    return channel;
}

/// A fake library with a system, a sound and a paused channel, and an empty log.
struct Scene {
    FakeFmod fake;
    SystemPointer system = makeSystem();
    FMOD::Sound *sound = makeSound(*system);
    FMOD::Channel *channel = play(*system, sound);

    Scene() { fake.clearCalls(); }
};

void touch(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("Cannot write a file");
}

} // namespace

#define COMPARE_CALL(fake, line) QCOMPARE((fake).calls(), QStringList{QStringLiteral(line)})

class tst_InstalledLibrary : public QObject {
    Q_OBJECT

private slots:
    void init();
    void aSystemIsCreatedByTheLibrary();
    void aSystemIsReleasedByTheLibrary();
    void outputFiveIsTheWaveWriter();
    void theNumberOfSoftwareChannelsIsPassedOn();
    void theSampleRateAloneMayBeAsked();
    void theWholeSoftwareFormatMayBeAsked();
    void initPassesTheFileNameOfTheWaveWriter();
    void initWithoutDriverDataPassesNull();
    void updateAdvancesTheWaveWriterByABlock();
    void theClockComesInTwoHalves();
    void aSoundFromAFileHasMode0x148();
    void aSoundFromMemoryHasMode0x948AndARecordOf216Bytes();
    void garbageInTheRecordWouldShow();
    void aSoundIsReleased();
    void aReleasedSoundTakesNoMemory();
    void aSoundThatTheLibraryKeepsMayBeReleasedAgain();
    void aChannelGroupIsNamed();
    void aChannelGroupIsReleased();
    void playSoundTakesAFreeChannelAndStartsPaused();
    void playSoundMayStartAtOnce();
    void channelCalls_data();
    void channelCalls();
    void theFrequencyIsRead();
    void theDelayIsSplitInHalves();
    void theGroupOfAChannelIsThatOfTheLibrary();
    void anyCallAnswersTheErrorOfTheLibrary_data();
    void anyCallAnswersTheErrorOfTheLibrary();
    void aFailedCreateLeavesANullSystem();
    void aFailedSoundIsNull();
    void aFailedGroupIsNull();
    void aFailedChannelIsNull();
    void successWithoutAnObjectIsAnError();
    void aNullSoundIsPlayedAsNull();
    void aStoppedChannelIsUsedAgain();
    void aStoppedChannelRefusesCallsAndDoesNotReachTheLibrary();
    void aChannelStoppedTwiceIsGivenBackOnce();
    void theSameHandleMeansTheSameChannel();
    void differentHandlesMeanDifferentChannels();
    void anEndedChannelAnswersInvalidHandle();
    void channelsThatAreNeverStoppedDoNotPileUp();
    void everythingGoesWithTheSystem();
    void theCallsOfARenderArriveInOrder();
    void aMissingLibraryCountsAsAbsent();
    void aLibraryThatLacksAnEntryPointCountsAsAbsent();
    void warningsNameTheirSource();
    void theNamedFileIsReadAtEachCall();
    void numberedFilesComeInOrder();
    void otherFilesAreNoCandidates();
    void candidatesBeginWithTheLoadersNames();
    void aNumberedLibraryIsFoundAndLoaded();
};

void tst_InstalledLibrary::init()
{
    qunsetenv("QUILLMOOR_FMOD_LIBRARY");
    qunsetenv("QUILLMOOR_SOUND");
    qunsetenv("LD_LIBRARY_PATH");
}

void tst_InstalledLibrary::aSystemIsCreatedByTheLibrary()
{
    const FakeFmod fake;
    const SystemPointer system = makeSystem();
    QVERIFY(system);
    COMPARE_CALL(fake, "FMOD_System_Create() -> system1");
}

void tst_InstalledLibrary::aSystemIsReleasedByTheLibrary()
{
    Scene scene;
    QCOMPARE(scene.system.release()->release(), FMOD_OK);
    COMPARE_CALL(scene.fake, "FMOD_System_Release(system1)");
}

void tst_InstalledLibrary::outputFiveIsTheWaveWriter()
{
    Scene scene;
    QCOMPARE(scene.system->setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT), FMOD_OK);
    COMPARE_CALL(scene.fake, "FMOD_System_SetOutput(system1, 5)");
}

void tst_InstalledLibrary::theNumberOfSoftwareChannelsIsPassedOn()
{
    Scene scene;
    QCOMPARE(scene.system->setSoftwareChannels(2048), FMOD_OK);
    COMPARE_CALL(scene.fake, "FMOD_System_SetSoftwareChannels(system1, 2048)");
}

void tst_InstalledLibrary::theSampleRateAloneMayBeAsked()
{
    Scene scene;
    scene.fake.setOutputRate(44100);
    int rate = 0;
    QCOMPARE(scene.system->getSoftwareFormat(&rate, nullptr, nullptr, nullptr, nullptr, nullptr),
             FMOD_OK);
    QCOMPARE(rate, 44100);
    COMPARE_CALL(scene.fake,
                 "FMOD_System_GetSoftwareFormat(system1, out, null, null, null, null, null)"
                 " -> 44100");
}

void tst_InstalledLibrary::theWholeSoftwareFormatMayBeAsked()
{
    Scene scene;
    int rate = 0;
    FMOD_SOUND_FORMAT format = FMOD_SOUND_FORMAT_NONE;
    int outputs = 0;
    int inputs = 0;
    FMOD_DSP_RESAMPLER resampler = FMOD_DSP_RESAMPLER_NOINTERP;
    int bits = 0;
    QCOMPARE(scene.system->getSoftwareFormat(&rate, &format, &outputs, &inputs, &resampler, &bits),
             FMOD_OK);
    QCOMPARE(rate, 48000);
    QCOMPARE(static_cast<int>(format), 2);
    QCOMPARE(outputs, 2);
    QCOMPARE(inputs, 6);
    QCOMPARE(static_cast<int>(resampler), 1);
    QCOMPARE(bits, 16);
}

void tst_InstalledLibrary::initPassesTheFileNameOfTheWaveWriter()
{
    const QTemporaryDir folder;
    const QString fileName = folder.filePath(QStringLiteral("out.wav"));
    QByteArray name = fileName.toLocal8Bit();
    Scene scene;
    scene.system->setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT);
    QCOMPARE(scene.system->init(2048, FMOD_INIT_STREAM_FROM_UPDATE, name.data()), FMOD_OK);
    QCOMPARE(
        scene.fake.calls(QStringLiteral("FMOD_System_Init")),
        QStringList{QStringLiteral("FMOD_System_Init(system1, 2048, 1, \"%1\")").arg(fileName)});
}

void tst_InstalledLibrary::initWithoutDriverDataPassesNull()
{
    Scene scene;
    QCOMPARE(scene.system->init(2048, FMOD_INIT_NORMAL, nullptr), FMOD_OK);
    COMPARE_CALL(scene.fake, "FMOD_System_Init(system1, 2048, 0, null)");
}

void tst_InstalledLibrary::updateAdvancesTheWaveWriterByABlock()
{
    const QTemporaryDir folder;
    const QString fileName = folder.filePath(QStringLiteral("out.wav"));
    Scene scene;
    scene.system->setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT);
    scene.system->init(2048, FMOD_INIT_STREAM_FROM_UPDATE, fileName.toLocal8Bit().data());
    scene.fake.clearCalls();
    QCOMPARE(scene.system->update(), FMOD_OK);
    COMPARE_CALL(scene.fake, "FMOD_System_Update(system1)");
    unsigned int hi = 1;
    unsigned int lo = 1;
    QCOMPARE(scene.system->getDSPClock(&hi, &lo), FMOD_OK);
    QCOMPARE(hi, 0U);
    QCOMPARE(lo, 1024U);
    scene.system.reset();
    QCOMPARE(QFileInfo(fileName).size(), 44 + 1024 * 4);
}

void tst_InstalledLibrary::theClockComesInTwoHalves()
{
    Scene scene;
    scene.fake.setClock((quint64(3) << 32) + 4294967295U);
    unsigned int hi = 0;
    unsigned int lo = 0;
    QCOMPARE(scene.system->getDSPClock(&hi, &lo), FMOD_OK);
    QCOMPARE(hi, 3U);
    QCOMPARE(lo, 4294967295U);
    COMPARE_CALL(scene.fake, "FMOD_System_GetDSPClock(system1) -> 3 4294967295");
}

void tst_InstalledLibrary::aSoundFromAFileHasMode0x148()
{
    Scene scene;
    FMOD::Sound *sound = nullptr;
    QCOMPARE(scene.system->createSound("sounds/harp.ogg", fileMode, nullptr, &sound), FMOD_OK);
    QVERIFY(sound);
    COMPARE_CALL(scene.fake,
                 "FMOD_System_CreateSound(system1, \"sounds/harp.ogg\", 0x148, null) -> sound2");
}

void tst_InstalledLibrary::aSoundFromMemoryHasMode0x948AndARecordOf216Bytes()
{
    Scene scene;
    FMOD_CREATESOUNDEXINFO info = {};
    info.cbsize = 216;
    info.length = 5;
    FMOD::Sound *sound = nullptr;
    QCOMPARE(scene.system->createSound("\x01\x02\x00\xfe\xff", memoryMode, &info, &sound), FMOD_OK);
    QVERIFY(sound);
    COMPARE_CALL(scene.fake,
                 "FMOD_System_CreateSound(system1, data:010200feff, 0x948, "
                 "{cbsize=216, length=5, rest=0}) -> sound2");
}

void tst_InstalledLibrary::garbageInTheRecordWouldShow()
{
    Scene scene;
    FMOD_CREATESOUNDEXINFO info = {216, 1, {}};
    info.reserved[25] = quint64(1) << 63;
    FMOD::Sound *sound = nullptr;
    scene.system->createSound("x", memoryMode, &info, &sound);
    COMPARE_CALL(scene.fake,
                 "FMOD_System_CreateSound(system1, data:78, 0x948, "
                 "{cbsize=216, length=1, rest=garbage}) -> sound2");
}

void tst_InstalledLibrary::aSoundIsReleased()
{
    Scene scene;
    QCOMPARE(scene.sound->release(), FMOD_OK);
    COMPARE_CALL(scene.fake, "FMOD_Sound_Release(sound1)");
}

void tst_InstalledLibrary::aReleasedSoundTakesNoMemory()
{
    InstalledSound::Owner owner;
    FMOD::Sound *const sound =
        InstalledSound::make(owner, nullptr, [](RawSound *) { return FMOD_OK; });
    QCOMPARE(owner.size(), std::size_t(1));
    QCOMPARE(sound->release(), FMOD_OK);
    QCOMPARE(owner.size(), std::size_t(0));
}

void tst_InstalledLibrary::aSoundThatTheLibraryKeepsMayBeReleasedAgain()
{
    Scene scene;
    scene.fake.fail(QStringLiteral("FMOD_Sound_Release"), 1, 54);
    QCOMPARE(static_cast<int>(scene.sound->release()), 54);
    QCOMPARE(scene.sound->release(), FMOD_OK);
    const QStringList expected{QStringLiteral("FMOD_Sound_Release(sound1) = 54"),
                               QStringLiteral("FMOD_Sound_Release(sound1)")};
    QCOMPARE(scene.fake.calls(), expected);
}

void tst_InstalledLibrary::aChannelGroupIsNamed()
{
    Scene scene;
    FMOD::ChannelGroup *group = nullptr;
    QCOMPARE(scene.system->createChannelGroup("T1", &group), FMOD_OK);
    QVERIFY(group);
    COMPARE_CALL(scene.fake, "FMOD_System_CreateChannelGroup(system1, \"T1\") -> group1");
}

void tst_InstalledLibrary::aChannelGroupIsReleased()
{
    Scene scene;
    FMOD::ChannelGroup *group = nullptr;
    scene.system->createChannelGroup("T1", &group);
    scene.fake.clearCalls();
    QCOMPARE(group->release(), FMOD_OK);
    COMPARE_CALL(scene.fake, "FMOD_ChannelGroup_Release(group1)");
}

void tst_InstalledLibrary::playSoundTakesAFreeChannelAndStartsPaused()
{
    Scene scene;
    FMOD::Channel *channel = nullptr;
    QCOMPARE(scene.system->playSound(FMOD_CHANNEL_FREE, scene.sound, true, &channel), FMOD_OK);
    QVERIFY(channel);
    COMPARE_CALL(scene.fake, "FMOD_System_PlaySound(system1, -1, sound1, 1) -> channel2");
}

void tst_InstalledLibrary::playSoundMayStartAtOnce()
{
    Scene scene;
    FMOD::Channel *channel = nullptr;
    QCOMPARE(scene.system->playSound(FMOD_CHANNEL_FREE, scene.sound, false, &channel), FMOD_OK);
    COMPARE_CALL(scene.fake, "FMOD_System_PlaySound(system1, -1, sound1, 0) -> channel2");
}

using ChannelAction = FMOD_RESULT (*)(FMOD::Channel &);
Q_DECLARE_METATYPE(ChannelAction)

void tst_InstalledLibrary::channelCalls_data()
{
    QTest::addColumn<ChannelAction>("action");
    QTest::addColumn<QString>("call");
    const auto row = [](const char *name, const char *call, ChannelAction action) {
        QTest::newRow(name) << action << QString::fromLatin1(call);
    };
    row("stop", "FMOD_Channel_Stop(channel1)", [](FMOD::Channel &c) { return c.stop(); });
    row("pause", "FMOD_Channel_SetPaused(channel1, 1)",
        [](FMOD::Channel &c) { return c.setPaused(true); });
    row("unpause", "FMOD_Channel_SetPaused(channel1, 0)",
        [](FMOD::Channel &c) { return c.setPaused(false); });
    row("volume", "FMOD_Channel_SetVolume(channel1, 0.25)",
        [](FMOD::Channel &c) { return c.setVolume(0.25F); });
    row("inexact volume", "FMOD_Channel_SetVolume(channel1, 0.100000001)",
        [](FMOD::Channel &c) { return c.setVolume(0.1F); });
    row("frequency", "FMOD_Channel_SetFrequency(channel1, 66150.5)",
        [](FMOD::Channel &c) { return c.setFrequency(66150.5F); });
    row("pan", "FMOD_Channel_SetPan(channel1, -1)",
        [](FMOD::Channel &c) { return c.setPan(-1.0F); });
    row("delay", "FMOD_Channel_SetDelay(channel1, 1, 0, 4800)",
        [](FMOD::Channel &c) { return c.setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, 4800); });
}

void tst_InstalledLibrary::channelCalls()
{
    QFETCH(ChannelAction, action);
    QFETCH(QString, call);
    Scene scene;
    QCOMPARE(action(*scene.channel), FMOD_OK);
    QCOMPARE(scene.fake.calls(), QStringList{call});
}

void tst_InstalledLibrary::theFrequencyIsRead()
{
    FakeFmod fake;
    fake.setSoundFrequency(22050.0F);
    const SystemPointer system = makeSystem();
    FMOD::Channel *const channel = play(*system, makeSound(*system));
    fake.clearCalls();
    float frequency = 0.0F;
    QCOMPARE(channel->getFrequency(&frequency), FMOD_OK);
    QCOMPARE(frequency, 22050.0F);
    COMPARE_CALL(fake, "FMOD_Channel_GetFrequency(channel1) -> 22050");
}

void tst_InstalledLibrary::theDelayIsSplitInHalves()
{
    Scene scene;
    const quint64 clock = (quint64(1) << 32) + 4800;
    QCOMPARE(scene.channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START,
                                     static_cast<unsigned int>(clock >> 32),
                                     static_cast<unsigned int>(clock)),
             FMOD_OK);
    COMPARE_CALL(scene.fake, "FMOD_Channel_SetDelay(channel1, 1, 1, 4800)");
}

void tst_InstalledLibrary::theGroupOfAChannelIsThatOfTheLibrary()
{
    Scene scene;
    FMOD::ChannelGroup *group = nullptr;
    scene.system->createChannelGroup("T2", &group);
    scene.fake.clearCalls();
    QCOMPARE(scene.channel->setChannelGroup(group), FMOD_OK);
    QCOMPARE(static_cast<int>(scene.channel->setChannelGroup(nullptr)), 36);
    const QStringList expected{QStringLiteral("FMOD_Channel_SetChannelGroup(channel1, group1)"),
                               QStringLiteral("FMOD_Channel_SetChannelGroup(channel1, null) = 36")};
    QCOMPARE(scene.fake.calls(), expected);
}

using SceneAction = FMOD_RESULT (*)(Scene &);
Q_DECLARE_METATYPE(SceneAction)

void tst_InstalledLibrary::anyCallAnswersTheErrorOfTheLibrary_data()
{
    QTest::addColumn<SceneAction>("action");
    const auto row = [](const char *function, SceneAction action) {
        QTest::newRow(function) << action;
    };
    row("FMOD_System_SetOutput",
        [](Scene &s) { return s.system->setOutput(FMOD_OUTPUTTYPE_AUTODETECT); });
    row("FMOD_System_SetSoftwareChannels",
        [](Scene &s) { return s.system->setSoftwareChannels(1); });
    row("FMOD_System_GetSoftwareFormat", [](Scene &s) {
        return s.system->getSoftwareFormat(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    });
    row("FMOD_System_Init", [](Scene &s) { return s.system->init(1, FMOD_INIT_NORMAL, nullptr); });
    row("FMOD_System_Update", [](Scene &s) { return s.system->update(); });
    row("FMOD_System_GetDSPClock", [](Scene &s) {
        unsigned int half = 0;
        return s.system->getDSPClock(&half, &half);
    });
    row("FMOD_System_Release", [](Scene &s) { return s.system.release()->release(); });
    row("FMOD_Sound_Release", [](Scene &s) { return s.sound->release(); });
    row("FMOD_ChannelGroup_Release", [](Scene &s) {
        FMOD::ChannelGroup *group = nullptr;
        s.system->createChannelGroup("T1", &group);
        return group->release();
    });
    row("FMOD_Channel_Stop", [](Scene &s) { return s.channel->stop(); });
    row("FMOD_Channel_SetPaused", [](Scene &s) { return s.channel->setPaused(false); });
    row("FMOD_Channel_SetVolume", [](Scene &s) { return s.channel->setVolume(1.0F); });
    row("FMOD_Channel_SetFrequency", [](Scene &s) { return s.channel->setFrequency(1.0F); });
    row("FMOD_Channel_GetFrequency", [](Scene &s) {
        float frequency = 0.0F;
        return s.channel->getFrequency(&frequency);
    });
    row("FMOD_Channel_SetPan", [](Scene &s) { return s.channel->setPan(0.0F); });
    row("FMOD_Channel_SetDelay",
        [](Scene &s) { return s.channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, 0); });
    row("FMOD_Channel_SetChannelGroup", [](Scene &s) {
        FMOD::ChannelGroup *group = nullptr;
        s.system->createChannelGroup("T1", &group);
        return s.channel->setChannelGroup(group);
    });
}

void tst_InstalledLibrary::anyCallAnswersTheErrorOfTheLibrary()
{
    QFETCH(SceneAction, action);
    Scene scene;
    scene.fake.fail(QString::fromLatin1(QTest::currentDataTag()), 1, 77);
    QCOMPARE(static_cast<int>(action(scene)), 77);
}

void tst_InstalledLibrary::aFailedCreateLeavesANullSystem()
{
    Scene scene;
    FMOD::System *system = scene.system.get();
    scene.fake.fail(QStringLiteral("FMOD_System_Create"), 1, 43);
    QCOMPARE(InstalledLibrary::find()->createSystem(&system), FMOD_ERR_MEMORY);
    QCOMPARE(system, nullptr);
}

void tst_InstalledLibrary::aFailedSoundIsNull()
{
    Scene scene;
    FMOD::Sound *sound = scene.sound;
    scene.fake.fail(QStringLiteral("FMOD_System_CreateSound"), 1, 23);
    QCOMPARE(scene.system->createSound("none.wav", fileMode, nullptr, &sound),
             FMOD_ERR_FILE_NOTFOUND);
    QCOMPARE(sound, nullptr);
}

void tst_InstalledLibrary::aFailedGroupIsNull()
{
    Scene scene;
    FMOD::ChannelGroup *group = nullptr;
    scene.system->createChannelGroup("T1", &group);
    scene.fake.fail(QStringLiteral("FMOD_System_CreateChannelGroup"), 1, 43);
    QCOMPARE(scene.system->createChannelGroup("T2", &group), FMOD_ERR_MEMORY);
    QCOMPARE(group, nullptr);
}

void tst_InstalledLibrary::aFailedChannelIsNull()
{
    Scene scene;
    FMOD::Channel *channel = scene.channel;
    scene.fake.fail(QStringLiteral("FMOD_System_PlaySound"), 2, 10);
    QCOMPARE(scene.system->playSound(FMOD_CHANNEL_FREE, scene.sound, true, &channel), FMOD_OK);
    QVERIFY(channel);
    QCOMPARE(scene.system->playSound(FMOD_CHANNEL_FREE, scene.sound, true, &channel),
             FMOD_ERR_CHANNEL_ALLOC);
    QCOMPARE(channel, nullptr);
}

void tst_InstalledLibrary::successWithoutAnObjectIsAnError()
{
    Scene scene;
    for (const QString &function :
         {QStringLiteral("FMOD_System_Create"), QStringLiteral("FMOD_System_CreateSound"),
          QStringLiteral("FMOD_System_CreateChannelGroup"),
          QStringLiteral("FMOD_System_PlaySound")})
        scene.fake.fail(function, 1, FMOD_OK);
    FMOD::System *system = scene.system.get();
    FMOD::Sound *sound = scene.sound;
    FMOD::ChannelGroup *group = nullptr;
    FMOD::Channel *channel = scene.channel;
    QCOMPARE(FMOD::System_Create(&system), FMOD_ERR_INTERNAL);
    QCOMPARE(system, nullptr);
    QCOMPARE(scene.system->createSound("a.wav", fileMode, nullptr, &sound), FMOD_ERR_INTERNAL);
    QCOMPARE(sound, nullptr);
    QCOMPARE(scene.system->createChannelGroup("T1", &group), FMOD_ERR_INTERNAL);
    QCOMPARE(group, nullptr);
    QCOMPARE(scene.system->playSound(FMOD_CHANNEL_FREE, scene.sound, true, &channel),
             FMOD_ERR_INTERNAL);
    QCOMPARE(channel, nullptr);
}

void tst_InstalledLibrary::aNullSoundIsPlayedAsNull()
{
    Scene scene;
    FMOD::Channel *channel = scene.channel;
    QCOMPARE(scene.system->playSound(FMOD_CHANNEL_FREE, nullptr, true, &channel),
             FMOD_ERR_INVALID_HANDLE);
    QCOMPARE(channel, nullptr);
    COMPARE_CALL(scene.fake, "FMOD_System_PlaySound(system1, -1, null, 1) = 36");
}

void tst_InstalledLibrary::aStoppedChannelIsUsedAgain()
{
    Scene scene;
    scene.channel->stop();
    for (int i = 0; i < 10000; ++i) {
        FMOD::Channel *const channel = play(*scene.system, scene.sound);
        QCOMPARE(channel, scene.channel);
        QCOMPARE(channel->stop(), FMOD_OK);
    }
}

void tst_InstalledLibrary::aStoppedChannelRefusesCallsAndDoesNotReachTheLibrary()
{
    Scene scene;
    scene.channel->stop();
    scene.fake.clearCalls();
    QCOMPARE(scene.channel->setVolume(0.5F), FMOD_ERR_INVALID_HANDLE);
    QCOMPARE(scene.fake.calls(), QStringList());
}

void tst_InstalledLibrary::aChannelStoppedTwiceIsGivenBackOnce()
{
    Scene scene;
    scene.channel->stop();
    QCOMPARE(scene.channel->stop(), FMOD_ERR_INVALID_HANDLE);
    FMOD::Channel *const first = play(*scene.system, scene.sound);
    FMOD::Channel *const second = play(*scene.system, scene.sound);
    QVERIFY(first != second);
}

void tst_InstalledLibrary::theSameHandleMeansTheSameChannel()
{
    Scene scene;
    scene.fake.endChannels();
    QCOMPARE(play(*scene.system, scene.sound), scene.channel);
    COMPARE_CALL(scene.fake, "FMOD_System_PlaySound(system1, -1, sound1, 1) -> channel1");
}

void tst_InstalledLibrary::differentHandlesMeanDifferentChannels()
{
    Scene scene;
    FMOD::Channel *const second = play(*scene.system, scene.sound);
    QVERIFY(second != scene.channel);
    scene.fake.clearCalls();
    second->setVolume(0.5F);
    scene.channel->setVolume(0.25F);
    const QStringList expected{QStringLiteral("FMOD_Channel_SetVolume(channel2, 0.5)"),
                               QStringLiteral("FMOD_Channel_SetVolume(channel1, 0.25)")};
    QCOMPARE(scene.fake.calls(), expected);
}

void tst_InstalledLibrary::anEndedChannelAnswersInvalidHandle()
{
    Scene scene;
    scene.fake.endChannels();
    QCOMPARE(scene.channel->setVolume(0.5F), FMOD_ERR_INVALID_HANDLE);
    QCOMPARE(scene.channel->stop(), FMOD_ERR_INVALID_HANDLE);
    const QStringList expected{QStringLiteral("FMOD_Channel_SetVolume(unknown, 0.5) = 36"),
                               QStringLiteral("FMOD_Channel_Stop(unknown) = 36")};
    QCOMPARE(scene.fake.calls(), expected);
}

void tst_InstalledLibrary::channelsThatAreNeverStoppedDoNotPileUp()
{
    const FmodEntryPoints none;
    InstalledChannelPool pool(none);
    std::vector<char> handles(InstalledChannelPool::maximumInUse + 1);
    const auto handle = [&](std::size_t i) { return reinterpret_cast<RawChannel *>(&handles[i]); };
    InstalledChannel *const first = pool.channelOf(handle(0));
    InstalledChannel *const second = pool.channelOf(handle(1));
    for (std::size_t i = 2; i < InstalledChannelPool::maximumInUse; ++i)
        pool.channelOf(handle(i));
    QCOMPARE(pool.channelOf(handle(1)), second);
    QCOMPARE(pool.channelOf(handle(InstalledChannelPool::maximumInUse)), first);
    QVERIFY(pool.channelOf(handle(0)) != first);
}

void tst_InstalledLibrary::everythingGoesWithTheSystem()
{
    Scene scene;
    FMOD::ChannelGroup *group = nullptr;
    scene.system->createChannelGroup("T1", &group);
    scene.fake.clearCalls();
    scene.system.reset();
    COMPARE_CALL(scene.fake, "FMOD_System_Release(system1)");
}

void tst_InstalledLibrary::theCallsOfARenderArriveInOrder()
{
    const QTemporaryDir folder;
    const FakeFmod fake;
    SystemPointer system = makeSystem();
    system->setSoftwareChannels(2048);
    system->setOutput(FMOD_OUTPUTTYPE_WAVWRITER_NRT);
    system->init(2048, FMOD_INIT_STREAM_FROM_UPDATE,
                 folder.filePath(QStringLiteral("a.wav")).toLocal8Bit().data());
    FMOD::Sound *const sound = makeSound(*system);
    FMOD::Channel *const channel = play(*system, sound);
    channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, 0);
    channel->setPaused(false);
    system->update();
    channel->stop();
    sound->release();
    system.reset();
    const QStringList expected{QStringLiteral("FMOD_System_Create"),
                               QStringLiteral("FMOD_System_SetSoftwareChannels"),
                               QStringLiteral("FMOD_System_SetOutput"),
                               QStringLiteral("FMOD_System_Init"),
                               QStringLiteral("FMOD_System_CreateSound"),
                               QStringLiteral("FMOD_System_PlaySound"),
                               QStringLiteral("FMOD_Channel_SetDelay"),
                               QStringLiteral("FMOD_Channel_SetPaused"),
                               QStringLiteral("FMOD_System_Update"),
                               QStringLiteral("FMOD_Channel_Stop"),
                               QStringLiteral("FMOD_Sound_Release"),
                               QStringLiteral("FMOD_System_Release")};
    QCOMPARE(fake.functions(), expected);
}

void tst_InstalledLibrary::aMissingLibraryCountsAsAbsent()
{
    qputenv("QUILLMOOR_FMOD_LIBRARY", "/nowhere/libfmodex64.so");
    QTest::ignoreMessage(
        QtWarningMsg,
        QRegularExpression(QStringLiteral("^The sound library that QUILLMOOR_FMOD_LIBRARY names "
                                          "cannot be loaded: .*/nowhere/libfmodex64\\.so")));
    QVERIFY(!InstalledLibrary::find());
}

void tst_InstalledLibrary::aLibraryThatLacksAnEntryPointCountsAsAbsent()
{
    qputenv("QUILLMOOR_FMOD_LIBRARY", FakeFmod::incompletePath().toLocal8Bit());
    QTest::ignoreMessage(
        QtWarningMsg,
        qPrintable(
            QStringLiteral("The sound library \"%1\" is not used: it lacks FMOD_Channel_SetDelay.")
                .arg(FakeFmod::incompletePath())));
    QVERIFY(!InstalledLibrary::find());
}

namespace {

QStringList contexts;

void noteContext(QtMsgType, const QMessageLogContext &context, const QString &)
{
    contexts.append(QString::fromLatin1(context.file));
    contexts.append(QString::fromLatin1(context.function));
}

} // namespace

void tst_InstalledLibrary::warningsNameTheirSource()
{
    qputenv("QUILLMOOR_FMOD_LIBRARY", "/nowhere/libfmodex64.so");
    contexts.clear();
    const QtMessageHandler previous = qInstallMessageHandler(noteContext);
    InstalledLibrary::find();
    qInstallMessageHandler(previous);
    const QStringList expected{
        QStringLiteral("Sound/InstalledLibrary"),
        QStringLiteral("static std::optional<InstalledLibrary> InstalledLibrary::find()")};
    QCOMPARE(contexts, expected);
}

void tst_InstalledLibrary::theNamedFileIsReadAtEachCall()
{
    const FakeFmod fake;
    QVERIFY(InstalledLibrary::find());
    aMissingLibraryCountsAsAbsent();
    qputenv("QUILLMOOR_FMOD_LIBRARY", FakeFmod::path().toLocal8Bit());
    QVERIFY(InstalledLibrary::find());
}

void tst_InstalledLibrary::numberedFilesComeInOrder()
{
    const QTemporaryDir first;
    const QTemporaryDir second;
    const QStringList inFirst{
        QStringLiteral("libfmodex-4.44.64.so"), QStringLiteral("libfmodex64-4.44.9.so"),
        QStringLiteral("libfmodex64.so.4"), QStringLiteral("libfmodex64.so.10")};
    for (const QString &name : inFirst)
        touch(first.filePath(name));
    touch(second.filePath(QStringLiteral("libfmodex64-4.44.61.so")));
    touch(second.filePath(QStringLiteral("libfmodex64-4.44.9.so")));
    touch(second.filePath(QStringLiteral("libfmodex64.so")));
    const QStringList expected{first.filePath(QStringLiteral("libfmodex64.so.10")),
                               second.filePath(QStringLiteral("libfmodex64-4.44.61.so")),
                               first.filePath(QStringLiteral("libfmodex64-4.44.9.so")),
                               second.filePath(QStringLiteral("libfmodex64-4.44.9.so")),
                               first.filePath(QStringLiteral("libfmodex64.so.4")),
                               second.filePath(QStringLiteral("libfmodex64.so")),
                               first.filePath(QStringLiteral("libfmodex-4.44.64.so"))};
    QCOMPARE(InstalledLibrary::numberedFiles({first.path(), second.path()}), expected);
}

void tst_InstalledLibrary::otherFilesAreNoCandidates()
{
    const QTemporaryDir folder;
    const QStringList names{QStringLiteral("libfmodexL64-4.44.61.so"),
                            QStringLiteral("libfmodex64.so.txt"),
                            QStringLiteral("libfmodex64-4.44.61.so.bak"),
                            QStringLiteral("libfmodex64.a"), QStringLiteral("fmodex64.so")};
    for (const QString &name : names)
        touch(folder.filePath(name));
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("libfmodex64-4.44.61.so")));
    QCOMPARE(InstalledLibrary::numberedFiles({folder.path(), QStringLiteral("/nowhere")}),
             QStringList());
}

void tst_InstalledLibrary::candidatesBeginWithTheLoadersNames()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("libfmodex64-99.0.so"));
    touch(file);
    qputenv("LD_LIBRARY_PATH", ":/nowhere:" + folder.path().toLocal8Bit());
    const QStringList expected{QStringLiteral("fmodex64"), QStringLiteral("fmodex"), file};
    QCOMPARE(InstalledLibrary::candidates().mid(0, 3), expected);
}

void tst_InstalledLibrary::aNumberedLibraryIsFoundAndLoaded()
{
    const QTemporaryDir folder;
    const QString log = folder.filePath(QStringLiteral("calls.txt"));
    QVERIFY(QFile::copy(FakeFmod::incompletePath(),
                        folder.filePath(QStringLiteral("libfmodex64-99.1.so"))));
    QVERIFY(QFile::copy(FakeFmod::path(), folder.filePath(QStringLiteral("libfmodex64-99.0.so"))));
    qputenv("LD_LIBRARY_PATH", folder.path().toLocal8Bit());
    qputenv("FAKE_FMOD_LOG", log.toLocal8Bit());
    QTest::ignoreMessage(
        QtWarningMsg,
        qPrintable(QStringLiteral("The sound library \"%1\" is not used: it lacks "
                                  "FMOD_Channel_SetDelay.")
                       .arg(folder.filePath(QStringLiteral("libfmodex64-99.1.so")))));
    makeSystem();
    qunsetenv("FAKE_FMOD_LOG");
    QFile calls(log);
    QVERIFY(calls.open(QIODevice::ReadOnly));
    QCOMPARE(calls.readAll(),
             QByteArray("FMOD_System_Create() -> system1\nFMOD_System_Release(system1)\n"));
}

QTEST_GUILESS_MAIN(tst_InstalledLibrary)

#include "tst_InstalledLibrary.moc"
