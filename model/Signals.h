#pragma once

#include <QObject>

#include <csignal>

class QSocketNotifier;

/// What a program does about SIGINT (Ctrl-C), SIGTERM and SIGHUP.
///
/// By default they end it at once. That is right wherever no file is being written; the two
/// classes are for the places where one is, or may be.

/// Puts the signals off for its lifetime: for the moments between making a temporary file and
/// renaming it. The process must have no other thread that lets them through.
class SignalHold {
public:
    SignalHold();
    ~SignalHold();
    SignalHold(const SignalHold &) = delete;
    SignalHold &operator=(const SignalHold &) = delete;

private:
    sigset_t m_previous;
};

/// Turns the signals into a Qt signal for its lifetime, for work that an event loop can call off.
/// One at a time; lives on the thread of the event loop.
class SignalWatch : public QObject {
    Q_OBJECT

public:
    SignalWatch();
    ~SignalWatch() override;

    /// The first that came, or 0.
    int received() const { return m_received; }

    /// Ends the process by `number`, so that a shell sees how it ended (status 128 + number).
    [[noreturn]] static void dieBy(int number);

signals:
    void interrupted();

private:
    void onReadable();

    int m_received = 0;
    QSocketNotifier *m_notifier = nullptr;
};

/// Makes a write to a closed pipe, or past the limit on a file's size, an error instead of a
/// signal, and opens the standard streams that are closed, so that no file of ours is taken for
/// one of them. Call once at the start.
void prepareStandardStreams();
