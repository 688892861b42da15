#include "cli/Console.h"

#include "model/FileNameCodec.h"

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <unistd.h>

namespace {

constexpr int ProgressIntervalMs = 100;

Console *logConsole = nullptr;
thread_local Console::Subject *subject = nullptr;

void waitUntilWritable(int descriptor)
{
    pollfd entry = {descriptor, POLLOUT, 0};
    poll(&entry, 1, -1);
}

/// 0, or the error number of the write that failed.
int writeAll(int descriptor, const QByteArray &bytes)
{
    const char *next = bytes.constData();
    const char *const end = next + bytes.size();
    while (next < end) {
        const ssize_t written = ::write(descriptor, next, static_cast<size_t>(end - next));
        if (written >= 0)
            next += written;
        else if (errno == EAGAIN || errno == EWOULDBLOCK)
            waitUntilWritable(descriptor);
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

} // namespace

Console::Console(int output, int error)
    : m_output(output)
    , m_error(error)
    , m_isTerminal(isatty(error) == 1)
{
}

Console::~Console()
{
    if (m_takesLog)
        qInstallMessageHandler(nullptr);
    const std::lock_guard lock(m_mutex);
    reportRepetitionsLocked();
    clearProgressLocked();
}

void Console::write(const QByteArray &bytes)
{
    const std::lock_guard lock(m_mutex);
    clearProgressLocked();
    const int error = writeAll(m_output, bytes);
    if (error == EPIPE)
        throw ClosedOutput{};
    if (error != 0)
        throw QStringLiteral("Could not write to standard output: %1")
            .arg(QString::fromLocal8Bit(std::strerror(error)));
}

void Console::message(const QString &text)
{
    const std::lock_guard lock(m_mutex);
    messageLocked(text);
}

void Console::progress(const QString &text)
{
    const std::lock_guard lock(m_mutex);
    if (!m_isTerminal
        || (m_sinceProgress.isValid() && !m_sinceProgress.hasExpired(ProgressIntervalMs)))
        return;
    m_sinceProgress.start();
    m_progressShown = true;
    writeAll(m_error, '\r' + FileNameCodec::encode(text) + "\x1b[K");
}

void Console::clearProgress()
{
    const std::lock_guard lock(m_mutex);
    clearProgressLocked();
    m_sinceProgress.invalidate();
}

void Console::takeLog()
{
    logConsole = this;
    m_takesLog = true;
    qInstallMessageHandler(logMessage);
}

Console::Subject::Subject(const QString &file)
    : m_prefix(file + QStringLiteral(": "))
{
    subject = this;
}

Console::Subject::~Subject()
{
    subject = nullptr;
}

/// One that comes again and again is kept once.
void Console::Subject::keep(const QString &text)
{
    const QString message = m_prefix + text;
    const bool isRepeated = !m_log.isEmpty() && m_log.constLast() == message;
    m_log.append(isRepeated ? m_log.constLast() : message);
}

void Console::showLog(const QStringList &log)
{
    const std::lock_guard lock(m_mutex);
    for (const QString &text : log)
        logLocked(text);
}

void Console::logMessage(QtMsgType type, const QMessageLogContext & /*context*/,
                         const QString &text)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    if (subject != nullptr)
        subject->keep(text.trimmed());
    else
        logConsole->showLog({text.trimmed()});
}

void Console::logLocked(const QString &text)
{
    if (text == m_lastLogged) {
        ++m_repetitions;
        return;
    }
    messageLocked(text);
    m_lastLogged = text;
}

void Console::reportRepetitionsLocked()
{
    const int repetitions = m_repetitions;
    m_repetitions = 0;
    m_lastLogged.clear();
    if (repetitions > 0)
        messageLocked(QStringLiteral("(the last warning came %1 more times)").arg(repetitions));
}

void Console::messageLocked(const QString &text)
{
    reportRepetitionsLocked();
    clearProgressLocked();
    writeAll(m_error, "quillmoor-cli: " + FileNameCodec::encode(text) + '\n');
}

void Console::clearProgressLocked()
{
    if (m_progressShown)
        writeAll(m_error, QByteArrayLiteral("\r\x1b[K"));
    m_progressShown = false;
}
