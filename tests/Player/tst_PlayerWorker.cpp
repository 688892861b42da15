#include "PlayerStage.h"
#include "Quillmoor/PakWriter.h"
#include "Sound/BuiltinSystem.h"
#include "Sound/LiveStatus.h"
#include "support/MessageCapture.h"
#include "support/VirtualClock.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

namespace {

const char *const RateRead =
    "FMOD_System_GetSoftwareFormat(system1, out, null, null, null, null, null) -> 48000";

const QString T1 = QStringLiteral("T1");
const QString T2 = QStringLiteral("T2");

TrackEvent quarter(quint32 pitch, quint64 time)
{
    return PlayerStage::quarter(pitch, time);
}

QStringList methods(QMetaMethod::MethodType type, QMetaMethod::Access access)
{
    QStringList names;
    const QMetaObject &meta = PlayerWorker::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() == type && method.access() == access)
            names.append(QString::fromLatin1(method.methodSignature()));
    }
    return names;
}

/// Makes no system of its own.
FMOD_RESULT refuse(FMOD::System **)
{
    return FMOD_ERR_MEMORY;
}

PlayerWorker::SystemFactory builtinOn(VirtualClock &clock)
{
    return
        [&clock](FMOD::System **system) { return createBuiltinSystem(system, 0, clock.outputs()); };
}

/// The problems that a worker reports while it starts.
QStringList problemsOf(PlayerWorker &worker)
{
    QStringList problems;
    QObject::connect(&worker, &PlayerWorker::soundProblemChanged,
                     [&problems](const QString &problem) { problems.append(problem); });
    worker.initialize();
    worker.disconnect();
    return problems;
}

/// Longer than the time between two reports.
void passReportTime()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() <= 26)
        QThread::yieldCurrentThread();
}

} // namespace

class tst_PlayerWorker : public QObject {
    Q_OBJECT

private slots:
    void declaresItsSlotsInOrder();
    void declaresItsSignalsInOrder();
    void opensTheSystemAndStartsItsTimer();
    void initializesOnlyOnce();
    void startsATrackAfter100Milliseconds();
    void countsTheStartInTheOutputsFrames();
    void startsInTheTempoOfTheTrack();
    void namesTheGroupInTheLocalEncoding();
    void sharesTheStartOfASyncGroup();
    void startsOtherGroupsAtTheirOwnInstants();
    void forgetsASyncGroupWhenAllIsStopped();
    void replacesATrackOfTheSameId();
    void makesOnePassInOrder();
    void handsTracksOverInTheOrderOfTheirIds();
    void reportsFadesAndStops();
    void stopsANoteWithoutFadeAfterItsEnd();
    void reportsANoteWithinOnePassWhenItIsStopped();
    void doesNotReleaseInThePassOfThePress();
    void passesOverALateNoteInSilence();
    void splitsClocksBeyond32Bits();
    void endsATrackAtItsLength();
    void endsATrackOnlyOnceItsEventsAreScheduled();
    void endsAnEmptyTrackAtOnce();
    void playsAMutedTrackInSilenceToItsEnd();
    void takesChangesForLaterNotes();
    void changesTheInstrumentOfLaterNotes();
    void seeksFromNow();
    void seeksIntoATempo();
    void seeksBackToTheFirstTempo();
    void seeksBehindTheOrigin();
    void endsATrackThatSeeksItsEnd();
    void keepsWhatSoundsWhenItSeeks();
    void seeksAllTracksFromOneClock();
    void stopsATrackAndLetsItsNotesEnd();
    void stopsAllAtOnce();
    void doesNothingForUnknownTracks();
    void reportsPositionsEvery25Milliseconds();
    void playsANote();
    void throwsForANoteThatIsNotMapped();
    void loadsASampleOnce();
    void throwsForAPackagePathWithoutSeparator();
    void logsErrorsAndGoesOn();
    void goesOnWithoutARate();
    void terminatesInOrder();
    void terminatesOnlyOnce();
    void terminatesWithoutASystem();
    void doesNothingAfterItsEnd();
    void complainsWithoutTerminate();
    void saysNothingWithoutASystem();
    void fallsBackToTheBuiltinEngine();
    void fallsBackWhenNothingIsMade();
    void tellsWhyThereIsNoSound();
    void tellsAProblemWhenItChanges();
    void letsReceiversStopTracks();
    void letsReceiversStopAStartedTrack();
    void letsReceiversRestartAnEndedTrack();
};

void tst_PlayerWorker::declaresItsSlotsInOrder()
{
    QCOMPARE(methods(QMetaMethod::Slot, QMetaMethod::Public),
             lines({"initialize()", "terminate()", "update()", "playNote(Instrument,int)",
                    "playTrack(QString,Instrument,Track,bool,float,float)",
                    "playTrack(QString,QString,Instrument,Track,bool,float,float)",
                    "muteTrack(QString,bool)", "changeInstrument(QString,Instrument)",
                    "setVolume(QString,float)", "setPan(QString,float)", "seek(QString,qulonglong)",
                    "seekAll(qulonglong)", "stopTrack(QString)", "stopAll()"}));
}

void tst_PlayerWorker::declaresItsSignalsInOrder()
{
    QCOMPARE(
        methods(QMetaMethod::Signal, QMetaMethod::Public),
        lines({"finished()", "trackStarted(QString)", "trackStopped(QString)", "allTracksStopped()",
               "trackPositionChanged(QString,qulonglong)", "notePressed(QString,uint)",
               "noteReleased(QString,uint)", "soundProblemChanged(QString)"}));
}

void tst_PlayerWorker::opensTheSystemAndStartsItsTimer()
{
    FakeFmod fake;
    PlayerWorker worker;
    auto *const timer = worker.findChild<QTimer *>();
    QVERIFY(timer);
    QVERIFY(!timer->isActive());
    QCOMPARE(fake.calls(), QStringList());
    worker.initialize();
    QCOMPARE(
        fake.calls(),
        lines({"FMOD_System_Create() -> system1", "FMOD_System_SetSoftwareChannels(system1, 2048)",
               "FMOD_System_Init(system1, 2048, 0, null)"}));
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), 1);
    worker.terminate();
    QVERIFY(!timer->isActive());
}

void tst_PlayerWorker::initializesOnlyOnce()
{
    PlayerStage stage;
    stage.worker->initialize();
    QCOMPARE(stage.fake.calls(), QStringList());
}

void tst_PlayerWorker::startsATrackAfter100Milliseconds()
{
    PlayerStage stage;
    stage.fake.setClock(1000);
    stage.play(T1, {quarter(60, 0)});
    QCOMPARE(stage.signalLog, lines({"started T1"}));
    QCOMPARE(stage.fake.calls(),
             lines({"FMOD_System_GetDSPClock(system1) -> 0 1000", RateRead,
                    "FMOD_System_CreateChannelGroup(system1, \"T1\") -> group1"}));
    stage.passAt(1000);
    QCOMPARE(stage.starts(), lines({"5800"}));
}

void tst_PlayerWorker::countsTheStartInTheOutputsFrames()
{
    PlayerStage stage(44109);
    stage.fake.setClock(1000);
    stage.play(T1, {quarter(60, 0), quarter(60, 3024)});
    stage.passAt(1000);
    stage.passAt(5000);
    QCOMPARE(stage.starts(), lines({"5410", "7615"})); // 4410.9 and 2205.45 frames
}

void tst_PlayerWorker::startsInTheTempoOfTheTrack()
{
    PlayerStage stage;
    Track slow = PlayerStage::track({quarter(60, 0), quarter(60, 3024)});
    slow.setTicksPerMinute(1814400); // 60 beats
    stage.worker->playTrack(T1, PlayerStage::harp(), slow, false, 1.0F, 0.0F);
    stage.worker->playTrack(T2, text("Main"), PlayerStage::harp(), slow, false, 1.0F, 0.0F);
    stage.passAt(0);
    stage.passAt(4800);
    QCOMPARE(stage.starts(), lines({"4800", "4800", "9600", "9600"}));
}

void tst_PlayerWorker::namesTheGroupInTheLocalEncoding()
{
    PlayerStage stage;
    const QString id = QString::fromUtf8("Fl\xC3\xB6te");
    stage.play(id, {});
    QCOMPARE(stage.fake.calls().constLast(),
             QStringLiteral("FMOD_System_CreateChannelGroup(system1, \"%1\") -> group1")
                 .arg(QString::fromLocal8Bit(id.toLocal8Bit())));
}

void tst_PlayerWorker::sharesTheStartOfASyncGroup()
{
    PlayerStage stage;
    const Track track = PlayerStage::track({quarter(60, 0)});
    stage.fake.setClock(1000);
    stage.worker->playTrack(T1, text("Main"), PlayerStage::harp(), track, false, 1.0F, 0.0F);
    stage.passAt(1000);
    stage.fake.setClock(3000);
    stage.worker->playTrack(T2, text("Main"), PlayerStage::harp(), track, false, 1.0F, 0.0F);
    stage.passAt(3000);
    QCOMPARE(stage.starts(), lines({"5800", "5800"}));
    QCOMPARE(stage.signalLog, lines({"started T1", "started T2"}));
}

void tst_PlayerWorker::startsOtherGroupsAtTheirOwnInstants()
{
    PlayerStage stage;
    const Track track = PlayerStage::track({quarter(60, 0)});
    stage.worker->playTrack(T1, text("Main"), PlayerStage::harp(), track, false, 1.0F, 0.0F);
    stage.fake.setClock(1000);
    stage.worker->playTrack(T2, text("Other"), PlayerStage::harp(), track, false, 1.0F, 0.0F);
    stage.passAt(1000);
    QCOMPARE(stage.starts(), lines({"4800", "5800"}));
}

void tst_PlayerWorker::forgetsASyncGroupWhenAllIsStopped()
{
    PlayerStage stage;
    const Track track = PlayerStage::track({quarter(60, 0)});
    stage.worker->playTrack(T1, text("Main"), PlayerStage::harp(), track, false, 1.0F, 0.0F);
    stage.worker->stopTrack(T1); // which does not forget it
    stage.fake.setClock(1000);
    stage.worker->playTrack(T1, text("Main"), PlayerStage::harp(), track, false, 1.0F, 0.0F);
    stage.passAt(1000);
    stage.worker->stopAll();
    stage.fake.setClock(2000);
    stage.worker->playTrack(T1, text("Main"), PlayerStage::harp(), track, false, 1.0F, 0.0F);
    stage.passAt(2000);
    QCOMPARE(stage.starts(), lines({"4800", "6800"}));
}

void tst_PlayerWorker::replacesATrackOfTheSameId()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 30240)});
    stage.passAt(0);
    stage.fake.setClock(20000);
    stage.play(T1, {quarter(62, 0)});
    stage.passAt(20000);
    QCOMPARE(stage.starts(), lines({"4800", "24800"}));
    QCOMPARE(stage.signalLog, lines({"started T1", "started T1", "pressed T1 0"}));
}

void tst_PlayerWorker::makesOnePassInOrder()
{
    PlayerStage stage;
    stage.play(T1, {quarter(61, 0)});
    stage.fake.clearCalls();
    stage.passAt(0);
    QCOMPARE(stage.fake.calls(),
             lines({"FMOD_System_GetDSPClock(system1) -> 0 0", RateRead,
                    "FMOD_System_CreateSound(system1, \"/c.wav\", 0x148, null) -> sound1",
                    "FMOD_System_PlaySound(system1, -1, sound1, 1) -> channel1",
                    "FMOD_Channel_GetFrequency(channel1) -> 44100",
                    "FMOD_Channel_SetFrequency(channel1, 66150)",
                    "FMOD_Channel_SetVolume(channel1, 0.5)", "FMOD_Channel_SetPan(channel1, -0.25)",
                    "FMOD_Channel_SetChannelGroup(channel1, group1)",
                    "FMOD_Channel_SetDelay(channel1, 1, 0, 4800)",
                    "FMOD_Channel_SetPaused(channel1, 0)", "FMOD_System_Update(system1)"}));
    QCOMPARE(stage.signalLog, lines({"started T1"}));
}

void tst_PlayerWorker::handsTracksOverInTheOrderOfTheirIds()
{
    PlayerStage stage;
    for (const char *const id : {"T9", "T10", "T1", "T2"})
        stage.play(text(id), {quarter(60, 0)});
    stage.passAt(0);
    QCOMPARE(stage.fake.calls(text("FMOD_Channel_SetChannelGroup")),
             lines({"FMOD_Channel_SetChannelGroup(channel1, group3)",
                    "FMOD_Channel_SetChannelGroup(channel2, group2)",
                    "FMOD_Channel_SetChannelGroup(channel3, group4)",
                    "FMOD_Channel_SetChannelGroup(channel4, group1)"}));
}

void tst_PlayerWorker::reportsFadesAndStops()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 60480)});
    stage.passAt(0);
    stage.signalLog.clear();
    stage.fake.clearCalls();
    stage.passAt(4799);
    QCOMPARE(stage.signalLog, QStringList());
    stage.passAt(4800);
    QCOMPARE(stage.signalLog, lines({"pressed T1 0"}));
    stage.passAt(28799);
    stage.passAt(28800); // its end
    QCOMPARE(stage.signalLog, lines({"pressed T1 0", "released T1 0"}));
    stage.passAt(31800);
    stage.passAt(40800); // the fade's last frame
    stage.passAt(40801);
    stage.passAt(40802);
    QCOMPARE(
        stage.channelCalls(),
        lines({"FMOD_Channel_SetVolume(channel1, 0.5)", "FMOD_Channel_SetVolume(channel1, 0.375)",
               "FMOD_Channel_SetVolume(channel1, 0)", "FMOD_Channel_Stop(channel1)"}));
    QCOMPARE(stage.signalLog, lines({"pressed T1 0", "released T1 0"}));
}

void tst_PlayerWorker::stopsANoteWithoutFadeAfterItsEnd()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 60480)}, PlayerStage::harp("0"));
    stage.passAt(0);
    stage.passAt(4800);
    stage.fake.clearCalls();
    stage.passAt(28801);
    QCOMPARE(stage.channelCalls(), lines({"FMOD_Channel_Stop(channel1)"}));
    QCOMPARE(stage.signalLog, lines({"started T1", "pressed T1 0", "released T1 0"}));
}

void tst_PlayerWorker::reportsANoteWithinOnePassWhenItIsStopped()
{
    PlayerStage stage;
    stage.play(T1, {TrackEvent::makeNote(60, 0, 63), quarter(60, 60480)});
    stage.passAt(0);
    stage.passAt(4900); // it ended at 4850
    QCOMPARE(stage.signalLog, lines({"started T1", "pressed T1 0"}));
    stage.signalLog.clear();
    stage.passAt(17000);
    QCOMPARE(stage.signalLog, lines({"released T1 0"}));
    QCOMPARE(stage.fake.calls().filter(text("Stop")), lines({"FMOD_Channel_Stop(channel1)"}));
}

void tst_PlayerWorker::doesNotReleaseInThePassOfThePress()
{
    PlayerStage stage;
    stage.play(T1, {TrackEvent::makeNote(60, 0, 63), quarter(60, 60480)});
    stage.passAt(0);
    stage.passAt(4900);
    QCOMPARE(stage.signalLog, lines({"started T1", "pressed T1 0"}));
    stage.passAt(4948);
    QCOMPARE(stage.signalLog, lines({"started T1", "pressed T1 0", "released T1 0"}));
}

void tst_PlayerWorker::passesOverALateNoteInSilence()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(62, 30240), quarter(60, 60480)});
    stage.passAt(28801);
    stage.passAt(29000);
    stage.passAt(48000);
    QCOMPARE(stage.starts(), lines({"52800"}));
    QCOMPARE(stage.signalLog, lines({"started T1"}));
}

void tst_PlayerWorker::splitsClocksBeyond32Bits()
{
    PlayerStage stage;
    const quint64 clock = (quint64(2) << 32) + 4294960000U;
    stage.fake.setClock(clock);
    stage.play(T1, {quarter(60, 0), quarter(60, 3024)});
    stage.passAt(clock + 2400);
    QCOMPARE(stage.fake.calls(text("FMOD_Channel_SetDelay")),
             lines({"FMOD_Channel_SetDelay(channel1, 1, 2, 4294964800)",
                    "FMOD_Channel_SetDelay(channel2, 1, 2, 4294967200)"}));
    stage.passAt(clock + 4800);
    QCOMPARE(stage.signalLog.constLast(), text("pressed T1 0"));
}

void tst_PlayerWorker::endsATrackAtItsLength()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0)});
    stage.passAt(0);
    stage.passAt(28799);
    QVERIFY(!stage.signalLog.contains(text("stopped T1")));
    stage.passAt(28800);
    QCOMPARE(stage.signalLog, lines({"started T1", "pressed T1 0", "stopped T1", "released T1 0"}));
    stage.passAt(28801);
    QCOMPARE(stage.signalLog.filter(text("stopped")).size(), 1);
}

void tst_PlayerWorker::endsATrackOnlyOnceItsEventsAreScheduled()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0)});
    stage.passAt(100000); // schedules, with all over
    QCOMPARE(stage.signalLog, lines({"started T1"}));
    stage.passAt(100000);
    QCOMPARE(stage.signalLog, lines({"started T1", "stopped T1"}));
}

void tst_PlayerWorker::endsAnEmptyTrackAtOnce()
{
    PlayerStage stage;
    stage.play(T1, {});
    stage.passAt(0);
    QCOMPARE(stage.signalLog, lines({"started T1", "stopped T1"}));
}

void tst_PlayerWorker::playsAMutedTrackInSilenceToItsEnd()
{
    PlayerStage stage;
    stage.worker->playTrack(T1, PlayerStage::harp(), PlayerStage::track({quarter(60, 0)}), true,
                            1.0F, 0.0F);
    stage.passAt(0);
    passReportTime();
    stage.passAt(16800);
    stage.passAt(28799);
    QCOMPARE(stage.signalLog, lines({"started T1"}));
    stage.passAt(28800);
    QCOMPARE(stage.signalLog, lines({"started T1", "stopped T1"}));
    QCOMPARE(stage.positions.constFirst(), text("T1 15120"));
    QCOMPARE(stage.channelCalls(), QStringList());
}

void tst_PlayerWorker::takesChangesForLaterNotes()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 30240), quarter(60, 60480), quarter(60, 90720)});
    stage.passAt(0);
    stage.fake.clearCalls();
    stage.worker->setVolume(T1, 0.75F);
    stage.worker->setPan(T1, 1.0F);
    stage.passAt(24000);
    stage.worker->muteTrack(T1, true);
    stage.passAt(31800); // the first note fades from its own volume
    QCOMPARE(stage.fake.calls(text("FMOD_Channel_SetVolume")).constLast(),
             text("FMOD_Channel_SetVolume(channel1, 0.375)"));
    stage.passAt(48000);
    stage.worker->muteTrack(T1, false);
    stage.passAt(72000);
    QCOMPARE(stage.fake.calls(text("FMOD_Channel_SetPan")),
             lines({"FMOD_Channel_SetPan(channel2, 1)", "FMOD_Channel_SetPan(channel1, 1)"}));
    QCOMPARE(stage.starts(), lines({"28800", "76800"}));
    QCOMPARE(stage.fake.calls(text("FMOD_Channel_SetVolume")).constFirst(),
             text("FMOD_Channel_SetVolume(channel2, 0.75)"));
}

void tst_PlayerWorker::changesTheInstrumentOfLaterNotes()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 30240)});
    stage.passAt(0);
    stage.worker->changeInstrument(
        T1,
        Instrument::fromBytes(text("lute"),
                              "{\"mapping\": {\"60\": {\"file\": \"/l\", \"f\": 1}}}"));
    stage.passAt(24000);
    QCOMPARE(stage.fake.calls(text("FMOD_System_CreateSound")),
             lines({"FMOD_System_CreateSound(system1, \"/c.wav\", 0x148, null) -> sound1",
                    "FMOD_System_CreateSound(system1, \"/l\", 0x148, null) -> sound2"}));
}

void tst_PlayerWorker::seeksFromNow()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 30240), quarter(62, 60480)});
    stage.passAt(0);
    stage.fake.setClock(10000);
    stage.worker->seek(T1, 60000);
    stage.passAt(10000);
    QCOMPARE(stage.starts(), lines({"4800", "10380"})); // 480 ticks are 380.95 frames
    stage.fake.setClock(20000);
    stage.worker->seek(T1, 30240);
    stage.passAt(20000);
    QCOMPARE(stage.starts().constLast(), text("20000"));
}

void tst_PlayerWorker::seeksIntoATempo()
{
    PlayerStage stage;
    stage.play(T1,
               {quarter(60, 0), TrackEvent::makeTempo(30240, 1, 4, 60), quarter(60, 60480),
                TrackEvent::makeTempo(90720, 1, 4, 240), quarter(62, 90720)});
    stage.passAt(0);
    stage.passAt(200000); // past all tempos
    stage.fake.clearCalls();
    stage.fake.setClock(300000);
    stage.worker->seek(T1, 60000);
    stage.passAt(300000);                        // to a horizon at 120 beats: 66048
    QCOMPARE(stage.starts(), lines({"300761"})); // 480 ticks at 60 beats
    stage.passAt(345000);
    QCOMPARE(stage.starts(), lines({"300761", "348761"}));
}

void tst_PlayerWorker::seeksBackToTheFirstTempo()
{
    PlayerStage stage;
    stage.play(T1,
               {quarter(60, 0), quarter(62, 3024), TrackEvent::makeTempo(30240, 1, 4, 60),
                quarter(60, 60480)});
    stage.passAt(0);
    stage.passAt(30000); // past the tempo
    stage.fake.clearCalls();
    stage.fake.setClock(40000);
    stage.worker->seek(T1, 0);
    stage.passAt(40000);
    QCOMPARE(stage.starts(), lines({"40000", "42400"}));
    stage.passAt(60000);
    stage.fake.clearCalls();
    stage.fake.setClock(70000);
    stage.worker->seekAll(0);
    stage.passAt(70000);
    QCOMPARE(stage.starts(), lines({"70000", "72400"}));
}

void tst_PlayerWorker::seeksBehindTheOrigin()
{
    PlayerStage stage;
    stage.play(T1, {TrackEvent::makeTempo(0, 1, 4, 60), quarter(60, 0), quarter(62, 30240)});
    stage.passAt(0);
    stage.fake.setClock(10000);
    stage.worker->seek(T1, 0);
    stage.passAt(10000);
    QCOMPARE(stage.starts(), lines({"4800", "10000"}));
}

void tst_PlayerWorker::endsATrackThatSeeksItsEnd()
{
    for (const quint64 target : {60480U, 60481U}) {
        PlayerStage stage;
        stage.play(T1, {quarter(60, 0), quarter(62, 30240)});
        stage.fake.setClock(1000);
        stage.worker->seek(T1, target);
        stage.passAt(1000); // passes over all
        QCOMPARE(stage.signalLog, lines({"started T1"}));
        stage.passAt(1000);
        QCOMPARE(stage.signalLog, lines({"started T1", "stopped T1"}));
        QCOMPARE(stage.starts(), QStringList());
    }
}

void tst_PlayerWorker::keepsWhatSoundsWhenItSeeks()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 60480)});
    stage.passAt(0);
    stage.passAt(4800);
    stage.worker->seek(T1, 60480);
    stage.passAt(4800);
    QVERIFY(!stage.fake.functions().contains(text("FMOD_Channel_Stop")));
    stage.passAt(28800);
    QCOMPARE(stage.signalLog,
             lines({"started T1", "pressed T1 0", "pressed T1 1", "stopped T1", "released T1 0",
                    "released T1 1"}));
}

void tst_PlayerWorker::seeksAllTracksFromOneClock()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 30240)});
    stage.play(T2, {quarter(62, 30240)});
    stage.passAt(0);
    stage.fake.setClock(20000);
    stage.fake.clearCalls();
    stage.worker->seekAll(30240);
    QCOMPARE(stage.fake.calls(), lines({"FMOD_System_GetDSPClock(system1) -> 0 20000"}));
    stage.passAt(20000);
    QCOMPARE(stage.starts(), lines({"20000", "20000"}));
}

void tst_PlayerWorker::stopsATrackAndLetsItsNotesEnd()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 30240)});
    stage.passAt(0);
    stage.worker->stopTrack(T1);
    QCOMPARE(stage.signalLog, lines({"started T1", "stopped T1"}));
    QVERIFY(!stage.fake.functions().contains(text("FMOD_Channel_Stop")));
    stage.passAt(4800);
    stage.passAt(28800);
    stage.passAt(40801);
    QCOMPARE(stage.signalLog, lines({"started T1", "stopped T1", "pressed T1 0", "released T1 0"}));
    QCOMPARE(stage.starts(), lines({"4800"}));
    QVERIFY(stage.fake.functions().contains(text("FMOD_Channel_Stop")));
}

void tst_PlayerWorker::stopsAllAtOnce()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0)});
    stage.play(T2, {quarter(62, 0)});
    stage.passAt(0);
    stage.fake.clearCalls();
    stage.signalLog.clear();
    stage.worker->stopAll();
    QCOMPARE(stage.fake.calls(),
             lines({"FMOD_Channel_Stop(channel1)", "FMOD_Channel_Stop(channel2)"}));
    QCOMPARE(stage.signalLog, lines({"all stopped"}));
    stage.passAt(4800);
    stage.passAt(100000);
    QCOMPARE(stage.signalLog, lines({"all stopped"}));
    QVERIFY(stage.channelCalls().filter(text("Volume")).isEmpty());
}

void tst_PlayerWorker::doesNothingForUnknownTracks()
{
    PlayerStage stage;
    stage.worker->muteTrack(T1, true);
    stage.worker->changeInstrument(T1, Instrument());
    stage.worker->setVolume(T1, 0.0F);
    stage.worker->setPan(T1, 0.0F);
    stage.worker->seek(T1, 5);
    stage.worker->seekAll(5);
    stage.worker->stopTrack(T1);
    QCOMPARE(stage.fake.calls(), QStringList());
    QCOMPARE(stage.signalLog, QStringList());
}

void tst_PlayerWorker::reportsPositionsEvery25Milliseconds()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 60480)});
    stage.play(T2, {quarter(62, 0), quarter(60, 60480)});
    QElapsedTimer sinceReport;
    do { // once more where the machine was too busy for two passes in 25 ms
        stage.positions.clear();
        passReportTime();
        sinceReport.start();
        stage.passAt(3000); // before the start
        stage.passAt(3000);
    } while (sinceReport.elapsed() >= 25);
    QCOMPARE(stage.positions, lines({"T1 0", "T2 0"}));
    passReportTime();
    stage.positions.clear();
    stage.passAt(16800);
    QCOMPARE(stage.positions.mid(0, 2), lines({"T1 15120", "T2 15120"}));
}

void tst_PlayerWorker::playsANote()
{
    PlayerStage stage;
    stage.worker->playNote(PlayerStage::harp(), 61);
    QCOMPARE(stage.fake.calls(),
             lines({"FMOD_System_CreateSound(system1, \"/c.wav\", 0x148, null) -> sound1",
                    "FMOD_System_PlaySound(system1, -1, sound1, 1) -> channel1",
                    "FMOD_Channel_GetFrequency(channel1) -> 44100",
                    "FMOD_Channel_SetFrequency(channel1, 66150)",
                    "FMOD_Channel_SetPaused(channel1, 0)"}));
    stage.fake.clearCalls();
    stage.passAt(1000000);
    stage.worker->stopAll();
    QCOMPARE(stage.channelCalls(), QStringList());
    QCOMPARE(stage.signalLog, lines({"all stopped"}));
}

void tst_PlayerWorker::throwsForANoteThatIsNotMapped()
{
    PlayerStage stage;
    for (const int note : {59, 0, -1, 2147483647}) {
        try {
            stage.worker->playNote(PlayerStage::harp(), note);
            QFAIL("nothing thrown");
        } catch (const QString &message) {
            QCOMPARE(message, text("Invalid note index"));
        }
    }
    QCOMPARE(stage.fake.calls(), QStringList());
}

void tst_PlayerWorker::loadsASampleOnce()
{
    PlayerStage stage;
    stage.worker->playNote(PlayerStage::harp(), 60);
    stage.play(T1, {quarter(60, 0), quarter(61, 1)});
    stage.passAt(0);
    stage.worker->stopAll();
    stage.play(T1, {quarter(60, 0)});
    stage.passAt(0);
    QCOMPARE(stage.fake.calls(text("FMOD_System_CreateSound")).size(), 1);
}

void tst_PlayerWorker::throwsForAPackagePathWithoutSeparator()
{
    PlayerStage stage;
    const Instrument broken =
        Instrument::fromBytes(text("harp"), "{\"mapping\": {\"60\": {\"file\": \"c\", \"f\": 1}}}",
                              text("pak://nowhere"));
    stage.play(T1, {quarter(60, 0)}, broken);
    QCOMPARE(stage.messageAt(0), text("Invalid pak:// filename"));
}

void tst_PlayerWorker::logsErrorsAndGoesOn()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0)});
    stage.fake.fail(text("FMOD_Channel_SetPan"), 1, FMOD_ERR_INVALID_PARAM);
    MessageCapture log;
    stage.passAt(0);
    QCOMPARE(log.messages().size(), 1);
    const MessageCapture::Message &message = log.messages().constFirst();
    QCOMPARE(message.type, QtCriticalMsg);
    QCOMPARE(message.file, text("Player/PlayerWorker"));
    QCOMPARE(message.function, text("void PlayerWorker::checkErrors(FMOD_RESULT) const"));
    QCOMPARE(
        message.text,
        QStringLiteral("FMOD Error: %1\n").arg(text(FMOD::errorString(FMOD_ERR_INVALID_PARAM))));
    QCOMPARE(stage.starts(), lines({"4800"}));
}

void tst_PlayerWorker::goesOnWithoutARate()
{
    PlayerStage stage(0);
    stage.play(T1, {quarter(60, 0), quarter(60, 60480)});
    for (quint64 clock = 0; clock < 100000; clock += 9999)
        stage.passAt(clock);
    QCOMPARE(stage.starts(), lines({"0"}));
    stage.worker->stopAll();
}

void tst_PlayerWorker::terminatesInOrder()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(62, 1)});
    stage.passAt(100);
    stage.fake.clearCalls();
    stage.signalLog.clear();
    stage.worker->terminate();
    QStringList calls = stage.fake.calls();
    std::sort(calls.begin(), calls.begin() + 2); // in no order of their own
    QCOMPARE(calls,
             lines({"FMOD_Sound_Release(sound1)", "FMOD_Sound_Release(sound2)",
                    "FMOD_System_Release(system1)"}));
    QCOMPARE(stage.signalLog, lines({"finished"}));
    QVERIFY(!stage.worker->findChild<QTimer *>()->isActive());
    QCoreApplication::sendPostedEvents(stage.worker, QEvent::DeferredDelete);
    QVERIFY(!stage.worker);
}

void tst_PlayerWorker::terminatesOnlyOnce()
{
    PlayerStage stage;
    stage.worker->terminate();
    stage.fake.clearCalls();
    stage.worker->terminate();
    QCOMPARE(stage.signalLog, lines({"finished"}));
    QCOMPARE(stage.fake.calls(), QStringList());
}

void tst_PlayerWorker::terminatesWithoutASystem()
{
    FakeFmod fake;
    PlayerWorker worker;
    QSignalSpy finished(&worker, &PlayerWorker::finished);
    worker.terminate();
    QCOMPARE(finished.size(), 1);
    QCOMPARE(fake.calls(), QStringList());
}

void tst_PlayerWorker::doesNothingAfterItsEnd()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0)});
    stage.worker->terminate();
    stage.fake.clearCalls();
    stage.signalLog.clear();
    stage.worker->initialize();
    stage.worker->update();
    stage.worker->playNote(Instrument(), 60);
    stage.play(T2, {quarter(60, 0)});
    stage.worker->playTrack(T2, text("Main"), Instrument(), Track(), false, 1.0F, 0.0F);
    stage.worker->seek(T1, 0);
    stage.worker->seekAll(0);
    stage.worker->stopTrack(T1);
    stage.worker->stopAll();
    QCOMPARE(stage.fake.calls(), QStringList());
    QCOMPARE(stage.signalLog, QStringList());
    QVERIFY(!stage.worker->findChild<QTimer *>()->isActive());
}

void tst_PlayerWorker::complainsWithoutTerminate()
{
    PlayerStage stage;
    stage.worker->playNote(PlayerStage::harp(), 60);
    stage.fake.clearCalls();
    MessageCapture log;
    delete stage.worker;
    QCOMPARE(log.messages().size(), 1);
    const MessageCapture::Message &message = log.messages().constFirst();
    QCOMPARE(message.type, QtCriticalMsg);
    QCOMPARE(message.file, text("Player/PlayerWorker"));
    QCOMPARE(message.function, text("virtual PlayerWorker::~PlayerWorker()"));
    QCOMPARE(message.text, text("PlayerWorker::terminate() was not invoked before destruction!"));
    QCOMPARE(stage.fake.calls(),
             lines({"FMOD_Sound_Release(sound1)", "FMOD_System_Release(system1)"}));
}

void tst_PlayerWorker::saysNothingWithoutASystem()
{
    MessageCapture log;
    delete new PlayerWorker;
    QCOMPARE(log.texts(), QStringList());
}

void tst_PlayerWorker::fallsBackToTheBuiltinEngine()
{
    FakeFmod fake;
    VirtualClock clock;
    fake.fail(text("FMOD_System_Init"), 1, FMOD_ERR_OUTPUT_INIT);
    MessageCapture log;
    PlayerWorker worker(&FMOD::System_Create, builtinOn(clock));
    QCOMPARE(problemsOf(worker), QStringList());
    QCOMPARE(fake.calls().constLast(), text("FMOD_System_Release(system1)"));
    QCOMPARE(log.texts(), lines({"FMOD Error: The sound output could not be opened.\n"}));
    QVERIFY(clock.isRunning());
    QVERIFY(worker.findChild<QTimer *>()->isActive());
    QSignalSpy started(&worker, &PlayerWorker::trackStarted);
    worker.playTrack(T1, PlayerStage::harp(), Track(), false, 1.0F, 0.0F);
    QCOMPARE(started.size(), 1);
    worker.terminate();
    QVERIFY(!clock.isRunning());
}

void tst_PlayerWorker::fallsBackWhenNothingIsMade()
{
    VirtualClock clock;
    MessageCapture log;
    PlayerWorker worker(&refuse, builtinOn(clock));
    QCOMPARE(problemsOf(worker), QStringList());
    QCOMPARE(log.texts(), lines({"FMOD Error: There is too little memory.\n"}));
    QVERIFY(clock.isRunning());
    worker.terminate();
}

void tst_PlayerWorker::tellsWhyThereIsNoSound()
{
    VirtualClock clock;
    clock.refuse();
    clock.setProblem("The dog ate the loudspeaker.");
    MessageCapture log;
    PlayerWorker worker(&refuse, builtinOn(clock));
    QCOMPARE(problemsOf(worker), lines({"The dog ate the loudspeaker."}));
    QVERIFY(!worker.findChild<QTimer *>()->isActive());
    worker.playTrack(T1, PlayerStage::harp(), Track(), false, 1.0F, 0.0F);
    worker.playNote(PlayerStage::harp(), 60);
    worker.update();
    worker.seekAll(0);

    PlayerWorker second(&refuse, [](FMOD::System **) { return FMOD_OK; });
    QCOMPARE(problemsOf(second), lines({"Something went wrong inside the sound system."}));
}

void tst_PlayerWorker::tellsAProblemWhenItChanges()
{
    VirtualClock clock;
    PlayerWorker worker(builtinOn(clock));
    worker.initialize();
    QSignalSpy problems(&worker, &PlayerWorker::soundProblemChanged);
    for (const char *const problem : {"", "The device is gone.", "The device is gone.", ""}) {
        clock.setProblem(problem);
        passReportTime();
        worker.update();
    }
    QCOMPARE(problems.size(), 2);
    QCOMPARE(problems.at(0).constFirst().toString(), text("The device is gone."));
    QCOMPARE(problems.at(1).constFirst().toString(), QString());
    worker.terminate();
}

void tst_PlayerWorker::letsReceiversStopTracks()
{
    PlayerStage stage;
    stage.play(T1, {});
    stage.play(T2, {quarter(60, 0)});
    QObject::connect(stage.worker, &PlayerWorker::trackStopped,
                     [&](const QString &) { stage.worker->stopAll(); });
    stage.passAt(0);
    QCOMPARE(stage.signalLog, lines({"started T1", "started T2", "stopped T1", "all stopped"}));

    stage.play(T1, {quarter(60, 0)});
    stage.play(T2, {});
    QObject::connect(stage.worker, &PlayerWorker::trackPositionChanged,
                     [&](const QString &) { stage.worker->terminate(); });
    passReportTime();
    stage.passAt(0);
    QCOMPARE(stage.positions.size(), 1);
    QCOMPARE(stage.signalLog.constLast(), text("finished"));
}

/// It is known before its start is told.
void tst_PlayerWorker::letsReceiversStopAStartedTrack()
{
    PlayerStage stage;
    QObject::connect(stage.worker, &PlayerWorker::trackStarted, stage.worker,
                     [&](const QString &id) { stage.worker->stopTrack(id); });
    stage.play(T1, {quarter(60, 0)});
    stage.passAt(0);
    QCOMPARE(stage.signalLog, lines({"started T1", "stopped T1"}));
    QCOMPARE(stage.starts(), QStringList());
}

/// It is forgotten before its end is told.
void tst_PlayerWorker::letsReceiversRestartAnEndedTrack()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0)});
    stage.passAt(0);
    QObject::connect(stage.worker, &PlayerWorker::trackStopped, stage.worker,
                     [&](const QString &id) { stage.play(id, {quarter(62, 0)}); });
    stage.passAt(28800);
    stage.passAt(28800);
    QCOMPARE(stage.starts(), lines({"4800", "33600"}));
    stage.fake.setClock(30000);
    stage.worker->stopTrack(T1);
    stage.passAt(30000);
    QCOMPARE(stage.starts(), lines({"4800", "33600", "34800"}));
}

QTEST_GUILESS_MAIN(tst_PlayerWorker)
#include "tst_PlayerWorker.moc"
