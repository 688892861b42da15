#include "Sound/BuiltinSystem.h"
#include "Sound/LiveOutput.h"
#include "Sound/LiveStatus.h"
#include "SoundFiles.h"
#include "SoundServer.h"
#include "WatchedSource.h"
#include "support/MessageCapture.h"

#include <QThread>
#include <QtTest>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr FMOD_MODE MemoryMode = FMOD_2D | FMOD_SOFTWARE | FMOD_CREATESAMPLE | FMOD_OPENMEMORY;
constexpr quint64 Second = 48000; // in frames
constexpr quint64 Step = Second / 8;
constexpr int Tracks = 4;
constexpr quint64 Distance = Step / Tracks; // from one track's click to the next one's
constexpr int Levels = 50;                  // that tell the clicks apart
constexpr int Attempts = 6;

/// The machine's output, whose pulls are watched.
class WatchedOutput final : public AudioOutput {
public:
    explicit WatchedOutput(std::unique_ptr<WatchedSource> &watch)
        : m_watch(watch)
    {
    }
    ~WatchedOutput() override { m_output.stop(); }

    bool start(AudioSource &source) override
    {
        m_watch = std::make_unique<WatchedSource>(&source);
        return m_output.start(*m_watch);
    }
    void stop() override { m_output.stop(); }
    std::string problem() const override { return m_output.problem(); }

private:
    std::unique_ptr<WatchedSource> &m_watch;
    LiveOutput m_output;
};

void nap()
{
    std::this_thread::sleep_for(milliseconds(5));
}

bool isOverloaded()
{
    double ofLastMinute = 0;
    return getloadavg(&ofLastMinute, 1) == 1 && ofLastMinute > QThread::idealThreadCount();
}

float levelOf(quint64 click)
{
    return 0.1F + 0.01F * static_cast<float>(click % Levels);
}

/// Plays clicks in time for as long as it is asked to, click n at first() + n * Distance. The
/// tracks take turns.
class ClickPlayer {
public:
    static constexpr quint64 Endless = ~quint64{0};

    ClickPlayer();
    ~ClickPlayer() { m_system->release(); }
    Q_DISABLE_COPY(ClickPlayer)

    void start() { m_first = clock() + 24000; }
    /// One pass: everything that is due within half a second.
    void play(quint64 end = Endless);
    /// Or until that seems hopeless.
    void playUntil(const std::function<bool()> &condition, quint64 end = Endless);
    quint64 clicks() const { return m_clicks; }
    quint64 clock() const;
    QString problem() const { return QString::fromStdString(LiveStatus::problem(*m_system)); }
    quint64 lateStarts() const { return LiveStatus::lateStarts(*m_system); }
    WatchedSource &watch() { return *m_watch; }
    /// Whether the machine kept this thread waiting for longer than buffers last, or has more to do
    /// than its processors can, and so may have kept the server waiting.
    bool wasBusy() const { return m_longestDelay > milliseconds(25) || isOverloaded(); }

private:
    void playClick(quint64 click);

    std::unique_ptr<WatchedSource> m_watch;
    FMOD::System *m_system = nullptr;
    FMOD::Sound *m_sound = nullptr;
    quint64 m_first = 0;
    quint64 m_clicks = 0;
    milliseconds m_longestDelay{0};
};

ClickPlayer::ClickPlayer()
{
    const auto outputs = [this] { return std::make_unique<WatchedOutput>(m_watch); };
    if (createBuiltinSystem(&m_system, 1, outputs) != FMOD_OK
        || m_system->init(2048, FMOD_INIT_NORMAL, nullptr) != FMOD_OK)
        qFatal("no system");
    const QByteArray bytes =
        SoundFiles::encode16(48000, 1, {32767, 32767, 16384, 8192, 4096, 2048, 1024});
    FMOD_CREATESOUNDEXINFO info = {};
    info.cbsize = 216;
    info.length = static_cast<unsigned int>(bytes.size());
    if (m_system->createSound(bytes.constData(), MemoryMode, &info, &m_sound) != FMOD_OK)
        qFatal("no sound");
}

quint64 ClickPlayer::clock() const
{
    unsigned int hi = 0;
    unsigned int lo = 0;
    if (m_system->getDSPClock(&hi, &lo) != FMOD_OK)
        qFatal("no clock");
    return (quint64{hi} << 32) | lo;
}

void ClickPlayer::play(quint64 end)
{
    const quint64 horizon = clock() + 24000;
    while (m_clicks < end && m_first + m_clicks * Distance < horizon)
        playClick(m_clicks++);
    if (m_system->update() != FMOD_OK)
        qFatal("update failed");
    const SteadyClock::time_point wanted = SteadyClock::now() + milliseconds(5);
    std::this_thread::sleep_until(wanted);
    const auto delay = std::chrono::duration_cast<milliseconds>(SteadyClock::now() - wanted);
    m_longestDelay = std::max(m_longestDelay, delay);
}

void ClickPlayer::playUntil(const std::function<bool()> &condition, quint64 end)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition() && timer.elapsed() < 45000)
        play(end);
}

void ClickPlayer::playClick(quint64 click)
{
    FMOD::Channel *channel = nullptr;
    const quint64 clock = m_first + click * Distance;
    if (m_system->playSound(FMOD_CHANNEL_FREE, m_sound, true, &channel) != FMOD_OK)
        qFatal("no channel");
    channel->setPan(-1);
    channel->setVolume(levelOf(click));
    channel->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, static_cast<unsigned int>(clock >> 32),
                      static_cast<unsigned int>(clock));
    channel->setPaused(false);
}

struct Onset {
    quint64 frame;
    float level;
};

std::vector<Onset> onsetsOf(const std::vector<float> &recording)
{
    constexpr std::size_t Silence = 100; // frames between two clicks, at least
    std::vector<Onset> onsets;
    std::size_t quiet = Silence;
    for (std::size_t i = 0; i + 1 < recording.size(); ++i) {
        const bool isLoud = std::abs(recording[i]) > 0.001F;
        if (isLoud && quiet >= Silence)
            onsets.push_back({i, std::max(recording[i], recording[i + 1])});
        quiet = isLoud ? 0 : quiet + 1;
    }
    return onsets;
}

/// The number of the onset's click, known but for whole rounds of levels.
int levelIndexOf(const Onset &onset)
{
    return static_cast<int>(std::lround((onset.level - 0.1F) / 0.01F));
}

/// What is wrong with the places of the onsets, of which the first is the given click.
QString misplacedOf(const std::vector<Onset> &onsets, int firstIndex)
{
    for (std::size_t i = 0; i < onsets.size(); ++i) {
        const auto place = static_cast<qint64>(i * Distance);
        const auto heard = static_cast<qint64>(onsets[i].frame - onsets.front().frame);
        const int index = (firstIndex + static_cast<int>(i)) % Levels;
        // The first one may be the one that is off.
        if (std::abs(heard - place) > 1 || levelIndexOf(onsets[i]) != index)
            return QStringLiteral("onset %1: level %2 for %3, %4 frames off")
                .arg(i)
                .arg(levelIndexOf(onsets[i]))
                .arg(index)
                .arg(heard - place);
    }
    return {};
}

bool isAtItsDefault(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL;
}

/// While it lives; the test frame has a handler of its own.
class DefaultAction {
public:
    explicit DefaultAction(int signal)
        : m_signal(signal)
        , m_old(std::signal(signal, SIG_DFL))
    {
    }
    ~DefaultAction() { std::signal(m_signal, m_old); }
    Q_DISABLE_COPY(DefaultAction)

private:
    int m_signal;
    void (*m_old)(int);
};

} // namespace

/// With a real sound server, which each test starts.
class tst_SoundServer : public QObject {
    Q_OBJECT

    /// `failure` is empty when all went well. One that a busy machine or the server itself may have
    /// caused is excused, and the trial made again.
    struct Trial {
        QString failure;
        bool isExcused = false;
    };
    static Trial recordClicks();
    static Trial killAndRestart();
    static Trial tryOften(Trial (*trial)());

private slots:
    void clicksLieAtTheirPlaces();
    void soundComesBackFromAKilledServer();
    void hangingServerHoldsNobodyUp();
    void serverThatComesLaterIsFound();
    void signalsAreLeftAlone();
};

tst_SoundServer::Trial tst_SoundServer::tryOften(Trial (*trial)())
{
    Trial result = trial();
    for (int attempt = 1; attempt < Attempts && !result.failure.isEmpty() && result.isExcused;
         ++attempt) {
        qWarning("%s", qPrintable(result.failure));
        result = trial();
    }
    return result;
}

void tst_SoundServer::clicksLieAtTheirPlaces()
{
    const Trial trial = tryOften(recordClicks);
    QVERIFY2(trial.failure.isEmpty(), qPrintable(trial.failure));
}

tst_SoundServer::Trial tst_SoundServer::recordClicks()
{
    constexpr quint64 Clicks = 30 * Second / Distance;
    SoundServer server(nap);
    if (!server.start() || !server.startRecording())
        return {server.report(), true};
    ClickPlayer player;
    player.start();
    player.playUntil([&] { return player.clock() >= 24000 + Clicks * Distance; }, Clicks);
    const quint64 end = server.recorded().size() + 2 * Second; // of which some were on the way
    player.playUntil([&] { return server.recorded().size() >= end; }, Clicks);
    const std::vector<Onset> onsets = onsetsOf(server.stopRecording());
    Trial trial = {misplacedOf(onsets, 0), player.wasBusy() || server.hasFailed()};
    if (trial.failure.isEmpty() && onsets.size() != Clicks)
        trial.failure = QStringLiteral("%1 onsets").arg(onsets.size());
    if (trial.failure.isEmpty() && player.lateStarts() > 0)
        trial.failure = QStringLiteral("%1 late starts").arg(player.lateStarts());
    return trial;
}

void tst_SoundServer::soundComesBackFromAKilledServer()
{
    const Trial trial = tryOften(killAndRestart);
    QVERIFY2(trial.failure.isEmpty(), qPrintable(trial.failure));
}

tst_SoundServer::Trial tst_SoundServer::killAndRestart()
{
    const MessageCapture capture; // a server that starts may come and go, and it be told
    std::unique_ptr<ClickPlayer> player;
    SoundServer server([&] { player != nullptr ? player->play() : nap(); });
    if (!server.start())
        return {server.report(), true};
    player = std::make_unique<ClickPlayer>();
    player->start();
    player->playUntil([&] { return player->clicks() >= 64; });

    player->watch().forgetGaps();
    server.kill();
    player->playUntil([&] { return !player->problem().isEmpty(); });
    const quint64 killed = player->clock();
    player->playUntil([&] { return player->clock() >= killed + 2 * Second; });
    const milliseconds standstill = player->watch().longestGap();
    const QStringList told = capture.texts();
    if (player->problem() != QStringLiteral("No sound server was found.")
        || told != QStringList{QStringLiteral("The sound device was lost.")})
        return {player->problem() + told.join(QLatin1Char('\n')),
                player->wasBusy() || server.hasFailed()};

    if (!server.start())
        return {server.report(), true};
    QElapsedTimer timer;
    timer.start();
    player->playUntil([&] { return player->problem().isEmpty(); });
    const qint64 comeback = timer.elapsed();
    if (!server.startRecording())
        return {server.report(), true};
    const quint64 back = player->clock();
    player->playUntil([&] { return player->clock() >= back + 4 * Second; });
    const std::vector<Onset> onsets = onsetsOf(server.stopRecording());

    const QString figures = QStringLiteral("standstill %1 ms, return after %2 ms, %3 onsets")
                                .arg(standstill.count())
                                .arg(comeback)
                                .arg(onsets.size());
    std::printf("%s\n", qPrintable(figures));
    const bool isGood = standstill < milliseconds(200) && comeback < 2000 && onsets.size() > 90;
    const QString misplaced =
        onsets.empty() ? QString() : misplacedOf(onsets, levelIndexOf(onsets.front()));
    return {isGood ? misplaced : figures + misplaced, player->wasBusy() || server.hasFailed()};
}

void tst_SoundServer::hangingServerHoldsNobodyUp()
{
    SoundServer server(nap);
    QVERIFY2(server.start(), qPrintable(server.report()));
    auto player = std::make_unique<ClickPlayer>();
    QCOMPARE(player->problem(), QString());
    player->start();
    player->playUntil([&] { return player->clicks() >= 32; });
    server.suspend();
    player->playUntil([&] { return !player->problem().isEmpty(); });
    QCOMPARE(player->problem(), QStringLiteral("The sound device has stopped."));
    const QString noAnswer = QStringLiteral("The sound server does not answer.");
    player->playUntil([&] { return player->problem() == noAnswer; });
    QCOMPARE(player->problem(), noAnswer);
    const quint64 clock = player->clock();
    player->playUntil([&] { return player->clock() > clock + 24000; });
    QVERIFY(player->clock() > clock + 24000);

    QElapsedTimer timer;
    timer.start();
    player.reset();
    QVERIFY2(timer.elapsed() < 500, qPrintable(QString::number(timer.elapsed())));

    timer.start();
    player = std::make_unique<ClickPlayer>();
    QVERIFY2(timer.elapsed() < 700, qPrintable(QString::number(timer.elapsed())));
    player->playUntil([&] { return player->problem() == noAnswer; });
    QCOMPARE(player->problem(), noAnswer);
    QVERIFY(player->clock() > 24000);

    server.resume();
    player->playUntil([&] { return player->problem().isEmpty(); });
    QCOMPARE(player->problem(), QString());
}

void tst_SoundServer::serverThatComesLaterIsFound()
{
    SoundServer server(nap);
    ClickPlayer player;
    QCOMPARE(player.problem(), QStringLiteral("No sound server was found."));
    QVERIFY2(server.start(), qPrintable(server.report()));
    player.playUntil([&] { return player.problem().isEmpty(); });
    QCOMPARE(player.problem(), QString());
}

void tst_SoundServer::signalsAreLeftAlone()
{
    const DefaultAction terminate(SIGTERM);
    const DefaultAction interrupt(SIGINT);
    SoundServer server(nap);
    QVERIFY2(server.start(), qPrintable(server.report()));
    const ClickPlayer player;
    QCOMPARE(player.problem(), QString());
    QVERIFY(isAtItsDefault(SIGTERM));
    QVERIFY(isAtItsDefault(SIGINT));
}

QTEST_APPLESS_MAIN(tst_SoundServer)
#include "tst_SoundServer.moc"
