// Reading MIDI files into tracks, beside midicsv, which reads them into text.
//
//     bench_midi DIRECTORY     a directory of .mid and .kar files
//
// All times are processor time: of this process, or of the peer as a child process. midicsv is
// started once for each file; what its start alone takes is measured and taken off.

#include "MIDI/MidiFile.h"

#include "ManyNotes.h"
#include "PeerProgram.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

using namespace Bench;

namespace {

constexpr int BigFileNotes = 1000000;
constexpr int SmallFileRepetitions = 10;

struct Files {
    QStringList paths;
    int repetitions = 1;

    double bytes() const
    {
        double sum = 0;
        for (const QString &path : paths)
            sum += static_cast<double>(QFile(path).size());
        return sum * repetitions;
    }
};

Files filesIn(const QString &directory)
{
    Files files{{}, SmallFileRepetitions};
    QDirIterator found(directory, {QStringLiteral("*.mid"), QStringLiteral("*.kar")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (found.hasNext())
        files.paths << found.next();
    return files;
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

int import(const Files &files, const MidiOptions &options)
{
    int notes = 0;
    for (int i = 0; i < files.repetitions; ++i) {
        for (const QString &path : files.paths) {
            try {
                for (const Track &track : loadMidiFile(path, options))
                    notes += track.noteCount();
            } catch (const QString &) {
                continue; // its time counts all the same
            }
        }
    }
    return notes;
}

/// Starts midicsv for every file; or as often for `instead`.
double midicsvSeconds(const Files &files, const QString &instead = QString())
{
    return timed(childSeconds, [&] {
        for (int i = 0; i < files.repetitions; ++i) {
            for (const QString &path : files.paths)
                run(QStringLiteral("/"), QStringLiteral("midicsv"),
                    {instead.isEmpty() ? path : instead});
        }
    });
}

void bench(const char *what, const Files &files, const QString &emptyFile)
{
    const double bytes = files.bytes();
    MidiOptions options = MidiOptions::defaults();
    std::printf("%s: %d files, %.2f MB, %d notes\n", what, files.paths.size(),
                bytes / files.repetitions / 1e6, import(files, options) / files.repetitions);
    const double whole = timed(ownSeconds, [&] { import(files, options); });
    options.autoRealign = false;
    const double plain = timed(ownSeconds, [&] { import(files, options); });
    print("loadMidiFile", bytes, "MB/s", whole, whole);
    print("the same without realignment", bytes, "MB/s", plain, whole);
    if (!isMissing("midicsv", "midicsv")) {
        const double peer = midicsvSeconds(files) - midicsvSeconds(files, emptyFile);
        print("midicsv", bytes, "MB/s", peer, whole);
    }
    std::printf("\n");
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QTemporaryDir directory;
    if (arguments.size() != 2 || !directory.isValid()) {
        std::fprintf(stderr, "usage: bench_midi DIRECTORY\n");
        return 2;
    }
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
    const QString emptyFile = directory.filePath(QStringLiteral("empty.mid"));
    const QString bigFile = directory.filePath(QStringLiteral("big.mid"));
    write(emptyFile, midiFile(QByteArray()));
    write(bigFile, midiFile(manyNotes(BigFileNotes)));
    bench("files by many authors", filesIn(arguments.at(1)), emptyFile);
    bench("one big file", {{bigFile}}, emptyFile);
    return 0;
}
