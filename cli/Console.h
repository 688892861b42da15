#pragma once

#include "cli/JsonWriter.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <mutex>

/// Nobody reads our standard output any more: thrown by Console, ends the program quietly with
/// status 1.
struct ClosedOutput { };

/// The program's standard output and standard error.
///
/// What goes to standard output is written at once, never kept in a buffer, so that the reader
/// of a pipe gets each line when it is made. Both may be used from any thread.
class Console {
public:
    /// File descriptors, which stay open.
    Console(int output, int error);
    ~Console();
    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;

    /// One line of JSON on standard output. This and write() throw ClosedOutput when the pipe is
    /// closed, and a QString with the reason when the output fails otherwise.
    void line(const JsonWriter &json) { write(json.text() + '\n'); }
    void write(const QByteArray &bytes);

    /// "quillmoor-cli: " and the text, as a line on standard error.
    void message(const QString &text);

    /// Shows how far long work has come, on a terminal only: a line that the next one replaces
    /// and any other output removes. Changes are shown at most ten times a second.
    void progress(const QString &text);
    /// The work is done: the progress of the next is shown at once.
    void clearProgress();

    /// Sends the messages of Qt's log through message() from now on, until this object goes. One
    /// that comes again and again is shown once and then counted.
    void takeLog();

    /// For its lifetime, the messages that the log has on this thread are about this file: they
    /// say so, and wait here for showLog(). So files may be read at the same time, and what there
    /// is to say of each is still shown in the files' order.
    class Subject {
    public:
        explicit Subject(const QString &file);
        ~Subject();
        Subject(const Subject &) = delete;
        Subject &operator=(const Subject &) = delete;

        const QStringList &log() const { return m_log; }

    private:
        friend class Console;
        void keep(const QString &text);

        const QString m_prefix;
        QStringList m_log;
    };

    /// Shows the messages that a Subject has kept.
    void showLog(const QStringList &log);

private:
    static void logMessage(QtMsgType type, const QMessageLogContext &context, const QString &text);
    void clearProgressLocked();
    void messageLocked(const QString &text);
    void logLocked(const QString &text);
    void reportRepetitionsLocked();

    const int m_output;
    const int m_error;
    const bool m_isTerminal;
    bool m_progressShown = false;
    bool m_takesLog = false;
    QString m_lastLogged;
    int m_repetitions = 0;
    QElapsedTimer m_sinceProgress;
    std::mutex m_mutex;
};
