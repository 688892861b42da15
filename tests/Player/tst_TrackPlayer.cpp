#include "Player/TrackPlayer.h"
#include "PlayerStage.h"
#include "Quillmoor/PakWriter.h"
#include "Sound/BuiltinSystem.h"
#include "support/MessageCapture.h"
#include "support/ThreadRefusal.h"
#include "support/VirtualClock.h"

#include <QMetaMethod>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <memory>

namespace {

const QString T1 = QStringLiteral("T1");
const QString T2 = QStringLiteral("T2");

PlayerWorker::SystemFactory builtinOn(VirtualClock &clock)
{
    return
        [&clock](FMOD::System **system) { return createBuiltinSystem(system, 2, clock.outputs()); };
}

/// Made before any thread: that a queued call comes after the making of what it carries is
/// nothing that the thread sanitizer can see, for Qt is not instrumented.
const Instrument &harp()
{
    static const Instrument made = PlayerStage::harp();
    return made;
}

/// A long track of short notes.
Track longTrack(quint32 pitch = 60)
{
    std::vector<TrackEvent> events;
    for (quint64 i = 0; i < 2000; ++i)
        events.push_back(TrackEvent::makeNote(pitch, i * 1260, 1260));
    return PlayerStage::track(events);
}

/// A wave file of silence, as long as asked for.
QByteArray silence(quint32 frames)
{
    const auto number = [](quint32 value, int bytes) {
        QByteArray text;
        for (int i = 0; i < bytes; ++i)
            text.append(static_cast<char>(value >> (8 * i)));
        return text;
    };
    const quint32 size = frames * 2;
    return "RIFF" + number(36 + size, 4) + "WAVEfmt " + number(16, 4) + number(1, 2) + number(1, 2)
        + number(44100, 4) + number(88200, 4) + number(2, 2) + number(16, 2) + "data"
        + number(size, 4) + QByteArray(static_cast<int>(size), '\0');
}

Instrument of(const QByteArray &wave, const QTemporaryDir &dir)
{
    QFile file(dir.filePath(text("a.wav")));
    if (!file.open(QIODevice::WriteOnly) || file.write(wave) != wave.size())
        qFatal("no sample");
    return Instrument::fromBytes(text("harp"),
                                 "{\"mapping\": {\"60\": {\"file\": \"a.wav\", \"f\": 1}}}",
                                 dir.path() + QLatin1Char('/'));
}

} // namespace

class tst_TrackPlayer : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { harp(); }
    void declaresItsSignalsInOrder();
    void ownsAThread();
    void opensTheSystemOnItsThread();
    void passesEveryCallOn();
    void playsOnlyOnceTheTrackHasStarted();
    void knowsItsStateBeforeItTells();
    void stopsAll();
    void relaysNotesAndPositions();
    void tellsOfEndsOfTracks();
    void tellsWhyThereIsNoSound();
    void survivesAFailingNote();
    void isDestroyedAtOnce();
    void isDestroyedBeforeItsThreadRuns();
    void isDestroyedInTheMiddle();
    void isDestroyedWhileAHugeSampleLoads();
    void isDestroyedWithItsParent();
    void hearsNothingAfterItsEnd();
    void doesNothingWithoutAThread();
};

void tst_TrackPlayer::declaresItsSignalsInOrder()
{
    QStringList names;
    const QMetaObject &meta = TrackPlayer::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names.append(QString::fromLatin1(meta.method(i).methodSignature()));
    QCOMPARE(names.mid(0, 10),
             lines({"trackStarted(QString)", "trackStopped(QString)", "allTracksStopped()",
                    "trackPositionChanged(QString,qulonglong)", "notePressed(QString,uint)",
                    "noteReleased(QString,uint)", "soundProblemChanged(QString)",
                    "onTrackStarted(QString)", "onTrackStopped(QString)", "onAllTracksStopped()"}));
}

void tst_TrackPlayer::ownsAThread()
{
    FakeFmod fake;
    const TrackPlayer player;
    auto *const thread = player.findChild<QThread *>();
    QVERIFY(thread);
    QVERIFY(thread->isRunning());
}

void tst_TrackPlayer::opensTheSystemOnItsThread()
{
    FakeFmod fake;
    {
        const TrackPlayer player;
        QTRY_VERIFY(fake.functions().contains(text("FMOD_System_Update")));
        QCOMPARE(
            fake.functions().mid(0, 3),
            lines({"FMOD_System_Create", "FMOD_System_SetSoftwareChannels", "FMOD_System_Init"}));
    }
    QCOMPARE(fake.functions().constLast(), text("FMOD_System_Release"));
}

void tst_TrackPlayer::passesEveryCallOn()
{
    FakeFmod fake;
    MessageCapture log; // a call that finds no slot is a warning
    {
        TrackPlayer player;
        const Track track = PlayerStage::track({PlayerStage::quarter(60, 30240)});
        player.playNote(harp(), 61);
        player.playTrack(T1, harp(), track, true, 1.0F, 0.0F);
        player.playTrack(T2, text("Main"), Instrument(), track, false, 1.0F, 0.0F);
        player.muteTrack(T1, false);
        player.changeInstrument(T2, harp());
        player.setVolume(T1, 0.25F);
        player.setPan(T1, -0.5F);
        player.setPan(T2, 0.5F);
        player.seek(T1, 30240);
        QTRY_COMPARE(fake.calls(text("FMOD_Channel_SetDelay")).size(), 1);
        player.seekAll(30240);
        QTRY_COMPARE(fake.calls(text("FMOD_Channel_SetDelay")).size(), 3);
        player.stopTrack(T1);
        player.stopAll();
        QTRY_COMPARE(fake.calls(text("FMOD_Channel_Stop")).size(), 3);
    }
    QCOMPARE(fake.calls(text("FMOD_Channel_SetFrequency")).constFirst(),
             text("FMOD_Channel_SetFrequency(channel1, 66150)"));
    QCOMPARE(
        fake.calls(text("FMOD_Channel_SetVolume")).mid(0, 3),
        lines({"FMOD_Channel_SetVolume(channel2, 0.25)", "FMOD_Channel_SetVolume(channel3, 0.25)",
               "FMOD_Channel_SetVolume(channel4, 1)"}));
    QCOMPARE(fake.calls(text("FMOD_Channel_SetPan")),
             lines({"FMOD_Channel_SetPan(channel2, -0.5)", "FMOD_Channel_SetPan(channel3, -0.5)",
                    "FMOD_Channel_SetPan(channel4, 0.5)"}));
    QCOMPARE(log.texts(), QStringList());
}

void tst_TrackPlayer::playsOnlyOnceTheTrackHasStarted()
{
    FakeFmod fake;
    TrackPlayer player;
    QSignalSpy started(&player, &TrackPlayer::trackStarted);
    player.playTrack(T1, harp(), longTrack(), false, 1.0F, 0.0F);
    QTRY_COMPARE(fake.calls(text("FMOD_System_CreateChannelGroup")).size(), 1);
    player.playTrack(T2, harp(), longTrack(), false, 1.0F, 0.0F);
    QVERIFY(!player.isPlaying(T2));
    QTRY_COMPARE(started.size(), 2);
    QVERIFY(player.isPlaying(T1));
    QVERIFY(player.isPlaying(T2));
    QVERIFY(!player.isPlaying(text("T3")));
    player.stopTrack(T1);
    QVERIFY(player.isPlaying(T1));
    QTRY_VERIFY(!player.isPlaying(T1));
    QVERIFY(player.isPlaying(T2));
}

void tst_TrackPlayer::knowsItsStateBeforeItTells()
{
    FakeFmod fake;
    TrackPlayer player;
    QStringList seen;
    const auto note = [&](const char *what) {
        seen.append(text(what) + (player.isPlaying(T1) ? text(" playing") : text(" silent")));
    };
    connect(&player, &TrackPlayer::trackStarted, this, [&] { note("started"); });
    connect(&player, &TrackPlayer::trackStopped, this, [&] { note("stopped"); });
    connect(&player, &TrackPlayer::allTracksStopped, this, [&] { note("all"); });
    player.playTrack(T1, harp(), longTrack(), false, 1.0F, 0.0F);
    player.stopTrack(T1);
    player.playTrack(T1, harp(), longTrack(), false, 1.0F, 0.0F);
    player.stopAll();
    QTRY_COMPARE(seen,
                 lines({"started playing", "stopped silent", "started playing", "all silent"}));
}

void tst_TrackPlayer::stopsAll()
{
    FakeFmod fake;
    TrackPlayer player;
    QSignalSpy stopped(&player, &TrackPlayer::allTracksStopped);
    for (const QString &id : {T1, T2})
        player.playTrack(id, text("Main"), harp(), longTrack(), false, 1.0F, 0.0F);
    QTRY_VERIFY(player.isPlaying(T1) && player.isPlaying(T2));
    player.stopAll();
    QTRY_COMPARE(stopped.size(), 1);
    QVERIFY(!player.isPlaying(T1));
    QVERIFY(!player.isPlaying(T2));
}

void tst_TrackPlayer::relaysNotesAndPositions()
{
    FakeFmod fake;
    TrackPlayer player;
    QSignalSpy positions(&player, &TrackPlayer::trackPositionChanged);
    QSignalSpy pressed(&player, &TrackPlayer::notePressed);
    QSignalSpy released(&player, &TrackPlayer::noteReleased);
    player.playTrack(T1, harp(), PlayerStage::track({PlayerStage::quarter(60, 0)}), false, 1.0F,
                     0.0F);
    QTRY_COMPARE(fake.calls(text("FMOD_Channel_SetDelay")).size(), 1);
    fake.setClock(16800);
    QTRY_COMPARE(pressed.size(), 1);
    QCOMPARE(pressed.constFirst(), (QList<QVariant>{T1, 0U}));
    QTRY_VERIFY(!positions.isEmpty()
                && positions.constLast() == (QList<QVariant>{T1, quint64(15120)}));
    fake.setClock(28800);
    QTRY_COMPARE(released.size(), 1);
    QCOMPARE(released.constFirst(), (QList<QVariant>{T1, 0U}));
}

void tst_TrackPlayer::tellsOfEndsOfTracks()
{
    FakeFmod fake;
    TrackPlayer player;
    QSignalSpy stopped(&player, &TrackPlayer::trackStopped);
    player.playTrack(T1, Instrument(), Track(), false, 1.0F, 0.0F);
    QTRY_COMPARE(stopped.size(), 1);
    QVERIFY(!player.isPlaying(T1));
}

void tst_TrackPlayer::tellsWhyThereIsNoSound()
{
    VirtualClock clock;
    clock.setProblem("The device is gone.");
    TrackPlayer player(nullptr, builtinOn(clock));
    QCOMPARE(player.soundProblem(), QString());
    QString whenTold;
    connect(&player, &TrackPlayer::soundProblemChanged, this,
            [&] { whenTold = player.soundProblem(); });
    QTRY_COMPARE(whenTold, text("The device is gone."));
}

void tst_TrackPlayer::survivesAFailingNote()
{
    FakeFmod fake;
    MessageCapture log;
    {
        TrackPlayer player;
        QSignalSpy pressed(&player, &TrackPlayer::notePressed);
        player.playNote(harp(), 99);
        player.playTrack(T1, harp(), longTrack(99), false, 1.0F, 0.0F);
        player.playTrack(T2, harp(), longTrack(), false, 1.0F, 0.0F);
        QTRY_VERIFY(player.isPlaying(T2)); // with its start at 4800
        for (quint64 clock = 4800; clock < 48000; clock += 4000) {
            const int before = pressed.size();
            fake.setClock(clock);
            QTRY_VERIFY(pressed.size() > before);
        }
        for (const QList<QVariant> &note : qAsConst(pressed))
            QCOMPARE(note.constFirst().toString(), T2);
    }
    QVERIFY(log.texts().contains(text("Invalid note index")));
}

void tst_TrackPlayer::isDestroyedAtOnce()
{
    FakeFmod fake;
    for (int i = 0; i < 200; ++i) {
        fake.clearCalls();
        const auto player = std::make_unique<TrackPlayer>();
    }
    QCOMPARE(fake.functions().constLast(), text("FMOD_System_Release"));
}

void tst_TrackPlayer::isDestroyedBeforeItsThreadRuns()
{
    FakeFmod fake;
    for (int i = 0; i < 50; ++i) {
        TrackPlayer first;
        TrackPlayer second;
        first.playTrack(T1, harp(), longTrack(), false, 1.0F, 0.0F);
        second.stopAll();
    }
    QCOMPARE(fake.calls(text("FMOD_System_Create")).size(), 100);
    QCOMPARE(fake.calls(text("FMOD_System_Release")).size(), 100);
}

void tst_TrackPlayer::isDestroyedInTheMiddle()
{
    QTemporaryDir dir;
    const Instrument instrument = of(silence(4410), dir);
    VirtualClock clock;
    clock.runFreely(512);
    for (int i = 0; i < 200; ++i) {
        TrackPlayer player(nullptr, builtinOn(clock));
        QSignalSpy started(&player, &TrackPlayer::trackStarted);
        for (int j = 0; j < 4; ++j)
            player.playTrack(QString::number(j), text("Main"), instrument, longTrack(), false, 1.0F,
                             0.0F);
        if (i % 3 != 0) // all stages of beginning
            QVERIFY(!started.isEmpty() || started.wait());
    }
    QVERIFY(!clock.isRunning());
}

void tst_TrackPlayer::isDestroyedWhileAHugeSampleLoads()
{
    QTemporaryDir dir;
    const Instrument instrument = of(silence(20'000'000), dir);
    for (int i = 0; i < 3; ++i) {
        VirtualClock clock;
        clock.runFreely(512);
        TrackPlayer player(nullptr, builtinOn(clock));
        QSignalSpy started(&player, &TrackPlayer::trackStarted);
        player.playNote(instrument, 60);
        player.playTrack(T1, instrument, longTrack(), false, 1.0F, 0.0F);
        QTRY_COMPARE(started.size(), 1);
    }
}

void tst_TrackPlayer::isDestroyedWithItsParent()
{
    FakeFmod fake;
    auto parent = std::make_unique<QObject>();
    const QPointer<TrackPlayer> player = new TrackPlayer(parent.get());
    player->playTrack(T1, harp(), longTrack(), false, 1.0F, 0.0F);
    parent.reset();
    QVERIFY(!player);
    QCOMPARE(fake.functions().constLast(), text("FMOD_System_Release"));
}

void tst_TrackPlayer::hearsNothingAfterItsEnd()
{
    FakeFmod fake;
    int heard = 0;
    {
        TrackPlayer player;
        connect(&player, &TrackPlayer::trackStarted, this, [&heard] { ++heard; });
        connect(&player, &TrackPlayer::trackStopped, this, [&heard] { ++heard; });
        for (int i = 0; i < 100; ++i)
            player.playTrack(QString::number(i), Instrument(), Track(), false, 1.0F, 0.0F);
    }
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    QCOMPARE(heard, 0);
    QCOMPARE(fake.calls(text("FMOD_System_CreateChannelGroup")).size(), 100);
}

void tst_TrackPlayer::doesNothingWithoutAThread()
{
    FakeFmod fake;
    const ThreadRefusal refusal;
    QTest::ignoreMessage(QtCriticalMsg,
                         "QThread::start: Thread creation error "
                         "(Resource temporarily unavailable)");
    TrackPlayer player;
    QCOMPARE(player.soundProblem(), text("Could not start a thread for the sound."));
    player.playTrack(T1, harp(), longTrack(), false, 1.0F, 0.0F);
    player.playNote(harp(), 60);
    player.stopAll();
    QCoreApplication::processEvents();
    QVERIFY(!player.isPlaying(T1));
    QCOMPARE(fake.calls(), QStringList());
}

QTEST_GUILESS_MAIN(tst_TrackPlayer)
#include "tst_TrackPlayer.moc"
