#pragma once

#include "Timing.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <sys/resource.h>

#include <cstdio>

/// Processor time of another program, to be set beside that of this process.
namespace Bench {

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
