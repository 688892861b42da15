// Reading a setting that is stored and one that is not, beside what it is made of: the same value
// out of a plain QSettings by its key, and a look into a hash.

#include "model/Settings.h"

#include <QColor>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

namespace {

constexpr int Rounds = 15;
constexpr int ReadsPerRound = 100000;
constexpr double LimitMicroseconds = 2.0;

/// The median of the rounds, in microseconds for one read.
template <typename Read> double measure(const char *what, Read read)
{
    using Clock = std::chrono::steady_clock;
    std::array<double, Rounds> times{};
    int valid = 0;
    for (double &time : times) {
        const auto start = Clock::now();
        for (int i = 0; i < ReadsPerRound; ++i)
            valid += read().isValid();
        time =
            std::chrono::duration<double, std::micro>(Clock::now() - start).count() / ReadsPerRound;
    }
    if (valid != Rounds * ReadsPerRound)
        throw QStringLiteral("not the value that was asked for");
    std::sort(times.begin(), times.end());
    std::printf("%-44s %8.3f %8.3f\n", what, times[Rounds / 2], times.back());
    return times[Rounds / 2];
}

void writeFile(const QString &directory)
{
    QDir(directory).mkdir(QStringLiteral("bench.example"));
    QFile file(directory + QStringLiteral("/bench.example/Bench.cfg"));
    if (!file.open(QIODevice::WriteOnly))
        throw QStringLiteral("cannot write");
    file.write("{\"midi/mergeChannels\": false, \"pianoroll/hScale\": 6,"
               " \"preview/noteColor\": \"#80102030\", \"dirs/abc/open\": \"/home/a/songs\"}");
}

void reportLimit(double worst)
{
    std::printf("%-44s %8.3f   (%s)\n", "limit", LimitMicroseconds,
                worst < LimitMicroseconds ? "kept" : "EXCEEDED");
}

void run()
{
    const Settings &settings = Settings::instance();
    const auto read = [&settings](Settings::Setting setting) {
        return [&settings, setting] { return settings.value(setting); };
    };
    std::printf("%-44s %8s %8s\n", "microseconds", "median", "worst");
    reportLimit(std::max({measure("value, stored boolean", read(Settings::MergeChannels)),
                          measure("value, stored integer", read(Settings::PianoRollHScale)),
                          measure("value, stored text", read(Settings::DirAbcOpen)),
                          measure("value, stored colour", read(Settings::NoteColor)),
                          measure("value, not stored", read(Settings::RealignRegular))}));

    const QSettings plain;
    measure("QSettings, stored",
            [&] { return plain.value(QStringLiteral("pianoroll/hScale"), QVariant(4)); });
    measure("QSettings, not stored",
            [&] { return plain.value(QStringLiteral("realign/regular"), QVariant(7)); });
    const QHash<int, QVariant> hash = {{Settings::PianoRollHScale, QVariant(6)}};
    measure("QHash", [&] { return hash.value(Settings::PianoRollHScale); });
}

} // namespace

int main(int argc, char **argv)
{
    try {
        const QTemporaryDir directory;
        qputenv("XDG_CONFIG_HOME", directory.path().toUtf8());
        const QCoreApplication application(argc, argv);
        QCoreApplication::setOrganizationDomain(QStringLiteral("bench.example"));
        QCoreApplication::setApplicationName(QStringLiteral("Bench"));
        writeFile(directory.path());
        run();
        return 0;
    } catch (const QString &message) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        return 1;
    }
}
