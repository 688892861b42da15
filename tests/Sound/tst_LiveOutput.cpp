#include "Sound/LiveOutput.h"

#include "WatchedSource.h"
#include "support/MessageCapture.h"

#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QtTest>

#include <ctime>
#include <functional>

#include <unistd.h>

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::uint64_t Second = 48000; // in frames

const char *const NoDevice = "No sound device was found.";

/// What is written to standard error during the work, also by foreign libraries.
QByteArray errorOutputOf(const std::function<void()> &work)
{
    QTemporaryFile file;
    if (!file.open())
        qFatal("no temporary file");
    const int old = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    work();
    dup2(old, STDERR_FILENO);
    close(old);
    file.seek(0);
    return file.readAll();
}

qint64 millisecondsFor(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return timer.elapsed();
}

} // namespace

/// Without a sound server and a sound card, wherever it runs: neither is to be found.
class tst_LiveOutput : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void timeGoesOnWithoutADevice_data();
    void timeGoesOnWithoutADevice();
    void brokenDeviceIsTold();
    void deviceThatKeepsNoTimeIsLeft();
    void outageIsLoggedOnce();
    void foreignLibrariesAreQuiet_data();
    void foreignLibrariesAreQuiet();
    void startsAgain();
    void stopsAtAnyMoment();
    void stopsWithoutAStart();
    void severalPlayAtOnce();
    void costsLittle();

private:
    void setAlsaConfig(const QByteArray &text);

    QTemporaryDir m_folder;
    int m_configs = 0;
};

void tst_LiveOutput::initTestCase()
{
    QVERIFY(m_folder.isValid());
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path()));
    for (const char *const name : {"PULSE_SERVER", "PULSE_RUNTIME_PATH", "DISPLAY"})
        qunsetenv(name);
}

void tst_LiveOutput::init()
{
    qunsetenv("SDL_AUDIODRIVER");
    setAlsaConfig(QByteArray());
}

/// Which is all that ALSA knows then. In a file of its own: ALSA notices no change within a second.
void tst_LiveOutput::setAlsaConfig(const QByteArray &text)
{
    QFile file(m_folder.filePath(QStringLiteral("asound%1.conf").arg(++m_configs)));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
    qputenv("ALSA_CONFIG_PATH", QFile::encodeName(file.fileName()));
}

void tst_LiveOutput::timeGoesOnWithoutADevice_data()
{
    QTest::addColumn<QByteArray>("driver");
    QTest::addColumn<QString>("problem");
    const QString noDevice = QString::fromLatin1(NoDevice);
    QTest::newRow("no server and no card") << QByteArray() << noDevice;
    QTest::newRow("dummy driver") << QByteArray("dummy") << noDevice;
    QTest::newRow("disk driver") << QByteArray("disk") << noDevice;
    QTest::newRow("sound server") << QByteArray("pulseaudio") << "No sound server was found.";
    QTest::newRow("unknown driver") << QByteArray("gramophone") << "No sound server was found.";
}

void tst_LiveOutput::timeGoesOnWithoutADevice()
{
    QFETCH(const QByteArray, driver);
    QFETCH(const QString, problem);
    if (!driver.isEmpty())
        qputenv("SDL_AUDIODRIVER", driver);
    WatchedSource source;
    LiveOutput output;
    QVERIFY(output.problem().empty());
    QVERIFY(output.start(source));
    QCOMPARE(QString::fromStdString(output.problem()), problem);
    const SteadyClock::time_point start = SteadyClock::now();
    QTRY_VERIFY(source.frames() >= 24000);
    QVERIFY(SteadyClock::now() - start > milliseconds(450));
    QCOMPARE(QString::fromStdString(output.problem()), problem);
    output.stop();
    QVERIFY(!source.wasCrowded());
    QVERIFY(!QFile::exists(QStringLiteral("sdlaudio.raw"))); // the disk driver's
}

void tst_LiveOutput::brokenDeviceIsTold()
{
    setAlsaConfig("pcm.default { type hw card 0 hint { show on description \"x\" } }\n"
                  "pcm.\"default:x\" { type hw card 0 hint { show on description \"Broken\" } }\n");
    WatchedSource source;
    LiveOutput output;
    QVERIFY(output.start(source));
    QTRY_COMPARE(QString::fromStdString(output.problem()),
                 QStringLiteral("The sound device could not be opened: ALSA: Couldn't open audio "
                                "device: No such file or directory"));
    QTRY_VERIFY(source.frames() > 0);
}

void tst_LiveOutput::deviceThatKeepsNoTimeIsLeft()
{
    setAlsaConfig("pcm.default { type null hint { show on description \"x\" } }\n"
                  "pcm.\"default:x\" { type null hint { show on description \"Void\" } }\n");
    WatchedSource source;
    LiveOutput output;
    QVERIFY(output.start(source));
    QTRY_COMPARE(QString::fromStdString(output.problem()),
                 QStringLiteral("The sound device does not keep time."));
    const std::uint64_t head = source.frames();
    QVERIFY(head < 2 * Second);
    const SteadyClock::time_point start = SteadyClock::now();
    QTRY_COMPARE(QString::fromStdString(output.problem()), QString::fromLatin1(NoDevice));
    QTRY_VERIFY(source.frames() >= head + 24000);
    QVERIFY(SteadyClock::now() - start > milliseconds(450));
}

void tst_LiveOutput::outageIsLoggedOnce()
{
    MessageCapture capture;
    WatchedSource source;
    LiveOutput output;
    QVERIFY(output.start(source));
    QTRY_VERIFY(source.frames() >= 17 * Second / 10); // it has looked again a few times
    output.stop();
    QCOMPARE(capture.texts(), QStringList{QString::fromLatin1(NoDevice)});
    const MessageCapture::Message message = capture.messages().at(0);
    QCOMPARE(message.type, QtWarningMsg);
    QCOMPARE(message.file, QStringLiteral("Sound/LiveOutput"));
    QCOMPARE(message.function, QStringLiteral("void LiveOutput::logOutages()"));
}

void tst_LiveOutput::foreignLibrariesAreQuiet_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::newRow("no card") << QByteArray();
    QTest::newRow("no such card") << QByteArray(
        "pcm.default { type hw card 0 hint { show on description \"x\" } }\n"
        "pcm.\"default:x\" { type hw card 0 hint { show on description \"x\" } }\n");
    QTest::newRow("damaged") << QByteArray("pcm.default { type");
}

void tst_LiveOutput::foreignLibrariesAreQuiet()
{
    QFETCH(const QByteArray, config);
    setAlsaConfig(config);
    const MessageCapture capture; // what we say ourselves
    const QByteArray written = errorOutputOf([] {
        WatchedSource source;
        LiveOutput output;
        QVERIFY(output.start(source));
        QTRY_VERIFY(source.frames() >= 12 * Second / 10);
    });
    QCOMPARE(written, QByteArray());
    QCOMPARE(capture.texts().size(), 1);
}

void tst_LiveOutput::startsAgain()
{
    LiveOutput output;
    for (int i = 0; i < 3; ++i) {
        WatchedSource source;
        QVERIFY(output.start(source));
        QTRY_VERIFY(source.frames() > 0);
        output.stop();
        const std::uint64_t frames = source.frames();
        QTest::qWait(30);
        QCOMPARE(source.frames(), frames);
    }
    QVERIFY(output.problem().empty());
}

void tst_LiveOutput::stopsAtAnyMoment()
{
    for (int i = 0; i < 14; ++i) {
        LiveOutput output;
        WatchedSource source; // goes first
        QVERIFY(output.start(source));
        QTest::qWait(i * 47);
        const qint64 time = millisecondsFor([&] { output.stop(); });
        QVERIFY2(time < 500, qPrintable(QString::number(time)));
    }
}

void tst_LiveOutput::stopsWithoutAStart()
{
    LiveOutput output;
    output.stop();
    WatchedSource source;
    QVERIFY(output.start(source));
    output.stop();
    output.stop();
}

void tst_LiveOutput::severalPlayAtOnce()
{
    WatchedSource sources[3];
    LiveOutput outputs[3];
    for (int i = 0; i < 3; ++i)
        QVERIFY(outputs[i].start(sources[i]));
    for (const WatchedSource &source : sources)
        QTRY_VERIFY(source.frames() >= 48000);
    outputs[1].stop();
    const std::uint64_t frames = sources[2].frames();
    QTRY_VERIFY(sources[2].frames() > frames);
    for (LiveOutput &output : outputs)
        output.stop();
}

void tst_LiveOutput::costsLittle()
{
    WatchedSource source;
    LiveOutput output;
    QVERIFY(output.start(source));
    const std::clock_t before = std::clock();
    const std::uint64_t frames = source.frames();
    QTRY_VERIFY(source.frames() >= frames + 2 * Second);
    const auto share = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC / 2;
    QVERIFY2(share < 0.1, qPrintable(QString::number(share)));
}

QTEST_APPLESS_MAIN(tst_LiveOutput)
#include "tst_LiveOutput.moc"
