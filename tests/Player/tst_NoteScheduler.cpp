#include "Player/NoteScheduler.h"
#include "support/FakeFmod.h"

#include <QtTest>

#include <limits>
#include <vector>

namespace {

constexpr int Rate = 48000;

/// Maps 60 and 62 to samples of their own and 61 to that of 60 at one and a half times its rate.
Instrument harp()
{
    return Instrument::fromBytes(QStringLiteral("harp"),
                                 "{\"fadeout\": 0.25, \"mapping\": {"
                                 "\"60\": {\"file\": \"/c.wav\", \"f\": 200},"
                                 "\"61\": {\"f\": 300},"
                                 "\"62\": {\"file\": \"/d.wav\", \"f\": 250}}}");
}

TrackInfo playing(const std::vector<TrackEvent> &events)
{
    TrackInfo info;
    for (const TrackEvent &event : events)
        info.track.addEvent(event);
    info.track.sortEvents();
    info.instrument = harp();
    info.volume = 0.5F;
    info.pan = -0.25F;
    return info;
}

TrackEvent quarter(quint32 pitch, quint64 time)
{
    return TrackEvent::makeNote(pitch, time, 30240);
}

/// A fake system, and a scheduler with what it needs.
class Stage {
public:
    Stage()
    {
        QCOMPARE(FMOD::System_Create(&system), FMOD_OK);
        fake.clearCalls();
    }
    ~Stage()
    {
        sounds.releaseAll();
        QCOMPARE(system->release(), FMOD_OK);
    }
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;

    int scheduleAt(quint64 now, TrackInfo &info)
    {
        return scheduler.schedule(*system, QStringLiteral("T1"), info, {now, Rate}, notes);
    }

    QString messageAt(quint64 now, TrackInfo &info)
    {
        try {
            scheduleAt(now, info);
        } catch (const QString &message) {
            return message;
        }
        return QStringLiteral("nothing thrown");
    }

    /// The start clocks of all notes so far.
    std::vector<quint64> starts() const
    {
        std::vector<quint64> clocks;
        for (const ActiveNote &note : notes)
            clocks.push_back(note.startDsp);
        return clocks;
    }

    FakeFmod fake;
    FMOD::System *system = nullptr;
    std::vector<FMOD_RESULT> failures;
    FmodCheck check = [this](FMOD_RESULT result) {
        if (result != FMOD_OK)
            failures.push_back(result);
    };
    SoundCache sounds{check};
    QStringList passedOver; // why
    NoteScheduler scheduler{sounds, check, &InstrumentSample::randomFile,
                            [this](const QString &message) { passedOver.append(message); }};
    ActiveNotes notes;
};

using Clocks = std::vector<quint64>;

} // namespace

class tst_NoteScheduler : public QObject {
    Q_OBJECT

private slots:
    void handsANoteOverInOrder();
    void describesTheNote();
    void splitsAStartClockBeyond32Bits();
    void setsNoGroupWhenThereIsNone();
    void schedulesUpToTheHorizon();
    void goesOnWhereItStopped();
    void movesTheOriginAtATempo();
    void takesTheHorizonFromTheTempoAtThePassBeginning();
    void appliesTemposBeforeTheOriginWithoutMovingIt();
    void passesOverMutedNotesAndGoesOn();
    void passesOverLateNotes();
    void playsANoteThatStartsNow();
    void passesOverNotesBeforeTheOrigin();
    void passesOverOtherEvents();
    void loadsAllBeforeItPlaysAny();
    void leavesAllAsItWasWhenItThrows();
    void passesOverTheEventThatFailed();
    void doesNotTryTheFailedEventAgain();
    void passesOverAllThatFailAfterTheFirst();
    void staysLenientUntilAnEventIsDue();
    void passesOverNotesOfAnUnplayableTrack();
    void throwsWhatLoadingThrows();
    void doesNotLookUpNotesThatAreNotDue();
    void keepsASilentNoteWithoutASound();
    void keepsASilentNoteWithoutAChannel();
    void leavesTheRateWhenItCannotBeRead();
    void choosesAFileByTheGivenFunction();
    void clampsAbsurdNotes();
    void doesNothingForAnEmptyTrack();
};

void tst_NoteScheduler::handsANoteOverInOrder()
{
    Stage stage;
    TrackInfo info = playing({quarter(61, 3024)});
    QCOMPARE(stage.system->createChannelGroup("T1", &info.channelGroup), FMOD_OK);
    stage.fake.clearCalls();
    QCOMPARE(stage.scheduleAt(0, info), 1);
    QCOMPARE(stage.fake.calls().join(QLatin1Char('\n')),
             QStringLiteral("FMOD_System_CreateSound(system1, \"/c.wav\", 0x148, null) -> sound1\n"
                            "FMOD_System_PlaySound(system1, -1, sound1, 1) -> channel1\n"
                            "FMOD_Channel_GetFrequency(channel1) -> 44100\n"
                            "FMOD_Channel_SetFrequency(channel1, 66150)\n"
                            "FMOD_Channel_SetVolume(channel1, 0.5)\n"
                            "FMOD_Channel_SetPan(channel1, -0.25)\n"
                            "FMOD_Channel_SetChannelGroup(channel1, group1)\n"
                            "FMOD_Channel_SetDelay(channel1, 1, 0, 2400)\n"
                            "FMOD_Channel_SetPaused(channel1, 0)"));
    QVERIFY(stage.failures.empty());
}

void tst_NoteScheduler::describesTheNote()
{
    Stage stage;
    TrackInfo info = playing({quarter(60, 0), quarter(62, 3024)});
    info.originDsp = 100;
    stage.scheduleAt(0, info);
    QCOMPARE(stage.notes.size(), std::size_t(2));
    const ActiveNote &note = stage.notes.at(1);
    QVERIFY(note.channel);
    QCOMPARE(note.releaseDsp, quint64(26500));
    QCOMPARE(note.fadeSamples, quint64(12000));
    QCOMPARE(note.fadeEndDsp, quint64(38500));
    QCOMPARE(note.volume, 0.5F);
    QCOMPARE(note.trackId, QStringLiteral("T1"));
    QCOMPARE(note.startDsp, quint64(2500));
    QCOMPARE(note.eventIndex, 1U);
    QVERIFY(!note.pressed);
    QVERIFY(!note.released);
}

void tst_NoteScheduler::splitsAStartClockBeyond32Bits()
{
    Stage stage;
    TrackInfo info = playing({quarter(60, 0)});
    info.originDsp = (quint64(3) << 32) + 4294967295U;
    stage.scheduleAt(info.originDsp - 100, info);
    QCOMPARE(stage.fake.calls(QStringLiteral("FMOD_Channel_SetDelay")),
             QStringList(QStringLiteral("FMOD_Channel_SetDelay(channel1, 1, 3, 4294967295)")));
}

void tst_NoteScheduler::setsNoGroupWhenThereIsNone()
{
    Stage stage;
    TrackInfo info = playing({quarter(60, 0)});
    stage.scheduleAt(0, info);
    QVERIFY(!stage.fake.functions().contains(QStringLiteral("FMOD_Channel_SetChannelGroup")));
    QVERIFY(stage.failures.empty());
}

void tst_NoteScheduler::schedulesUpToTheHorizon()
{
    Stage stage;
    // 4800 frames ahead are 6048 ticks.
    TrackInfo info = playing({quarter(60, 0), quarter(60, 6048), quarter(60, 6049)});
    QCOMPARE(stage.scheduleAt(0, info), 2);
    QCOMPARE(info.nextEvent, 2U);
    QVERIFY((stage.starts() == Clocks{0, 4800}));
}

void tst_NoteScheduler::goesOnWhereItStopped()
{
    Stage stage;
    TrackInfo info = playing({quarter(60, 0), quarter(60, 30240), quarter(60, 60480)});
    QCOMPARE(stage.scheduleAt(0, info), 1);
    QCOMPARE(stage.scheduleAt(19199, info), 0);
    QCOMPARE(stage.scheduleAt(19200, info), 1);
    QCOMPARE(stage.scheduleAt(19201, info), 0);
    QCOMPARE(stage.scheduleAt(43200, info), 1);
    QVERIFY(info.isScheduled());
    QVERIFY((stage.starts() == Clocks{0, 24000, 48000}));
}

void tst_NoteScheduler::movesTheOriginAtATempo()
{
    Stage stage;
    TrackInfo info =
        playing({TrackEvent::makeTempo(3024, 1, 4, 240), quarter(60, 3024), quarter(60, 6048)});
    QCOMPARE(stage.scheduleAt(0, info), 2);
    QCOMPARE(info.originDsp, quint64(2400));
    QCOMPARE(info.originTick, quint64(3024));
    QCOMPARE(info.ticksPerMinute, quint64(7257600));
    QVERIFY((stage.starts() == Clocks{2400, 3600}));
    QCOMPARE(stage.notes.at(0).releaseDsp, quint64(14400));
}

void tst_NoteScheduler::takesTheHorizonFromTheTempoAtThePassBeginning()
{
    Stage stage;
    TrackInfo info = playing({TrackEvent::makeTempo(3024, 1, 4, 240), quarter(60, 6049)});
    QCOMPARE(stage.scheduleAt(0, info), 0);
    QCOMPARE(info.nextEvent, 1U);
    QCOMPARE(stage.scheduleAt(1, info), 1);
    QVERIFY((stage.starts() == Clocks{3600}));
}

void tst_NoteScheduler::appliesTemposBeforeTheOriginWithoutMovingIt()
{
    Stage stage;
    TrackInfo info = playing({TrackEvent::makeTempo(30240, 1, 4, 60),
                              TrackEvent::makeTempo(60480, 1, 4, 240), quarter(60, 120960)});
    info.originDsp = 1000;
    info.originTick = 120000;
    QCOMPARE(stage.scheduleAt(1000, info), 1);
    QCOMPARE(info.originDsp, quint64(1000));
    QCOMPARE(info.originTick, quint64(120000));
    QVERIFY((stage.starts() == Clocks{1380}));
}

void tst_NoteScheduler::passesOverMutedNotesAndGoesOn()
{
    Stage stage;
    TrackInfo info =
        playing({quarter(60, 0), TrackEvent::makeTempo(3024, 1, 4, 240), quarter(99, 3024)});
    info.muted = true;
    QCOMPARE(stage.scheduleAt(0, info), 0);
    QVERIFY(info.isScheduled());
    QCOMPARE(info.ticksPerMinute, quint64(7257600));
    QCOMPARE(stage.fake.calls(), QStringList());
}

void tst_NoteScheduler::passesOverLateNotes()
{
    Stage stage;
    TrackInfo info = playing({quarter(99, 0), quarter(60, 3024)});
    QCOMPARE(stage.scheduleAt(1, info), 1);
    QVERIFY(info.isScheduled());
    QVERIFY((stage.starts() == Clocks{2400}));
}

void tst_NoteScheduler::playsANoteThatStartsNow()
{
    Stage stage;
    TrackInfo info = playing({quarter(60, 3024)});
    QCOMPARE(stage.scheduleAt(2400, info), 1);
}

void tst_NoteScheduler::passesOverNotesBeforeTheOrigin()
{
    Stage stage;
    TrackInfo info = playing({quarter(99, 0), quarter(99, 30239), quarter(60, 30240)});
    info.originTick = 30240;
    QCOMPARE(stage.scheduleAt(0, info), 1);
    QCOMPARE(stage.notes.front().eventIndex, 2U);
    QVERIFY((stage.starts() == Clocks{0}));
}

void tst_NoteScheduler::passesOverOtherEvents()
{
    Stage stage;
    TrackInfo info = playing({TrackEvent::makeKey(0, 7, 0), TrackEvent::makeUnitLength(0, 1, 8),
                              TrackEvent::makeMeter(0, 3, 4), quarter(60, 0)});
    QCOMPARE(stage.scheduleAt(0, info), 1);
    QCOMPARE(stage.notes.front().eventIndex, 3U);
}

void tst_NoteScheduler::loadsAllBeforeItPlaysAny()
{
    Stage stage;
    TrackInfo info = playing({quarter(60, 0), quarter(62, 1)});
    stage.scheduleAt(0, info);
    const QStringList functions = stage.fake.functions();
    QCOMPARE(functions.lastIndexOf(QStringLiteral("FMOD_System_CreateSound")), 1);
    QCOMPARE(functions.indexOf(QStringLiteral("FMOD_System_PlaySound")), 2);
}

void tst_NoteScheduler::leavesAllAsItWasWhenItThrows()
{
    Stage stage;
    TrackInfo info = playing(
        {TrackEvent::makeTempo(0, 1, 4, 60), quarter(60, 0), quarter(99, 1), quarter(60, 2)});
    QCOMPARE(stage.messageAt(0, info), QStringLiteral("Invalid note index"));
    QCOMPARE(stage.scheduler.failedEvent(), 2U);
    QCOMPARE(info.nextEvent, 0U);
    QCOMPARE(info.ticksPerMinute, quint64(3628800));
    QVERIFY(stage.notes.empty());
    QVERIFY(!stage.fake.functions().contains(QStringLiteral("FMOD_System_PlaySound")));
}

void tst_NoteScheduler::passesOverTheEventThatFailed()
{
    Stage stage;
    TrackInfo info = playing({quarter(60, 0), quarter(98, 1), quarter(62, 3)});
    QCOMPARE(stage.messageAt(0, info), QStringLiteral("Invalid note index"));
    info.failedEvent = stage.scheduler.failedEvent();
    QCOMPARE(info.failedEvent, std::optional<quint32>(1));
    QCOMPARE(stage.scheduleAt(0, info), 2);
    QCOMPARE(stage.notes.at(1).eventIndex, 2U);
    QVERIFY(info.isScheduled());
    QVERIFY(!info.failedEvent);
    QCOMPARE(stage.passedOver, QStringList());
}

void tst_NoteScheduler::doesNotTryTheFailedEventAgain()
{
    Stage stage;
    TrackInfo info = playing({quarter(60, 0), quarter(62, 1)});
    info.failedEvent = 0; // what failed then may well work now
    QCOMPARE(stage.scheduleAt(0, info), 1);
    QCOMPARE(stage.notes.front().eventIndex, 1U);
}

void tst_NoteScheduler::passesOverAllThatFailAfterTheFirst()
{
    Stage stage;
    TrackInfo info = playing({quarter(97, 0), quarter(60, 1), quarter(98, 2), quarter(62, 3),
                              quarter(99, 4), quarter(96, 30240)});
    info.failedEvent = 0;
    QCOMPARE(stage.scheduleAt(0, info), 2);
    QCOMPARE(info.nextEvent, 5U);
    QCOMPARE(
        stage.passedOver,
        (QStringList{QStringLiteral("Invalid note index"), QStringLiteral("Invalid note index")}));
    // The next time it is strict again.
    QCOMPARE(stage.messageAt(24000, info), QStringLiteral("Invalid note index"));
    QCOMPARE(stage.scheduler.failedEvent(), 5U);
}

void tst_NoteScheduler::staysLenientUntilAnEventIsDue()
{
    Stage stage;
    TrackInfo info = playing({quarter(99, 30240)});
    info.failedEvent = 0;
    QCOMPARE(stage.scheduleAt(0, info), 0);
    QVERIFY(info.failedEvent);
}

void tst_NoteScheduler::passesOverNotesOfAnUnplayableTrack()
{
    Stage stage;
    TrackInfo info = playing({quarter(99, 0), TrackEvent::makeTempo(3024, 1, 4, 240)});
    info.unplayable = true;
    QCOMPARE(stage.scheduleAt(0, info), 0);
    QVERIFY(info.isScheduled());
    QCOMPARE(info.ticksPerMinute, quint64(7257600));
}

void tst_NoteScheduler::throwsWhatLoadingThrows()
{
    Stage stage;
    TrackInfo info = playing({TrackEvent::makeKey(0, 7, 0), quarter(60, 0)});
    info.instrument = Instrument::fromBytes(QStringLiteral("harp"),
                                            "{\"mapping\": {\"60\": {\"file\": \"c\", \"f\": 1}}}",
                                            QStringLiteral("pak://nowhere"));
    QCOMPARE(stage.messageAt(0, info), QStringLiteral("Invalid pak:// filename"));
    QCOMPARE(stage.scheduler.failedEvent(), 1U);
    QVERIFY(stage.notes.empty());
}

void tst_NoteScheduler::doesNotLookUpNotesThatAreNotDue()
{
    Stage stage;
    TrackInfo info = playing({quarter(60, 0), quarter(99, 30240)});
    QCOMPARE(stage.scheduleAt(0, info), 1);
    QCOMPARE(stage.messageAt(19200, info), QStringLiteral("Invalid note index"));
    QCOMPARE(info.nextEvent, 1U);
}

void tst_NoteScheduler::keepsASilentNoteWithoutASound()
{
    Stage stage;
    stage.fake.fail(QStringLiteral("FMOD_System_CreateSound"), 1, FMOD_ERR_FILE_NOTFOUND);
    TrackInfo info = playing({quarter(60, 0), quarter(60, 1)});
    QCOMPARE(stage.scheduleAt(0, info), 2);
    QVERIFY(!stage.notes.at(0).channel);
    QVERIFY(!stage.notes.at(1).channel);
    QCOMPARE(stage.notes.at(1).eventIndex, 1U);
    QCOMPARE(stage.fake.functions(), QStringList(QStringLiteral("FMOD_System_CreateSound")));
    QVERIFY((stage.failures == std::vector<FMOD_RESULT>{FMOD_ERR_FILE_NOTFOUND}));
}

void tst_NoteScheduler::keepsASilentNoteWithoutAChannel()
{
    Stage stage;
    stage.fake.fail(QStringLiteral("FMOD_System_PlaySound"), 1, FMOD_ERR_CHANNEL_ALLOC);
    TrackInfo info = playing({quarter(60, 0), quarter(60, 1)});
    QCOMPARE(stage.scheduleAt(0, info), 2);
    QVERIFY(!stage.notes.at(0).channel);
    QVERIFY(stage.notes.at(1).channel);
    QVERIFY((stage.failures == std::vector<FMOD_RESULT>{FMOD_ERR_CHANNEL_ALLOC}));
}

void tst_NoteScheduler::leavesTheRateWhenItCannotBeRead()
{
    Stage stage;
    stage.fake.fail(QStringLiteral("FMOD_Channel_GetFrequency"), 1, FMOD_ERR_INTERNAL);
    TrackInfo info = playing({quarter(61, 0)});
    QCOMPARE(stage.scheduleAt(0, info), 1);
    QVERIFY(!stage.fake.functions().contains(QStringLiteral("FMOD_Channel_SetFrequency")));
    QVERIFY(stage.fake.functions().contains(QStringLiteral("FMOD_Channel_SetPaused")));
}

void tst_NoteScheduler::choosesAFileByTheGivenFunction()
{
    Stage stage;
    NoteScheduler second(stage.sounds, stage.check, [](const InstrumentSample &sample) {
        return sample.files().constFirst() + QStringLiteral(".other");
    });
    TrackInfo info = playing({quarter(60, 0)});
    second.schedule(*stage.system, QString(), info, {0, Rate}, stage.notes);
    QCOMPARE(stage.fake.calls(QStringLiteral("FMOD_System_CreateSound")),
             QStringList(QStringLiteral("FMOD_System_CreateSound(system1, \"/c.wav.other\", "
                                        "0x148, null) -> sound1")));
}

void tst_NoteScheduler::clampsAbsurdNotes()
{
    constexpr quint64 largest = std::numeric_limits<quint64>::max();
    Stage stage;
    TrackInfo info = playing({TrackEvent::makeNote(60, 6048, largest)});
    QCOMPARE(stage.scheduleAt(0, info), 1);
    QVERIFY(stage.notes.front().releaseDsp > quint64(1) << 63);
    QVERIFY(stage.notes.front().fadeEndDsp >= stage.notes.front().releaseDsp);

    TrackInfo late = playing({TrackEvent::makeNote(60, largest, 1)});
    QCOMPARE(stage.scheduleAt(0, late), 0);
    QCOMPARE(late.nextEvent, 0U);
}

void tst_NoteScheduler::doesNothingForAnEmptyTrack()
{
    Stage stage;
    TrackInfo info = playing({});
    QCOMPARE(stage.scheduleAt(0, info), 0);
    QCOMPARE(info.nextEvent, 0U);
    QCOMPARE(stage.fake.calls(), QStringList());
}

QTEST_APPLESS_MAIN(tst_NoteScheduler)
#include "tst_NoteScheduler.moc"
