#include "SoundServer.h"

#include <QDir>
#include <QElapsedTimer>

#include <algorithm>
#include <csignal>
#include <cstring>

#include <sys/prctl.h>

namespace {

constexpr int LongestStart = 20000;     // ms
constexpr int LongestRecording = 30000; // the server gives up a stalled stream after 20 s
constexpr int Starts = 3;

/// Two times 3072 frames are buffered: that is 128 ms.
const char *const PipeWireConfig = R"(context.properties = {
    default.clock.rate = 48000
    default.clock.quantum = 1024
    default.clock.min-quantum = 1024
    default.clock.max-quantum = 2048
}
)";
const char *const PulseConfig = R"(pulse.properties = {
    pulse.min.req = 3072/48000
    pulse.min.frag = 4096/48000
    pulse.min.quantum = 1024/48000
}
)";
const char *const NoHardware = R"(alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
)";
const char *const NoBluetooth = "bluez_monitor.enabled = false\n";

} // namespace

/// One that ends with this one at the latest.
class SoundServer::Process final : public QProcess {
public:
    ~Process() override
    {
        kill();
        waitForFinished();
    }

protected:
    void setupChildProcess() override { prctl(PR_SET_PDEATHSIG, SIGKILL); }
};

SoundServer::SoundServer(std::function<void()> meanwhile)
    : m_meanwhile(std::move(meanwhile))
    , m_environment(QProcessEnvironment::systemEnvironment())
{
    const QString folder = m_folder.path();
    for (const char *const name : {"PULSE_SERVER", "PULSE_RUNTIME_PATH", "PIPEWIRE_REMOTE",
                                   "PIPEWIRE_RUNTIME_DIR", "DISPLAY", "DBUS_STARTER_ADDRESS"}) {
        qunsetenv(name);
        m_environment.remove(QString::fromLatin1(name));
    }
    for (const char *const name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_STATE_HOME"})
        m_environment.insert(QString::fromLatin1(name), folder);
    m_environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"),
                         QStringLiteral("unix:path=%1/none").arg(folder));
    m_environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                         QStringLiteral("unix:path=%1/bus").arg(folder));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder));
    qputenv("SDL_AUDIODRIVER", "pulseaudio");
    writeConfig(QStringLiteral("pipewire/pipewire.conf.d/test.conf"), PipeWireConfig);
    writeConfig(QStringLiteral("pipewire/pipewire-pulse.conf.d/test.conf"), PulseConfig);
    writeConfig(QStringLiteral("wireplumber/main.lua.d/60-test.lua"), NoHardware);
    writeConfig(QStringLiteral("wireplumber/bluetooth.lua.d/60-test.lua"), NoBluetooth);
}

SoundServer::~SoundServer() = default;

bool SoundServer::comesTrue(const std::function<bool()> &condition, int patience) const
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > patience)
            return false;
        m_meanwhile();
    }
    return true;
}

void SoundServer::writeConfig(const QString &name, const QByteArray &text)
{
    const QString path = m_folder.filePath(name);
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly)
        || file.write(text) < 0)
        qFatal("no configuration");
}

std::unique_ptr<SoundServer::Process> SoundServer::run(const QString &program,
                                                       const QStringList &arguments)
{
    auto process = std::make_unique<Process>();
    process->setProcessEnvironment(m_environment);
    process->setStandardOutputFile(m_folder.filePath(program + QStringLiteral(".out")));
    process->setStandardErrorFile(m_folder.filePath(program + QStringLiteral(".err")));
    process->start(program, arguments);
    process->waitForStarted();
    return process;
}

bool SoundServer::start()
{
    for (int attempt = 0; attempt < Starts; ++attempt) {
        if (tryToStart())
            return true;
        kill();
    }
    return false;
}

bool SoundServer::tryToStart()
{
    // Server and pactl both make this directory, and the server gives up when pactl is the first.
    QDir(m_folder.path()).mkpath(QStringLiteral("pulse"));
    QFile::setPermissions(m_folder.filePath(QStringLiteral("pulse")),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QString address = m_environment.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    if (m_bus == nullptr)
        m_bus = run(QStringLiteral("dbus-daemon"),
                    {QStringLiteral("--session"), QStringLiteral("--nofork"),
                     QStringLiteral("--address=%1").arg(address)});
    if (!hasFile(QStringLiteral("bus")))
        return false;
    m_servers.push_back(run(QStringLiteral("pipewire"), {}));
    if (!hasFile(QStringLiteral("pipewire-0")))
        return false;
    m_servers.push_back(run(QStringLiteral("wireplumber"), {}));
    m_servers.push_back(run(QStringLiteral("pipewire-pulse"), {}));
    return comesTrue([this] { return isAnswering(); }, LongestStart);
}

bool SoundServer::hasFile(const QString &name) const
{
    return comesTrue([&] { return QFileInfo::exists(m_folder.filePath(name)); }, LongestStart);
}

bool SoundServer::isAnswering() const
{
    QProcess pactl;
    pactl.setProcessEnvironment(m_environment);
    pactl.start(QStringLiteral("pactl"), {QStringLiteral("info")});
    return pactl.waitForFinished()
        && pactl.readAllStandardOutput().contains("Default Sink: auto_null\n");
}

void SoundServer::kill()
{
    signalAll(SIGKILL);
    m_servers.clear();
    for (const char *const socket : {"pipewire-0", "pipewire-0.lock", "pulse/native"})
        QFile::remove(m_folder.filePath(QString::fromLatin1(socket)));
}

void SoundServer::suspend()
{
    signalAll(SIGSTOP);
}

void SoundServer::resume()
{
    signalAll(SIGCONT);
}

void SoundServer::signalAll(int signal)
{
    for (const auto &server : m_servers)
        if (server->state() == QProcess::Running)
            ::kill(static_cast<pid_t>(server->processId()), signal);
}

bool SoundServer::startRecording()
{
    m_recorder.reset();
    QFile::remove(m_folder.filePath(QStringLiteral("parec.out")));
    m_recorder = run(QStringLiteral("parec"),
                     {QStringLiteral("--verbose"), QStringLiteral("--raw"),
                      QStringLiteral("--format=float32le"), QStringLiteral("--rate=48000"),
                      QStringLiteral("--channels=2"), QStringLiteral("--latency-msec=500"),
                      QStringLiteral("--device=auto_null.monitor")});
    return comesTrue([this] { return !recorded().empty(); }, LongestRecording);
}

std::vector<float> SoundServer::recorded() const
{
    const QByteArray bytes = contentsOf(QStringLiteral("parec.out"));
    constexpr int FrameBytes = 2 * sizeof(float);
    std::vector<float> left(static_cast<std::size_t>(bytes.size() / FrameBytes));
    for (std::size_t i = 0; i < left.size(); ++i)
        std::memcpy(&left[i], bytes.constData() + i * FrameBytes, sizeof(float));
    return left;
}

std::vector<float> SoundServer::stopRecording()
{
    m_recorder->terminate();
    m_recorder->waitForFinished();
    return recorded();
}

bool SoundServer::hasFailed() const
{
    return contentsOf(QStringLiteral("parec.err")).contains("overrun")
        || contentsOf(QStringLiteral("wireplumber.err")).contains("not activated");
}

QByteArray SoundServer::contentsOf(const QString &name) const
{
    QFile file(m_folder.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString SoundServer::report() const
{
    QString text;
    for (const char *const program :
         {"dbus-daemon", "pipewire", "wireplumber", "pipewire-pulse", "parec"}) {
        const QString name = QString::fromLatin1(program);
        const QByteArray errors = contentsOf(name + QStringLiteral(".err"));
        text += QStringLiteral("%1: %2\n").arg(name, QString::fromUtf8(errors));
    }
    return text;
}
