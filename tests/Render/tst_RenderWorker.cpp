#include "Render/RenderWorker.h"
#include "support/FakeFmod.h"

#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

#include <cstdlib>

namespace {

/// Maps 60, and 61 at one and a half times its rate. `fadeout` is in seconds.
Instrument harp(const QByteArray &fadeout = "0.032")
{
    return Instrument::fromBytes(QStringLiteral("harp"),
                                 "{\"fadeout\": " + fadeout
                                     + ", \"mapping\": {"
                                       "\"60\": {\"file\": \"/c.wav\", \"f\": 200},"
                                       "\"61\": {\"f\": 300}}}");
}

Track trackOf(const QVector<TrackEvent> &events)
{
    Track track;
    for (const TrackEvent &event : events)
        track.addEvent(event);
    track.sortEvents();
    return track;
}

/// 1280 ticks are 1015 frames at 48 kHz and the default tempo.
TrackEvent note(quint32 pitch, quint64 time = 0)
{
    return TrackEvent::makeNote(pitch, time, 1280);
}

/// A render into a temporary file, on this thread.
class Rendering {
public:
    Rendering()
        : fileName(dir.filePath(QStringLiteral("out.wav")))
        , worker(new RenderWorker(fileName))
        , progress(worker, &RenderWorker::progress)
        , measured(worker, &RenderWorker::measured)
        , finished(worker, &RenderWorker::finished)
        , failed(worker, &RenderWorker::renderFailed)
    {
    }
    ~Rendering() { delete worker; }
    Rendering(const Rendering &) = delete;
    Rendering &operator=(const Rendering &) = delete;

    void add(const QVector<TrackEvent> &events, const Instrument &instrument = harp())
    {
        worker->addTrack(trackOf(events), instrument, 0.5F, -0.25F);
    }

    /// The message of the failure; empty for success.
    QString render()
    {
        worker->render();
        return failed.isEmpty() ? QString() : failed.constFirst().constFirst().toString();
    }

    bool succeeded() const { return finished.size() == 1 && failed.isEmpty(); }
    bool hasFailed() const { return finished.isEmpty() && failed.size() == 1; }

    QTemporaryDir dir;
    QString fileName;
    QPointer<RenderWorker> worker;
    QSignalSpy progress;
    QSignalSpy measured;
    QSignalSpy finished;
    QSignalSpy failed;
};

QString reason(const Rendering &rendering, const char *text)
{
    return QStringLiteral("Could not write %1: %2")
        .arg(rendering.fileName, QString::fromLatin1(text));
}

void writeFile(const QString &fileName, const QByteArray &contents)
{
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents);
}

QByteArray contentsOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList lastCritical;

void keepCritical(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtCriticalMsg)
        lastCritical =
            QStringList{QString::fromLatin1(context.category), QString::fromLatin1(context.file),
                        QString::fromLatin1(context.function), text};
}

} // namespace

class tst_RenderWorker : public QObject {
    Q_OBJECT

private slots:
    void callsTheSoundSystemInOrder();
    void writesNothingWithoutTracks();
    void dropsATrackWhoseEventsAreScheduled();
    void reportsProgressPerTrackAndStep();
    void reportsTheLengthOfTheLongestTrack();
    void fadesInTheStepThatHandsOver();
    void rendersTheTracksInOrder();
    void passesTheFileNameInTheLocalEncoding();
    void measuresWhatItWrote();
    void failsWhenTheFileCannotBeReadBack();
    void schedulesItsDeletion();
    void logsErrorsInItsNameAndGoesOn();
    void failsWithoutASystem();
    void failsWithoutAnOutputAndKeepsTheOlderFile();
    void failsWhenTheClockStandsStill();
    void failsWhenAnUpdateDoesNothing();
    void failsWithoutASampleRate();
    void failsWhenTheFileCannotBeCompleted();
    void failsAtAnUnmappedNoteAndRemovesTheFile();
    void failsBeforeItWritesForDays_data();
    void failsBeforeItWritesForDays();
    void choosesTheSameFilesEveryTime();
    void ignoresATempoOf0();
};

void tst_RenderWorker::callsTheSoundSystemInOrder()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.add({note(61)});
    QCOMPARE(rendering.render(), QString());
    QCOMPARE(
        fake.calls().join(QLatin1Char('\n')),
        QStringLiteral("FMOD_System_Create() -> system1\n"
                       "FMOD_System_SetSoftwareChannels(system1, 2048)\n"
                       "FMOD_System_SetOutput(system1, 5)\n"
                       "FMOD_System_Init(system1, 2048, 1, \"%1\")\n"
                       // First step: the note starts.
                       "FMOD_System_GetDSPClock(system1) -> 0 0\n"
                       "%2\n"
                       "FMOD_System_CreateSound(system1, \"/c.wav\", 0x148, null) -> sound1\n"
                       "FMOD_System_PlaySound(system1, -1, sound1, 1) -> channel1\n"
                       "FMOD_Channel_GetFrequency(channel1) -> 44100\n"
                       "FMOD_Channel_SetFrequency(channel1, 66150)\n"
                       "FMOD_Channel_SetVolume(channel1, 0.5)\n"
                       "FMOD_Channel_SetPan(channel1, -0.25)\n"
                       "FMOD_Channel_SetDelay(channel1, 1, 0, 0)\n"
                       "FMOD_Channel_SetPaused(channel1, 0)\n"
                       "FMOD_System_Update(system1)\n"
                       // It ended at 1015 and fades for 1536 frames.
                       "FMOD_System_GetDSPClock(system1) -> 0 1024\n"
                       "%2\n"
                       "FMOD_Channel_SetVolume(channel1, 0.497070312)\n"
                       "FMOD_System_Update(system1)\n"
                       "FMOD_System_GetDSPClock(system1) -> 0 2048\n"
                       "%2\n"
                       "FMOD_Channel_SetVolume(channel1, 0.163736984)\n"
                       "FMOD_System_Update(system1)\n"
                       "FMOD_System_GetDSPClock(system1) -> 0 3072\n"
                       "%2\n"
                       "FMOD_Channel_Stop(channel1)\n"
                       "FMOD_System_Update(system1)\n"
                       "FMOD_System_GetDSPClock(system1) -> 0 4096\n"
                       "%2\n"
                       "FMOD_Sound_Release(sound1)\n"
                       "FMOD_System_Release(system1)")
            .arg(rendering.fileName,
                 QStringLiteral("FMOD_System_GetSoftwareFormat(system1, out, null, null, null, "
                                "null, null) -> 48000")));
}

void tst_RenderWorker::writesNothingWithoutTracks()
{
    FakeFmod fake;
    Rendering rendering;
    QCOMPARE(rendering.render(), QString());
    QVERIFY(rendering.succeeded());
    QVERIFY(rendering.progress.isEmpty());
    QVERIFY(!fake.functions().contains(QStringLiteral("FMOD_System_Update")));
    QVERIFY(QFile::exists(rendering.fileName));
}

void tst_RenderWorker::dropsATrackWhoseEventsAreScheduled()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.add({note(60)}, harp("0"));
    rendering.render();
    // The second update comes with the step in which the track is dropped and the note stopped.
    QCOMPARE(fake.calls(QStringLiteral("FMOD_System_Update")).size(), 2);
}

void tst_RenderWorker::reportsProgressPerTrackAndStep()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.add({note(60), note(60, 7000)}, harp("0"));
    Track fast = trackOf({note(60), note(60, 20000)});
    fast.setTicksPerMinute(7257600);
    rendering.worker->addTrack(fast, harp("0"), 1.0F, 0.0F);
    rendering.render();

    QStringList reports;
    for (const QList<QVariant> &report : qAsConst(rendering.progress))
        reports.append(QStringLiteral("%1/%2")
                           .arg(report.at(0).toULongLong())
                           .arg(report.at(1).toULongLong()));
    // Per step the slow track's horizon, then the smaller one of both. The step in which the slow
    // track is dropped still counts it.
    QCOMPARE(reports.join(QLatin1Char(' ')),
             QStringLiteral("6048/21280 6048/21280 7338/21280 7338/21280 "
                            "8628/21280 19837/21280 22417/21280"));
}

void tst_RenderWorker::reportsTheLengthOfTheLongestTrack()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.add({note(60, 20000)});
    rendering.add({note(60)});
    rendering.render();
    QVERIFY(!rendering.progress.isEmpty());
    for (const QList<QVariant> &report : qAsConst(rendering.progress))
        QCOMPARE(report.at(1).toULongLong(), 21280ULL);
}

/// A note without length ends in the step in which it starts.
void tst_RenderWorker::fadesInTheStepThatHandsOver()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.add({TrackEvent::makeNote(60, 0, 0)});
    rendering.render();
    const QStringList calls = fake.calls();
    const int unpaused = calls.indexOf(QStringLiteral("FMOD_Channel_SetPaused(channel1, 0)"));
    QVERIFY(unpaused > 0);
    QCOMPARE(calls.at(unpaused + 1), QStringLiteral("FMOD_Channel_SetVolume(channel1, 0.5)"));
    QCOMPARE(calls.at(unpaused + 2), QStringLiteral("FMOD_System_Update(system1)"));
}

void tst_RenderWorker::rendersTheTracksInOrder()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.worker->addTrack(trackOf({note(60)}), harp(), 0.25F, 0.0F);
    rendering.worker->addTrack(trackOf({note(60)}), harp(), 0.75F, 1.0F);
    rendering.render();
    QCOMPARE(fake.calls(QStringLiteral("FMOD_Channel_SetPan")),
             QStringList() << QStringLiteral("FMOD_Channel_SetPan(channel1, 0)")
                           << QStringLiteral("FMOD_Channel_SetPan(channel2, 1)"));
    QCOMPARE(fake.calls(QStringLiteral("FMOD_Channel_SetVolume")).mid(0, 2),
             QStringList() << QStringLiteral("FMOD_Channel_SetVolume(channel1, 0.25)")
                           << QStringLiteral("FMOD_Channel_SetVolume(channel2, 0.75)"));
}

void tst_RenderWorker::passesTheFileNameInTheLocalEncoding()
{
    FakeFmod fake;
    QTemporaryDir dir;
    const QString fileName = dir.filePath(QString::fromUtf8("Fl\xC3\xB6te.wav"));
    auto *const worker = new RenderWorker(fileName);
    worker->render();
    QVERIFY(fake.calls(QStringLiteral("FMOD_System_Init"))
                .constFirst()
                .contains(QString::fromLocal8Bit(fileName.toLocal8Bit())));
    delete worker;
}

void tst_RenderWorker::measuresWhatItWrote()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.add({note(60), note(61, 5)});
    rendering.add({note(60)});
    rendering.render();
    QCOMPARE(rendering.measured.size(), 1);
    const auto result = rendering.measured.constFirst().constFirst().value<RenderResult>();
    QCOMPARE(result.notes, quint64(3));
    QCOMPARE(result.frames, quint64(4096));
    QCOMPARE(result.seconds, 4096.0 / 48000);
    QCOMPARE(result.peak, 0.0F);
    QCOMPARE(result.clipped, quint64(0));
}

void tst_RenderWorker::failsWhenTheFileCannotBeReadBack()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.add({note(60)});
    // Away from under the open system, which writes it anew only into an existing folder.
    QObject::connect(rendering.worker, &RenderWorker::progress,
                     [&rendering] { QVERIFY(rendering.dir.remove()); });
    QCOMPARE(rendering.render(), reason(rendering, "The file cannot be read back."));
    QVERIFY(rendering.hasFailed());
}

void tst_RenderWorker::schedulesItsDeletion()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.render();
    QVERIFY(rendering.worker);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!rendering.worker);
}

void tst_RenderWorker::logsErrorsInItsNameAndGoesOn()
{
    FakeFmod fake;
    fake.fail(QStringLiteral("FMOD_Channel_SetPan"), 1, FMOD_ERR_INVALID_PARAM);
    Rendering rendering;
    rendering.add({note(60)});
    lastCritical.clear();
    const QtMessageHandler before = qInstallMessageHandler(keepCritical);
    rendering.render();
    qInstallMessageHandler(before);
    QCOMPARE(
        lastCritical,
        QStringList() << QStringLiteral("default") << QStringLiteral("Render/RenderWorker")
                      << QStringLiteral("void RenderWorker::checkErrors(FMOD_RESULT) const")
                      << QStringLiteral("FMOD Error: %1\n")
                             .arg(QString::fromLatin1(FMOD::errorString(FMOD_ERR_INVALID_PARAM))));
    QVERIFY(rendering.succeeded());
}

void tst_RenderWorker::failsWithoutASystem()
{
    FakeFmod fake;
    fake.fail(QStringLiteral("FMOD_System_Create"), 1, FMOD_ERR_MEMORY);
    Rendering rendering;
    rendering.add({note(60)});
    QTest::ignoreMessage(QtCriticalMsg, "FMOD Error: There is too little memory.\n");
    QCOMPARE(rendering.render(),
             QStringLiteral("Could not start the sound system: There is too little memory."));
    QVERIFY(rendering.hasFailed());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!rendering.worker);
}

void tst_RenderWorker::failsWithoutAnOutputAndKeepsTheOlderFile()
{
    FakeFmod fake;
    fake.fail(QStringLiteral("FMOD_System_Init"), 1, FMOD_ERR_OUTPUT_INIT);
    Rendering rendering;
    rendering.add({note(60)});
    writeFile(rendering.fileName, "older");
    QTest::ignoreMessage(QtCriticalMsg, "FMOD Error: The sound output could not be opened.\n");
    QCOMPARE(rendering.render(), reason(rendering, "The sound output could not be opened."));
    QVERIFY(rendering.hasFailed());
    QCOMPARE(contentsOf(rendering.fileName), QByteArray("older"));
    QCOMPARE(fake.calls().constLast(), QStringLiteral("FMOD_System_Release(system1)"));
}

void tst_RenderWorker::failsWhenTheClockStandsStill()
{
    FakeFmod fake;
    fake.fail(QStringLiteral("FMOD_System_Update"), 2, FMOD_ERR_INTERNAL);
    Rendering rendering;
    rendering.add({note(60)});
    QTest::ignoreMessage(QtCriticalMsg,
                         "FMOD Error: Something went wrong inside the sound system.\n");
    QCOMPARE(rendering.render(),
             reason(rendering, "Something went wrong inside the sound system."));
    QVERIFY(rendering.hasFailed());
    QVERIFY(!QFile::exists(rendering.fileName));
    QCOMPARE(fake.calls().mid(fake.calls().size() - 2),
             QStringList() << QStringLiteral("FMOD_Sound_Release(sound1)")
                           << QStringLiteral("FMOD_System_Release(system1)"));
}

void tst_RenderWorker::failsWhenAnUpdateDoesNothing()
{
    FakeFmod fake;
    fake.fail(QStringLiteral("FMOD_System_GetDSPClock"), 2, FMOD_ERR_INTERNAL);
    Rendering rendering;
    rendering.add({note(60)});
    QTest::ignoreMessage(QtCriticalMsg,
                         "FMOD Error: Something went wrong inside the sound system.\n");
    QCOMPARE(rendering.render(), reason(rendering, "The output stands still."));
    QVERIFY(!QFile::exists(rendering.fileName));
}

void tst_RenderWorker::failsWithoutASampleRate()
{
    FakeFmod fake;
    fake.setOutputRate(0);
    Rendering rendering;
    rendering.add({note(60)});
    QCOMPARE(rendering.render(), reason(rendering, "The output has no sample rate."));
    QVERIFY(!QFile::exists(rendering.fileName));
}

void tst_RenderWorker::failsWhenTheFileCannotBeCompleted()
{
    FakeFmod fake;
    fake.fail(QStringLiteral("FMOD_System_Release"), 1, FMOD_ERR_FILE_BAD);
    Rendering rendering;
    rendering.add({note(60)});
    const QByteArray text = FMOD::errorString(FMOD_ERR_FILE_BAD);
    QTest::ignoreMessage(QtCriticalMsg, "FMOD Error: " + text + "\n");
    QCOMPARE(rendering.render(), reason(rendering, text.constData()));
    QVERIFY(rendering.hasFailed());
    QVERIFY(!QFile::exists(rendering.fileName));
}

void tst_RenderWorker::failsAtAnUnmappedNoteAndRemovesTheFile()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.add({note(60), note(99, 30240)});
    QCOMPARE(rendering.render(), QStringLiteral("Invalid note index"));
    QVERIFY(rendering.hasFailed());
    QVERIFY(rendering.measured.isEmpty());
    QVERIFY(fake.calls(QStringLiteral("FMOD_System_Update")).size() > 1);
    QVERIFY(!QFile::exists(rendering.fileName));
}

void tst_RenderWorker::failsBeforeItWritesForDays_data()
{
    QTest::addColumn<Track>("track");
    QTest::addColumn<QByteArray>("fadeout");

    Track slow = trackOf({note(60, 30240)});
    slow.setTicksPerMinute(1);
    QTest::newRow("a tick a minute") << slow << QByteArray("0");
    QTest::newRow("a late tempo of a tick a minute")
        << trackOf({TrackEvent::makeTempo(10, 1, 120960, 1), note(60, 3000)}) << QByteArray("0");
    QTest::newRow("a note at the end of time")
        << trackOf({note(60, ~quint64(0))}) << QByteArray("0");
    QTest::newRow("an endless fade") << trackOf({note(60)}) << QByteArray("1e300");
    // 24 hours hold 5225472000 ticks at the default tempo.
    QTest::newRow("a frame too long")
        << trackOf({TrackEvent::makeNote(60, 0, 5225472002)}) << QByteArray("0");
}

void tst_RenderWorker::failsBeforeItWritesForDays()
{
    QFETCH(Track, track);
    QFETCH(QByteArray, fadeout);
    FakeFmod fake;
    Rendering rendering;
    rendering.worker->addTrack(track, harp(fadeout), 1.0F, 0.0F);
    QCOMPARE(rendering.render(), reason(rendering, "It would sound for more than 24 hours."));
    QVERIFY(!fake.functions().contains(QStringLiteral("FMOD_System_Update")));
    QVERIFY(!QFile::exists(rendering.fileName));
}

void tst_RenderWorker::choosesTheSameFilesEveryTime()
{
    const Instrument drums =
        Instrument::fromBytes(QStringLiteral("drums"),
                              "{\"mapping\": {\"60\": {\"files\": [\"/a\", \"/b\", \"/c\"],"
                              " \"f\": 1}}}");
    QStringList previous;
    for (uint seed = 1; seed <= 3; ++seed) {
        std::srand(seed);
        FakeFmod fake;
        Rendering rendering;
        QVector<TrackEvent> events;
        for (quint64 i = 0; i < 40; ++i)
            events.append(note(60, i * 10));
        rendering.add(events, drums);
        rendering.render();
        const QStringList played = fake.calls(QStringLiteral("FMOD_System_PlaySound"))
            + fake.calls(QStringLiteral("FMOD_System_CreateSound"));
        QCOMPARE(played.size(), 43);
        QVERIFY(previous.isEmpty() || played == previous);
        previous = played;
    }
}

void tst_RenderWorker::ignoresATempoOf0()
{
    FakeFmod fake;
    Rendering rendering;
    Track track = trackOf({note(60, 3024)});
    track.setTicksPerMinute(0);
    rendering.worker->addTrack(track, harp("0"), 1.0F, 0.0F);
    QCOMPARE(rendering.render(), QString());
    QCOMPARE(fake.calls(QStringLiteral("FMOD_Channel_SetDelay")),
             QStringList(QStringLiteral("FMOD_Channel_SetDelay(channel1, 1, 0, 2400)")));
}

QTEST_GUILESS_MAIN(tst_RenderWorker)
#include "tst_RenderWorker.moc"
