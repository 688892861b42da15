#include "support/ProcessRun.h"

#include <QDir>
#include <QFile>

#include <csignal>

namespace {

constexpr int TimeLimitMs = 280000; // the demo game, with sanitizers

void writeInput(QProcess &process, const QByteArray &input)
{
    process.write(input);
    process.closeWriteChannel();
}

} // namespace

ProcessRun::ProcessRun(const QString &program, const QStringList &arguments)
    : m_program(program)
    , m_arguments(arguments)
    , m_environment(QProcessEnvironment::systemEnvironment())
{
    for (const char *const name : {"LC_ALL", "LANGUAGE", "DISPLAY", "WAYLAND_DISPLAY",
                                   "QUILLMOOR_GAME", "QT_QPA_PLATFORM", "XDG_RUNTIME_DIR"})
        m_environment.remove(QString::fromLatin1(name));
    environment("LANG", QStringLiteral("C"));
    environment("HOME", QStringLiteral("/nonexistent"));
}

ProcessRun &ProcessRun::environment(const char *name, const QString &value)
{
    m_environment.insert(QString::fromLatin1(name), value);
    return *this;
}

ProcessRun &ProcessRun::workingDirectory(const QString &directory)
{
    m_process.setWorkingDirectory(directory);
    return *this;
}

ProcessRun &ProcessRun::input(const QByteArray &bytes)
{
    m_input = bytes;
    return *this;
}

ProcessRun &ProcessRun::keepInputOpen()
{
    m_keepsInputOpen = true;
    return *this;
}

ProcessRun &ProcessRun::inChild(const std::function<void()> &setup)
{
    m_process.setup = setup;
    return *this;
}

ProcessRun::Outcome ProcessRun::outcome()
{
    start();
    return finish();
}

QProcess &ProcessRun::start()
{
    m_process.setProcessEnvironment(m_environment);
    m_process.start(m_program, m_arguments);
    m_process.waitForStarted();
    if (!m_keepsInputOpen)
        writeInput(m_process, m_input);
    return m_process;
}

ProcessRun::Outcome ProcessRun::finish()
{
    Outcome outcome;
    m_process.waitForFinished(TimeLimitMs);
    outcome.output = m_process.readAllStandardOutput();
    outcome.errors = m_process.readAllStandardError();
    // For a process ended by a signal, exitCode() is the signal's number.
    const bool crashed = m_process.exitStatus() == QProcess::CrashExit;
    outcome.status = m_process.exitCode() + (crashed ? 128 : 0);
    return outcome;
}

QByteArray fileContents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("cannot be read");
}

void makeFile(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("Could not make a file for the test.");
}

QStringList listing(const QString &directory)
{
    return QDir(directory).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QStringList args(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *const each : list)
        result.append(QString::fromUtf8(each));
    return result;
}
