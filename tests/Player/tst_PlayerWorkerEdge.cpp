#include "PlayerStage.h"
#include "Quillmoor/PakWriter.h"
#include "support/MessageCapture.h"
#include "support/Thrown.h"

#include <QTemporaryDir>
#include <QtTest>

#include <stdexcept>

namespace {

const QString T1 = QStringLiteral("T1");
const QString T2 = QStringLiteral("T2");
const QString T3 = QStringLiteral("T3");
const QString Unmapped = QStringLiteral("Invalid note index");

TrackEvent quarter(quint32 pitch, quint64 time)
{
    return PlayerStage::quarter(pitch, time);
}

/// Maps 60 to a sample of the package and 70 to one that it does not have.
Instrument halfBroken(const QString &package)
{
    return Instrument::fromBytes(text("harp"),
                                 "{\"mapping\": {\"60\": {\"file\": \"/yes.ogg\", \"f\": 200},"
                                 "\"70\": {\"file\": \"/no.ogg\", \"f\": 200}}}",
                                 QStringLiteral("pak://%1::").arg(package));
}

QString packageIn(const QTemporaryDir &dir)
{
    PakWriter writer;
    writer.add(text("/yes.ogg"), "OggS");
    QString fileName = dir.filePath(text("sounds.pak"));
    writer.save(fileName);
    return fileName;
}

void repair(const QString &package)
{
    PakWriter writer;
    writer.add(text("/no.ogg"), "OggS");
    writer.save(package);
}

/// Of a slow machine, which may take longer than a second.
bool isUnmappedOncePerSecond(const QStringList &told, qint64 elapsedMs)
{
    return !told.isEmpty() && told.size() <= 1 + elapsedMs / 1000
        && told.count(Unmapped) == told.size();
}

} // namespace

/// What leaves a slot, and what becomes of it at the edge of the thread.
class tst_PlayerWorkerEdge : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void throwLeavesTheSlotWithAllAsItWas();
    void throwLeavesWhatWasHandedOverBefore();
    void queuedPassLogsAndTheNextPassesOver();
    void timerGoesOnBehindTheFailedEvent();
    void logsInItsNameAndOnlyOnce();
    void manyFailuresOfOneWindowCostOnePass();
    void manyFailingTracksCostOneTick();
    void otherTracksEndAndFadeMeanwhile();
    void failsAgainForALaterEvent();
    void triesTheEventAgainAfterASeek();
    void triesTheEventAgainWithAnotherInstrument();
    void forgetsTheEventWithItsTrack();
    void opensABrokenPackageOnceForAllNotes();
    void triesAPackageAgainForANewTrack();
    void triesAPackageAgainForASingleNote();
    void instrumentWithoutNotesIsSilentAtTheEdge();
    void instrumentWithoutNotesThrowsOutOfTheSlot();
    void instrumentWithoutNotesMayBeExchanged();
    void singleNoteThrowsOutOfTheSlot();
    void singleNoteIsLoggedAtTheEdge();
    void staleFailuresAreNotBlamedOnTracks();
    void takesATrackWithoutAName();
    void takesOtherExceptions();
};

void tst_PlayerWorkerEdge::initTestCase()
{
    qRegisterMetaType<Instrument>("Instrument"); // for queued calls
}

void tst_PlayerWorkerEdge::throwLeavesTheSlotWithAllAsItWas()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(99, 1), quarter(62, 2)});
    stage.signalLog.clear();
    for (int i = 0; i < 3; ++i)
        QCOMPARE(stage.messageAt(4000), Unmapped);
    QCOMPARE(stage.channelCalls(), QStringList());
    QVERIFY(!stage.fake.functions().contains(text("FMOD_System_Update")));
    QCOMPARE(stage.signalLog, QStringList());
}

void tst_PlayerWorkerEdge::throwLeavesWhatWasHandedOverBefore()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0), quarter(60, 60480)});
    stage.play(T2, {quarter(60, 0), quarter(99, 30240), quarter(62, 30241)});
    stage.passAt(4000);
    QCOMPARE(stage.messageAt(24000), Unmapped);
    QCOMPARE(stage.starts(), lines({"4800", "4800"}));
    QCOMPARE(stage.signalLog, lines({"started T1", "started T2"}));
}

void tst_PlayerWorkerEdge::queuedPassLogsAndTheNextPassesOver()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(60, 0), quarter(99, 1260), quarter(62, 2520)});
    stage.queuedPassAt(4000);
    QCOMPARE(stage.starts(), QStringList());
    QCOMPARE(log.texts(), QStringList(Unmapped));
    stage.queuedPassAt(4048);
    QCOMPARE(stage.starts(), lines({"4800", "6800"}));
    stage.queuedPassAt(4096);
    QCOMPARE(stage.starts(), lines({"4800", "6800"}));
    QCOMPARE(log.texts(), QStringList(Unmapped));
}

void tst_PlayerWorkerEdge::timerGoesOnBehindTheFailedEvent()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(60, 0), quarter(99, 1260), quarter(62, 2520)});
    stage.tickAt(4000);
    stage.tickAt(4048);
    QCOMPARE(stage.starts(), lines({"4800", "6800"}));
    QCOMPARE(log.texts(), QStringList(Unmapped));
    stage.passAt(4800);
    QCOMPARE(stage.signalLog, lines({"started T1", "pressed T1 0"}));
    stage.passAt(6800);
    QCOMPARE(stage.signalLog, lines({"started T1", "pressed T1 0", "pressed T1 2"}));
}

void tst_PlayerWorkerEdge::logsInItsNameAndOnlyOnce()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(99, 0), quarter(98, 3024), quarter(97, 30240), quarter(60, 33264)});
    for (quint64 clock = 0; clock < 30000; clock += 48)
        stage.tickAt(clock);
    QCOMPARE(log.messages().size(), 1);
    const MessageCapture::Message &message = log.messages().constFirst();
    QCOMPARE(message.type, QtCriticalMsg);
    QCOMPARE(message.file, text("Player/PlayerWorker"));
    QCOMPARE(message.function, text("void PlayerWorker::logFailure(const QString &)"));
    QCOMPARE(message.text, Unmapped);
    QCOMPARE(stage.starts(), lines({"31200"}));
}

void tst_PlayerWorkerEdge::manyFailuresOfOneWindowCostOnePass()
{
    PlayerStage stage;
    MessageCapture log;
    QElapsedTimer timer;
    timer.start();
    std::vector<TrackEvent> events;
    for (quint64 i = 0; i < 1000; ++i)
        events.push_back(quarter(i % 10 == 9 ? 60 : 99, i * 5));
    stage.play(T1, events);
    stage.tickAt(4000);
    QCOMPARE(stage.starts().size(), 100);
    QCOMPARE(stage.starts().constLast(), text("8764")); // tick 4995
    QCOMPARE(stage.fake.calls(text("FMOD_System_Update")).size(), 1);
    QVERIFY(isUnmappedOncePerSecond(log.texts(), timer.elapsed()));
}

void tst_PlayerWorkerEdge::manyFailingTracksCostOneTick()
{
    PlayerStage stage;
    MessageCapture log;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 200; ++i) {
        stage.play(QStringLiteral("T%1").arg(i),
                   {quarter(99, 0), quarter(60, 0), quarter(98, 0), quarter(61, 1260)});
    }
    stage.tickAt(4000);
    stage.tickAt(4048);
    QCOMPARE(stage.starts().size(), 400);
    QCOMPARE(stage.starts().count(text("4800")), 200);
    QCOMPARE(stage.starts().count(text("5800")), 200);
    QVERIFY(isUnmappedOncePerSecond(log.texts(), timer.elapsed()));
}

void tst_PlayerWorkerEdge::otherTracksEndAndFadeMeanwhile()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T2, {quarter(60, 0)});
    stage.passAt(4000);
    stage.fake.setClock(24000);
    stage.play(T1, {quarter(99, 0), quarter(60, 3024)});
    stage.play(T3, {quarter(62, 0)});
    stage.signalLog.clear();
    stage.tickAt(28800);
    QCOMPARE(stage.signalLog, lines({"stopped T2", "pressed T2 0", "pressed T3 0"}));
    QCOMPARE(stage.starts(), lines({"4800", "31200", "28800"}));
}

void tst_PlayerWorkerEdge::failsAgainForALaterEvent()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(99, 0), quarter(60, 1), quarter(98, 30240)});
    stage.tickAt(4000);
    QCOMPARE(stage.messageAt(4100), text("(nothing thrown)"));
    QCOMPARE(stage.messageAt(24000), Unmapped);
}

void tst_PlayerWorkerEdge::triesTheEventAgainAfterASeek()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(60, 0), quarter(99, 1260), quarter(62, 2520)});
    stage.tickAt(4000);
    stage.fake.setClock(20000);
    stage.worker->seek(T1, 0);
    QCOMPARE(stage.messageAt(20000), Unmapped);
    QCOMPARE(stage.starts(), lines({"4800", "6800"}));
    stage.tickAt(20000);
    QCOMPARE(stage.starts(), lines({"4800", "6800", "20000", "22000"}));

    stage.queuedPassAt(20000);
    stage.worker->seekAll(0);
    stage.queuedPassAt(20000); // fails, and remembers it
    stage.worker->seekAll(0);
    QCOMPARE(stage.messageAt(20000), Unmapped);
}

void tst_PlayerWorkerEdge::triesTheEventAgainWithAnotherInstrument()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(60, 0), quarter(99, 1260)});
    stage.queuedPassAt(4000);
    stage.worker->changeInstrument(
        T1,
        Instrument::fromBytes(text("lute"),
                              "{\"mapping\": {\"60\": {\"file\": \"/l\", \"f\": 1},"
                              "\"99\": {\"f\": 1}}}"));
    stage.passAt(4048);
    QCOMPARE(stage.starts(), lines({"4800", "5800"}));
}

void tst_PlayerWorkerEdge::forgetsTheEventWithItsTrack()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(99, 0), quarter(60, 1)});
    stage.queuedPassAt(4000);
    stage.fake.setClock(0);
    stage.play(T1, {quarter(60, 0), quarter(62, 1260)});
    stage.passAt(4000);
    QCOMPARE(stage.starts(), lines({"4800", "5800"}));
    stage.worker->stopTrack(T1);
    stage.passAt(4000);
}

void tst_PlayerWorkerEdge::opensABrokenPackageOnceForAllNotes()
{
    QTemporaryDir dir;
    const QString package = packageIn(dir);
    PlayerStage stage;
    MessageCapture log;
    std::vector<TrackEvent> events;
    for (quint64 i = 0; i < 200; ++i)
        events.push_back(TrackEvent::makeNote(i % 2 == 0 ? 70 : 60, i * 1260, 1260));
    stage.play(T1, events, halfBroken(package));
    stage.tickAt(4000);
    QVERIFY(QFile::remove(package)); // another look would have another message
    for (quint64 clock = 4480; clock < 210000; clock += 480)
        stage.tickAt(clock);
    QCOMPARE(stage.starts().size(), 100);
    QCOMPARE(stage.starts().constLast(), text("203800"));
    const QStringList logged = log.texts();
    QCOMPARE(logged.count(text("File not found")), logged.size());
}

void tst_PlayerWorkerEdge::triesAPackageAgainForANewTrack()
{
    QTemporaryDir dir;
    const QString package = packageIn(dir);
    PlayerStage stage;
    stage.play(T1, {quarter(70, 0)}, halfBroken(package));
    QCOMPARE(stage.messageAt(4000), text("File not found"));
    repair(package);
    QCOMPARE(stage.messageAt(4000), text("File not found"));
    stage.fake.setClock(0);
    stage.play(T1, {quarter(70, 0)}, halfBroken(package));
    QCOMPARE(stage.messageAt(4000), text("(nothing thrown)"));
    QCOMPARE(stage.starts(), lines({"4800"}));
}

void tst_PlayerWorkerEdge::triesAPackageAgainForASingleNote()
{
    QTemporaryDir dir;
    const QString package = packageIn(dir);
    PlayerStage stage;
    const auto playNote = [&] { stage.worker->playNote(halfBroken(package), 70); };
    QCOMPARE(thrownBy(playNote), text("File not found"));
    repair(package);
    QCOMPARE(thrownBy(playNote), text("(nothing thrown)"));
}

void tst_PlayerWorkerEdge::instrumentWithoutNotesIsSilentAtTheEdge()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(60, 0), quarter(61, 1), quarter(62, 30240)}, Instrument());
    stage.play(T2, {quarter(60, 0)});
    for (quint64 clock = 0; clock <= 52800; clock += 480)
        stage.tickAt(clock);
    QMetaObject::invokeMethod(stage.worker, "playNote", Qt::QueuedConnection,
                              Q_ARG(Instrument, Instrument()), Q_ARG(int, 60));
    QCoreApplication::sendPostedEvents(stage.worker);
    QCOMPARE(log.texts(), QStringList());
    QCOMPARE(stage.starts(), lines({"4800"}));
    QVERIFY(stage.signalLog.contains(text("stopped T1")));
}

void tst_PlayerWorkerEdge::instrumentWithoutNotesThrowsOutOfTheSlot()
{
    PlayerStage stage;
    stage.play(T1, {quarter(60, 0)}, Instrument());
    QCOMPARE(stage.messageAt(4000), Unmapped);
    QCOMPARE(thrownBy([&] { stage.worker->playNote(Instrument(), 60); }), Unmapped);
}

void tst_PlayerWorkerEdge::instrumentWithoutNotesMayBeExchanged()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(60, 0), quarter(62, 30240), quarter(99, 60480)}, Instrument());
    stage.tickAt(4000);
    stage.worker->changeInstrument(T1, PlayerStage::harp());
    stage.tickAt(24000);
    QCOMPARE(stage.starts(), lines({"28800"}));
    QCOMPARE(log.texts(), QStringList());
    stage.tickAt(48000);
    QCOMPARE(log.texts(), QStringList(Unmapped));
}

void tst_PlayerWorkerEdge::singleNoteThrowsOutOfTheSlot()
{
    PlayerStage stage;
    QCOMPARE(thrownBy([&] { stage.worker->playNote(PlayerStage::harp(), 99); }), Unmapped);
    QCOMPARE(thrownBy([&] { stage.worker->playNote(halfBroken(text("/nowhere.pak:/")), 70); }),
             thrownBy([&] { stage.worker->playNote(halfBroken(text("/nowhere.pak:/")), 70); }));
    QCOMPARE(stage.channelCalls(), QStringList());
}

void tst_PlayerWorkerEdge::singleNoteIsLoggedAtTheEdge()
{
    PlayerStage stage;
    MessageCapture log;
    for (int i = 0; i < 50; ++i)
        QMetaObject::invokeMethod(stage.worker, "playNote", Qt::QueuedConnection,
                                  Q_ARG(Instrument, PlayerStage::harp()),
                                  Q_ARG(int, i % 2 == 0 ? 99 : 60));
    QCoreApplication::sendPostedEvents(stage.worker);
    QCOMPARE(log.texts(), QStringList(Unmapped));
    QCOMPARE(stage.fake.calls(text("FMOD_System_PlaySound")).size(), 25);
}

void tst_PlayerWorkerEdge::staleFailuresAreNotBlamedOnTracks()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(T1, {quarter(60, 0), quarter(99, 1)});
    QCOMPARE(stage.messageAt(4000), Unmapped);
    QMetaObject::invokeMethod(stage.worker, "playNote", Qt::QueuedConnection,
                              Q_ARG(Instrument, PlayerStage::harp()), Q_ARG(int, 99));
    QCoreApplication::sendPostedEvents(stage.worker);
    QCOMPARE(log.texts(), QStringList(Unmapped));
    QCOMPARE(stage.messageAt(4000), Unmapped);
}

void tst_PlayerWorkerEdge::takesATrackWithoutAName()
{
    PlayerStage stage;
    MessageCapture log;
    stage.play(QString(), {quarter(99, 0), quarter(60, 1260)});
    stage.tickAt(4000);
    QCOMPARE(stage.starts(), lines({"5800"}));
}

void tst_PlayerWorkerEdge::takesOtherExceptions()
{
    const auto fails = [](FMOD::System **) -> FMOD_RESULT {
        throw std::runtime_error("The roof is on fire.");
    };
    const auto failsOddly = [](FMOD::System **) -> FMOD_RESULT { throw 42; };
    MessageCapture log;
    PlayerWorker first(fails);
    PlayerWorker second(failsOddly);
    for (PlayerWorker *const worker : {&first, &second}) {
        QMetaObject::invokeMethod(worker, "initialize", Qt::QueuedConnection);
        QCoreApplication::sendPostedEvents(worker);
    }
    QCOMPARE(log.texts(), lines({"The roof is on fire.", "Unknown error."}));
}

QTEST_GUILESS_MAIN(tst_PlayerWorkerEdge)
#include "tst_PlayerWorkerEdge.moc"
