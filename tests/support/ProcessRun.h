#pragma once

#include "model/FileNameCodec.h"

#include <QByteArray>
#include <QMap>
#include <QProcess>
#include <QStringList>

#include <QtTest>

#include <functional>

/// Runs a built program under LANG=C, without a home directory, a display or a game.
class ProcessRun {
public:
    struct Outcome {
        int status = -1; ///< the exit status, or 128 + the number of the signal that ended it
        QByteArray output;
        QByteArray errors;
    };

    ProcessRun(const QString &program, const QStringList &arguments);

    ProcessRun &environment(const char *name, const QString &value);
    ProcessRun &workingDirectory(const QString &directory);
    ProcessRun &input(const QByteArray &bytes);
    /// For a test that writes the input itself, through what start() answers.
    ProcessRun &keepInputOpen();
    /// Runs in the child just before the program: for what is to become of its descriptors.
    ProcessRun &inChild(const std::function<void()> &setup);

    /// Runs it to its end.
    Outcome outcome();

    /// For the tests that meddle with it while it runs.
    QProcess &start();
    Outcome finish();

private:
    class Process : public QProcess {
    public:
        std::function<void()> setup;

    protected:
        void setupChildProcess() override
        {
            if (setup)
                setup();
        }
    };

    Process m_process;
    QString m_program;
    QStringList m_arguments;
    QProcessEnvironment m_environment;
    QByteArray m_input;
    bool m_keepsInputOpen = false;
};

/// The bytes of a file.
QByteArray fileContents(const QString &path);
void makeFile(const QString &path, const QByteArray &contents);

/// What a directory holds, hidden files too, sorted.
QStringList listing(const QString &directory);

/// Short for literal lists of arguments.
QStringList args(std::initializer_list<const char *> list);

#define COMPARE_OUTCOME(actual, expectedStatus, expectedOutput, expectedErrors)                    \
    do {                                                                                           \
        const ProcessRun::Outcome outcome_ = (actual);                                             \
        QCOMPARE(outcome_.errors, QByteArray(expectedErrors));                                     \
        QCOMPARE(outcome_.output, QByteArray(expectedOutput));                                     \
        QCOMPARE(outcome_.status, expectedStatus);                                                 \
    } while (false)

/// File names in any encoding reach the program only when the test speaks of them as it does.
#define PROGRAM_TEST_MAIN(Class)                                                                   \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        FileNameCodec::install();                                                                  \
        QCoreApplication application(argc, argv);                                                  \
        Class test;                                                                                \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
