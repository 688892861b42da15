#include "model/Signals.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array<int, 3> EndingSignals = {SIGINT, SIGTERM, SIGHUP};

std::array<int, 2> wakeUpPipe = {-1, -1};

sigset_t endingSet()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : EndingSignals)
        sigaddset(&set, number);
    return set;
}

void wakeUp(int number)
{
    const int error = errno;
    const auto byte = static_cast<unsigned char>(number);
    // A full pipe already holds what will end the program.
    [[maybe_unused]] const ssize_t written = write(wakeUpPipe[1], &byte, 1);
    errno = error;
}

/// A signal that the parent had us ignore (nohup) stays ignored.
bool isIgnored(int number)
{
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

void handleWith(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    action.sa_mask = endingSet();
    for (const int number : EndingSignals) {
        if (!isIgnored(number))
            sigaction(number, &action, nullptr);
    }
}

void openIfClosed(int descriptor, int mode)
{
    if (fcntl(descriptor, F_GETFD) != -1)
        return;
    // The lowest free number is the closed one, as the streams below it are open.
    [[maybe_unused]] const int opened = open("/dev/null", mode);
}

} // namespace

SignalHold::SignalHold()
{
    const sigset_t set = endingSet();
    pthread_sigmask(SIG_BLOCK, &set, &m_previous);
}

SignalHold::~SignalHold()
{
    pthread_sigmask(SIG_SETMASK, &m_previous, nullptr);
}

SignalWatch::SignalWatch()
{
    if (pipe2(wakeUpPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw QStringLiteral("Could not watch for signals.");
    m_notifier = new QSocketNotifier(wakeUpPipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &SignalWatch::onReadable);
    handleWith(wakeUp);
}

SignalWatch::~SignalWatch()
{
    handleWith(SIG_DFL);
    m_notifier->setEnabled(false);
    for (int &end : wakeUpPipe) {
        close(end);
        end = -1;
    }
}

void SignalWatch::dieBy(int number)
{
    const sigset_t set = endingSet();
    std::signal(number, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    std::raise(number);
    std::_Exit(128 + number); // only where the signal does not end a process
}

void SignalWatch::onReadable()
{
    unsigned char number = 0;
    while (read(wakeUpPipe[0], &number, 1) == 1) {
        if (m_received == 0)
            m_received = number;
    }
    if (m_received != 0)
        emit interrupted();
}

void prepareStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // Opened for the wrong direction: using such a stream stays the error that it is.
    openIfClosed(STDIN_FILENO, O_WRONLY);
    openIfClosed(STDOUT_FILENO, O_RDONLY);
    openIfClosed(STDERR_FILENO, O_RDONLY);
}
