#include "cli/Tunes.h"

#include "ABC/ABCFile.h"
#include "MIDI/MidiFile.h"
#include "cli/Console.h"
#include "cli/Files.h"
#include "cli/Parallel.h"
#include "model/MessageLog.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr const char *NoMergeOption = "--no-merge-channels";
constexpr const char *NoRealignOption = "--no-auto-realign";
constexpr const char *NoBendOption = "--no-pitch-bend";

const QLatin1String StandardInput("-");

const QByteArray MidiStart = QByteArrayLiteral("MThd");

void openStream(QFile &file, const QString &path)
{
    const QIODevice::OpenMode mode = QIODevice::ReadOnly | QIODevice::Unbuffered;
    if (path != StandardInput)
        file.setFileName(path);
    if (!(path == StandardInput ? file.open(stdin, mode) : file.open(mode)))
        throw QStringLiteral("Could not open file.");
}

/// Without taking any byte away. A pipe may bring them one by one.
bool startsAsMidi(QFile &file)
{
    QByteArray start;
    int seen = -1;
    while (start.size() < MidiStart.size() && start.size() > seen) {
        seen = start.size();
        start = file.peek(MidiStart.size());
    }
    return start == MidiStart;
}

Tunes::Music readStream(const QString &path, const MidiOptions &options)
{
    QFile file;
    openStream(file, path);
    if (startsAsMidi(file))
        return {readMidi(file, options), true};
    return {{readABC(file)}, false};
}

Tunes::Music readFile(const QString &path, const MidiOptions &options)
{
    if (path.isEmpty()) // which Qt would add a warning of its own to
        throw QStringLiteral("Could not open file.");
    switch (Tunes::kind(path)) {
    case Tunes::Kind::Abc:
        return {{loadABCFile(path)}, false};
    case Tunes::Kind::Midi:
        return {loadMidiFile(path, options), true};
    case Tunes::Kind::Stream:
        break;
    }
    return readStream(path, options);
}

/// What is to be said of a file.
struct Report {
    QStringList log;
    std::optional<QString> error;
};

Report report(const QString &file, const std::function<void()> &work)
{
    const Console::Subject subject(file);
    std::optional<QString> error;
    try {
        work();
    } catch (const QString &message) {
        error = message;
    }
    return {subject.log(), error};
}

void showProgress(const QString &activity, int number, int count, Console &console)
{
    if (number < count)
        console.progress(QStringLiteral("%1 %2 of %3")
                             .arg(activity, QString::number(number + 1), QString::number(count)));
}

bool isReadableDirectory(const QFileInfo &info)
{
    return info.isReadable() && info.isExecutable();
}

} // namespace

QVector<Option> Tunes::options()
{
    return {
        {NoMergeOption, nullptr, "MIDI: a track for each channel of each chunk."},
        {NoRealignOption, nullptr, "MIDI: leave the notes' times as they are."},
        {NoBendOption, nullptr, "MIDI: ignore pitch bends."},
    };
}

MidiOptions Tunes::midiOptions(const OptionValues &options)
{
    MidiOptions result = MidiOptions::defaults();
    result.mergeChannels = result.mergeChannels && !options.has(NoMergeOption);
    result.autoRealign = result.autoRealign && !options.has(NoRealignOption);
    result.pitchBend = result.pitchBend && !options.has(NoBendOption);
    return result;
}

Tunes::Kind Tunes::kind(const QString &path)
{
    // To look into a pipe would take its first bytes away.
    if (path == StandardInput || Files::isSpecial(path))
        return Kind::Stream;
    return isMidiFile(path) ? Kind::Midi : Kind::Abc;
}

Tunes::Music Tunes::read(const QString &path, const MidiOptions &options)
{
    Music music = readFile(path, options);
    if (music.tracks.isEmpty())
        MessageLog::warning("cli/Tunes", Q_FUNC_INFO, QStringLiteral("There are no notes in it."));
    return music;
}

void Tunes::forEach(const QStringList &files, const MidiOptions &options, const QString &activity,
                    const Make &make, const Take &take, Console &console)
{
    if (files.count(StandardInput) > 1)
        throw UsageError{QStringLiteral("Standard input (-) can be read only once.")};
    std::vector<Report> reports(static_cast<size_t>(files.size()));
    const auto work = [&](int number) {
        const QString &file = files.at(number);
        reports.at(static_cast<size_t>(number)) =
            report(file, [&] { make(number, read(file, options)); });
    };
    const auto takeOne = [&](int number) {
        const Report report = std::move(reports.at(static_cast<size_t>(number)));
        console.showLog(report.log);
        take(number, report.error);
        showProgress(activity, number + 1, files.size(), console);
    };
    showProgress(activity, 0, files.size(), console);
    Parallel::inOrder(files.size(), Parallel::threadCount(), work, takeOne);
    console.clearProgress();
}

Tunes::Found Tunes::midiFilesBelow(const QString &directory)
{
    Found found;
    if (!isReadableDirectory(QFileInfo(directory)))
        found.unreadable.append(directory);
    QDirIterator walk(directory, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString path = walk.next();
        const QFileInfo info = walk.fileInfo();
        if (!info.isDir() && kind(path) == Kind::Midi)
            found.files.append(path);
        else if (info.isDir() && !info.isSymLink() && !isReadableDirectory(info))
            found.unreadable.append(path);
    }
    std::sort(found.files.begin(), found.files.end());
    std::sort(found.unreadable.begin(), found.unreadable.end());
    return found;
}

QString Tunes::stem(const QString &path)
{
    if (path == StandardInput)
        return QStringLiteral("stdin");
    const QFileInfo info(path);
    const QString stem = info.completeBaseName();
    return stem.isEmpty() ? info.fileName() : stem; // ".abc" is all name
}
