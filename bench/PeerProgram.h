#pragma once

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

/// Processor time of this process beside that of another program.
namespace Bench {

constexpr int Rounds = 5;

inline double ownSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

inline double seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Of all child processes that have ended.
inline double childSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The least time of some rounds, in seconds.
template <typename Clock, typename Work> double timed(Clock clock, Work work)
{
    double best = 1e9;
    for (int round = 0; round < Rounds; ++round) {
        const double start = clock();
        work();
        best = std::min(best, clock() - start);
    }
    return best;
}

inline void run(const QString &directory, const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(directory);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    process.waitForFinished(-1);
}

/// Says so, too.
inline bool isMissing(const char *program, const char *package)
{
    if (!QStandardPaths::findExecutable(QLatin1String(program)).isEmpty())
        return false;
    std::printf("%-34s absent (Debian package %s)\n", program, package);
    return true;
}

/// A line of results; `reference` is the time that counts as 1.
inline void print(const char *name, double amount, const char *unit, double time, double reference)
{
    std::printf("%-34s %9.2f %-8s %7.1f ms %8.2f x\n", name, amount / time / 1e6, unit, time * 1e3,
                time / reference);
}

} // namespace Bench
