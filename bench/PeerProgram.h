#pragma once

#include "Timing.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <sys/resource.h>

#include <cstdio>
#include <ctime>

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

/// Of a process that is running or was not waited for yet.
inline double processSeconds(qint64 process)
{
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(static_cast<pid_t>(process), &clock) != 0
        || clock_gettime(clock, &time) != 0)
        return 0.0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
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

/// What FluidSynth plays with.
constexpr const char *SoundFont = "/usr/share/sounds/sf2/TimGM6mb.sf2";

/// Says what of it is absent, too.
inline bool hasFluidsynth()
{
    if (isMissing("fluidsynth", "fluidsynth"))
        return false;
    if (QFile::exists(QLatin1String(SoundFont)))
        return true;
    std::printf("%-34s absent (Debian package timgm6mb-soundfont)\n", SoundFont);
    return false;
}

/// A line of results; `reference` is the time that counts as 1.
inline void print(const char *name, double amount, const char *unit, double time, double reference)
{
    std::printf("%-34s %9.2f %-8s %7.1f ms %8.2f x\n", name, amount / time / 1e6, unit, time * 1e3,
                time / reference);
}

} // namespace Bench
