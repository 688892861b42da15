#include "WindowStart.h"

#include "PeerProgram.h"
#include "Screen.h"
#include "support/VirtualScreen.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <vector>

namespace {

constexpr int Starts = 11;
constexpr int PatienceMs = 60000;

struct Program {
    const char *name;
    QString path;
    QStringList arguments;
    std::vector<double> milliseconds;
    std::vector<double> processorMs;
    std::vector<double> kilobytes;
};

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// What the process has for itself and its share of what it has with others.
double proportionalKilobytes(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/smaps_rollup").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = file.readAll();
    return text.mid(text.indexOf("\nPss:") + 5).simplified().split(' ').first().toDouble();
}

/// The time from before the process is made until its window can be seen.
bool waitForWindow(const Screen &screen, Program &program, QProcess &process)
{
    QElapsedTimer timer;
    timer.start();
    process.start(program.path, program.arguments);
    while (!screen.shows(process.processId())) {
        if (timer.elapsed() > PatienceMs)
            return false;
        QThread::usleep(500);
    }
    program.milliseconds.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    program.processorMs.push_back(Bench::processSeconds(process.processId()) * 1e3);
    return true;
}

void watchOnce(const Screen &screen, const QProcessEnvironment &environment, Program &program)
{
    ScopedProcess process;
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (waitForWindow(screen, program, process)) {
        QThread::sleep(1);
        program.kilobytes.push_back(proportionalKilobytes(process.processId()));
    }
}

void startOnce(const Screen &screen, const QProcessEnvironment &environment, Program &program)
{
    watchOnce(screen, environment, program);
    while (!screen.isEmpty())
        QThread::msleep(1);
}

void print(const Program &program, const Program &reference)
{
    const double time = median(program.milliseconds);
    std::printf("%-24s %7.0f ms (%.0f to %.0f) %6.2f x %9.0f ms of the processor %7.1f MB\n",
                program.name, time,
                *std::min_element(program.milliseconds.begin(), program.milliseconds.end()),
                *std::max_element(program.milliseconds.begin(), program.milliseconds.end()),
                time / median(reference.milliseconds), median(program.processorMs),
                median(program.kilobytes) / 1024);
}

QProcessEnvironment quiet(QProcessEnvironment environment)
{
    // Nothing listens there, as if the network were off.
    environment.insert(QStringLiteral("QUILLMOOR_UPDATE_HOST"), QStringLiteral("127.0.0.1:1"));
    return environment;
}

std::vector<Program> programs(const QString &game)
{
    std::vector<Program> result{{"quillmoor-composer",
                                 QStringLiteral(QUILLMOOR_PROGRAM),
                                 {QStringLiteral("--game"), game},
                                 {},
                                 {},
                                 {}}};
    if (!Bench::isMissing("qabc", "qabc"))
        result.push_back({"qabc", QStringLiteral("qabc"), {}, {}, {}, {}});
    return result;
}

} // namespace

/// Without the first round, whose files may have to come from the disk.
void benchStart(const QString &game)
{
    if (Bench::isMissing("Xvfb", "xvfb") || Bench::isMissing("openbox", "openbox"))
        return;
    const QTemporaryDir home;
    const Screen screen;
    const QProcessEnvironment environment = quiet(screen.environment(home.path()));
    std::vector<Program> all = programs(game);
    std::vector<Program> unused = all;
    for (Program &program : unused)
        startOnce(screen, environment, program);
    for (int round = 0; round < Starts; ++round) {
        for (Program &program : all)
            startOnce(screen, environment, program);
    }
    std::printf("start to the first window, median of %d\n", Starts);
    for (const Program &program : all)
        print(program, all.front());
}
