// Reading and writing ABC text, beside abc2midi (which reads it) and midi2abc (which writes it).
//
//     bench_abc DIRECTORY      a directory of .abc files, one tune in each
//
// All times are processor time: of this process, or of the peer as a child process.

#include "ABC/ABCGenerator.h"
#include "ABC/ABCParser.h"

#include "PeerProgram.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <cstdio>

using namespace Bench;

namespace {

constexpr int Repetitions = 10;

QList<QByteArray> readTunes(const QString &directory)
{
    QList<QByteArray> tunes;
    QDirIterator files(directory, {QStringLiteral("*.abc")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly))
            tunes << file.readAll();
    }
    return tunes;
}

QList<Track> parseTunes(const QList<QByteArray> &tunes)
{
    QList<Track> tracks;
    ABCParser parser;
    for (const QByteArray &tune : tunes) {
        try {
            tracks << parser.parse(QString::fromUtf8(tune));
        } catch (const QString &) {
            continue; // its time counts all the same
        }
    }
    return tracks;
}

/// All notes, one tune behind the other. Written as MIDI they must stay below 500 kB, where
/// abc2midi gives up.
Track joined(const QList<Track> &tracks)
{
    Track all;
    quint64 start = 0;
    for (const Track &track : tracks) {
        for (const TrackEvent &event : track.events()) {
            if (event.isNote())
                all.addEvent(
                    TrackEvent::makeNote(event.note(), start + event.time(), event.duration()));
        }
        start += track.length();
    }
    all.sortEvents();
    return all;
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

void benchReading(const QList<QByteArray> &tunes, const QString &directory)
{
    QByteArray text;
    for (int i = 0; i < Repetitions; ++i) {
        for (const QByteArray &tune : tunes)
            text += tune + "\n\n";
    }
    const double own = timed(ownSeconds, [&] {
        for (int i = 0; i < Repetitions; ++i)
            parseTunes(tunes);
    });
    const double size = text.size();
    std::printf("reading %.2f MB of tunes\n", size / 1e6);
    print("ABCParser", size, "MB/s", own, own);
    if (isMissing("abc2midi", "abcmidi"))
        return;
    write(directory + QStringLiteral("/all.abc"), text);
    const auto peer = [&](const QStringList &options) {
        return timed(childSeconds, [&] {
            run(directory, QStringLiteral("abc2midi"),
                QStringList{QStringLiteral("all.abc"), QStringLiteral("-silent")} + options);
        });
    };
    print("abc2midi, checking only", size, "MB/s", peer({QStringLiteral("-c")}), own);
    print("abc2midi, writing MIDI files", size, "MB/s", peer({}), own);
}

void benchWriting(const QList<Track> &tracks, const QString &directory)
{
    Track all = joined(tracks);
    QByteArray text;
    const double own = timed(ownSeconds, [&] {
        for (int i = 0; i < Repetitions; ++i)
            text = ABCGenerator().generate(all).toUtf8();
    });
    const double notes = Repetitions * all.noteCount();
    std::printf("\nwriting %.0f notes\n", notes);
    print("ABCGenerator", Repetitions * text.size(), "MB/s", own, own);
    print("", notes, "Mnotes/s", own, own);
    if (isMissing("midi2abc", "abcmidi") || isMissing("abc2midi", "abcmidi"))
        return;
    write(directory + QStringLiteral("/joined.abc"), text);
    run(directory, QStringLiteral("abc2midi"),
        {QStringLiteral("joined.abc"), QStringLiteral("-o"), QStringLiteral("joined.mid")});
    const double peer = timed(childSeconds, [&] {
        for (int i = 0; i < Repetitions; ++i)
            run(directory, QStringLiteral("midi2abc"),
                {QStringLiteral("joined.mid"), QStringLiteral("-o"), QStringLiteral("out.abc")});
    });
    const QFile written(directory + QStringLiteral("/out.abc"));
    print("midi2abc", static_cast<double>(Repetitions * written.size()), "MB/s", peer, own);
    print("", notes, "Mnotes/s", peer, own);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QTemporaryDir directory;
    if (arguments.size() != 2 || !directory.isValid()) {
        std::fprintf(stderr, "usage: bench_abc DIRECTORY\n");
        return 2;
    }
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
    const QList<QByteArray> tunes = readTunes(arguments.at(1));
    if (tunes.isEmpty()) {
        std::fprintf(stderr, "no tunes in there\n");
        return 1;
    }
    benchReading(tunes, directory.path());
    benchWriting(parseTunes(tunes), directory.path());
    return 0;
}
