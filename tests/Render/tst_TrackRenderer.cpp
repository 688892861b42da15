#include "Render/TrackRenderer.h"
#include "support/FakeFmod.h"
#include "support/ThreadRefusal.h"

#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <memory>

namespace {

Instrument harp()
{
    return Instrument::fromBytes(QStringLiteral("harp"),
                                 "{\"mapping\": {\"60\": {\"file\": \"/c.wav\", \"f\": 200}}}");
}

/// As many quarter notes at 120 beats a minute.
Track quarters(int count, quint32 pitch = 60)
{
    Track track;
    for (int i = 0; i < count; ++i)
        track.addEvent(TrackEvent::makeNote(pitch, static_cast<quint64>(i) * 30240, 30240));
    track.sortEvents();
    return track;
}

/// Twenty minutes: long enough to be interrupted.
Track longTrack()
{
    return quarters(2400);
}

/// A renderer into a temporary file, and the names of its signals in the order of their arrival.
class Rendering {
public:
    Rendering()
        : fileName(dir.filePath(QStringLiteral("out.wav")))
        , renderer(std::make_unique<TrackRenderer>(fileName))
    {
        note(&TrackRenderer::renderStarted, "started");
        note(&TrackRenderer::renderFinished, "finished");
        QObject::connect(renderer.get(), &TrackRenderer::renderProgress, [this] {
            if (log.constLast() != QLatin1String("progress"))
                log.append(QStringLiteral("progress"));
        });
        QObject::connect(renderer.get(), &TrackRenderer::renderFailed,
                         [this](const QString &message) { log.append(message); });
    }

    /// Renders to the end, whichever it is.
    QStringList run()
    {
        QEventLoop loop;
        QObject::connect(renderer.get(), &TrackRenderer::renderFinished, &loop, &QEventLoop::quit);
        QObject::connect(renderer.get(), &TrackRenderer::renderFailed, &loop, &QEventLoop::quit);
        renderer->start();
        loop.exec();
        return log;
    }

    QTemporaryDir dir;
    QString fileName;
    std::unique_ptr<TrackRenderer> renderer;
    QStringList log;

private:
    void note(void (TrackRenderer::*signal)(), const char *name)
    {
        QObject::connect(renderer.get(), signal,
                         [this, name] { log.append(QString::fromLatin1(name)); });
    }
};

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(','));
}

} // namespace

class tst_TrackRenderer : public QObject {
    Q_OBJECT

private slots:
    void hasNoParentAndIsIdle();
    void reportsStartProgressAndEnd();
    void startsWithoutTracks();
    void rendersOffThisThread();
    void isBusyBetweenStartAndEnd();
    void isIdleWhenItTellsTheEnd();
    void answersTheResult();
    void endsItsThread_data();
    void endsItsThread();
    void reportsAFailureAndNoEnd();
    void cancels();
    void startsOnlyOnce();
    void takesNoTracksOnceStarted();
    void leavesNoFileWhenDestroyedWhileRunning();
    void isDestroyedBeforeItHearsOfTheEnd();
    void failsWithoutAThread();
    void isDestroyedUnstarted();
    void isDestroyedAtOnceAfterItsEnd();
};

void tst_TrackRenderer::hasNoParentAndIsIdle()
{
    TrackRenderer renderer(QStringLiteral("/nowhere/out.wav"));
    QVERIFY(!renderer.parent());
    QVERIFY(!renderer.isRunning());
    renderer.cancel();
}

void tst_TrackRenderer::reportsStartProgressAndEnd()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.renderer->addTrack(quarters(4), harp(), 1.0F, 0.0F);
    QCOMPARE(rendering.run(), words("started,progress,finished"));
    QVERIFY(QFile::exists(rendering.fileName));
}

void tst_TrackRenderer::startsWithoutTracks()
{
    FakeFmod fake;
    Rendering rendering;
    QCOMPARE(rendering.run(), words("started,finished"));
    QVERIFY(QFile::exists(rendering.fileName));
}

void tst_TrackRenderer::rendersOffThisThread()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.renderer->addTrack(quarters(1), harp(), 1.0F, 0.0F);
    // Only this thread's event loop delivers what the render reports.
    QThread *receivedOn = nullptr;
    QObject::connect(
        rendering.renderer.get(), &TrackRenderer::renderProgress, rendering.renderer.get(),
        [&receivedOn] { receivedOn = QThread::currentThread(); }, Qt::DirectConnection);
    rendering.run();
    QCOMPARE(receivedOn, QThread::currentThread());
}

void tst_TrackRenderer::isBusyBetweenStartAndEnd()
{
    FakeFmod fake;
    Rendering rendering;
    bool busyAtStart = false;
    QObject::connect(rendering.renderer.get(), &TrackRenderer::renderStarted,
                     [&] { busyAtStart = rendering.renderer->isRunning(); });
    rendering.run();
    QVERIFY(busyAtStart);
}

void tst_TrackRenderer::isIdleWhenItTellsTheEnd()
{
    FakeFmod fake;
    Rendering rendering;
    bool busyAtEnd = true;
    QObject::connect(rendering.renderer.get(), &TrackRenderer::renderFinished,
                     [&] { busyAtEnd = rendering.renderer->isRunning(); });
    rendering.run();
    QVERIFY(!busyAtEnd);
}

void tst_TrackRenderer::answersTheResult()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.renderer->addTrack(quarters(4), harp(), 1.0F, 0.0F);
    rendering.run();
    QCOMPARE(rendering.renderer->result().notes, quint64(4));
}

void tst_TrackRenderer::endsItsThread_data()
{
    QTest::addColumn<uint>("pitch");
    QTest::newRow("after success") << 60U;
    QTest::newRow("after a failure") << 99U;
}

void tst_TrackRenderer::endsItsThread()
{
    QFETCH(uint, pitch);
    FakeFmod fake;
    Rendering rendering;
    rendering.renderer->addTrack(quarters(1, pitch), harp(), 1.0F, 0.0F);
    rendering.run();
    QVERIFY(rendering.renderer->findChild<QThread *>()->wait(10000));
}

void tst_TrackRenderer::reportsAFailureAndNoEnd()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.renderer->addTrack(quarters(1, 99), harp(), 1.0F, 0.0F);
    QCOMPARE(rendering.run(), words("started,Invalid note index"));
    QVERIFY(!rendering.renderer->isRunning());
    QVERIFY(!QFile::exists(rendering.fileName));
    QCoreApplication::processEvents();
    QCOMPARE(rendering.log.size(), 2);
}

void tst_TrackRenderer::cancels()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.renderer->addTrack(longTrack(), harp(), 1.0F, 0.0F);
    QObject::connect(rendering.renderer.get(), &TrackRenderer::renderStarted,
                     [&] { rendering.renderer->cancel(); });
    const QStringList log = rendering.run();
    QCOMPARE(log.constLast(), QStringLiteral("The rendering was cancelled."));
    QVERIFY(!log.contains(QStringLiteral("finished")));
    QVERIFY(!QFile::exists(rendering.fileName));
}

void tst_TrackRenderer::startsOnlyOnce()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.run();
    rendering.renderer->start();
    QCoreApplication::processEvents();
    QCOMPARE(rendering.log, words("started,finished"));
    QVERIFY(!rendering.renderer->isRunning());
    QCOMPARE(fake.calls(QStringLiteral("FMOD_System_Create")).size(), 1);
}

void tst_TrackRenderer::takesNoTracksOnceStarted()
{
    FakeFmod fake;
    Rendering rendering;
    QObject::connect(rendering.renderer.get(), &TrackRenderer::renderStarted,
                     [&] { rendering.renderer->addTrack(quarters(1), harp(), 1.0F, 0.0F); });
    QCOMPARE(rendering.run(), words("started,finished"));
    QCOMPARE(rendering.renderer->result().notes, quint64(0));
}

void tst_TrackRenderer::leavesNoFileWhenDestroyedWhileRunning()
{
    FakeFmod fake;
    for (int i = 0; i < 20; ++i) {
        Rendering rendering;
        rendering.renderer->addTrack(longTrack(), harp(), 1.0F, 0.0F);
        rendering.renderer->start();
        rendering.renderer.reset();
        QVERIFY(!QFile::exists(rendering.fileName));
        QCOMPARE(fake.functions().constLast(), QStringLiteral("FMOD_System_Release"));
    }
}

void tst_TrackRenderer::isDestroyedBeforeItHearsOfTheEnd()
{
    FakeFmod fake;
    Rendering rendering;
    // Without tracks there is no step to be cancelled in: the render succeeds.
    rendering.renderer->start();
    rendering.renderer.reset();
    QVERIFY(QFile::exists(rendering.fileName));
    QCOMPARE(rendering.log, words("started"));
}

void tst_TrackRenderer::failsWithoutAThread()
{
    FakeFmod fake;
    const ThreadRefusal refusal;
    QTest::ignoreMessage(QtCriticalMsg,
                         "QThread::start: Thread creation error "
                         "(Resource temporarily unavailable)");
    Rendering rendering;
    rendering.renderer->addTrack(longTrack(), harp(), 1.0F, 0.0F);
    QCOMPARE(rendering.run(), words("started,Could not start a thread for the rendering."));
    QVERIFY(!rendering.renderer->isRunning());
    QCOMPARE(fake.calls(), QStringList());
}

void tst_TrackRenderer::isDestroyedUnstarted()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.renderer->addTrack(longTrack(), harp(), 1.0F, 0.0F);
    rendering.renderer.reset();
    QCOMPARE(fake.calls(), QStringList());
}

void tst_TrackRenderer::isDestroyedAtOnceAfterItsEnd()
{
    FakeFmod fake;
    Rendering rendering;
    rendering.run();
    rendering.renderer.reset();
    QVERIFY(QFile::exists(rendering.fileName));
}

QTEST_GUILESS_MAIN(tst_TrackRenderer)
#include "tst_TrackRenderer.moc"
