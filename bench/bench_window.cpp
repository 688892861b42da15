// The window program as a whole. Without a table's name all are made.
//
//     bench_window [start|midi|rows]
//
// start: from the start to the first window, beside qabc, on a screen of its own.
// midi: a MIDI file of 16 channels and 100,000 notes, opened in the window.
// rows: five hundred rows; how long playing, stopping and scrolling them keep the event loop. The
// window of these two is in this process, and nobody sees it. The sound goes nowhere, in real time.

#include "ManyNotes.h"
#include "StallWatch.h"
#include "icons/Icons.h"
#include "model/Settings.h"
#include "ui/MainWindow.h"

#ifdef HAVE_XCB
#include "WindowStart.h"
#endif

#include "demo/DemoGame.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QScrollArea>
#include <QScrollBar>
#include <QTemporaryDir>

#include <malloc.h>

#include <cstdio>

using Bench::StallWatch;

namespace {

constexpr int MidiNotes = 100000;
constexpr int Rows = 500;
constexpr int Measures = 64;
constexpr double LimitMs = 100;

QString write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw QStringLiteral("Could not write %1").arg(path);
    return path;
}

double residentBytes()
{
    malloc_trim(0); // what is free again is nobody's
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * 4096;
}

/// The window over the demo game, seen in so far as it is drawn.
class Stage {
public:
    explicit Stage(const QString &game)
        : m_window(QDir(game))
    {
        m_window.resize(1200, 800);
        m_window.show();
        StallWatch().untilIdle();
    }

    MainWindow &window() { return m_window; }
    void trigger(const char *action) { child<QAction>(action)->trigger(); }
    QScrollBar *bar() { return child<QScrollArea>("scrTrackArea")->verticalScrollBar(); }

private:
    template <typename Child> Child *child(const char *name)
    {
        auto *const found = m_window.findChild<Child *>(QLatin1String(name));
        if (found == nullptr)
            throw QStringLiteral("The window has no %1").arg(QLatin1String(name));
        return found;
    }

    MainWindow m_window;
};

void benchMidi(const QString &game, const QString &home)
{
    Stage stage(game);
    const QString path = write(home + QLatin1String("/many.mid"), midiFile(manyNotes(MidiNotes)));
    const double before = residentBytes();
    StallWatch watch;
    watch.take([&] { stage.window().openFiles({path}); });
    const double read = watch.sum();
    watch.untilIdle();
    std::printf("a MIDI file of 16 channels and %d notes\n", MidiNotes);
    std::printf("%-40s %8.0f ms\n", "read into rows", read);
    std::printf("%-40s %8.0f ms (%.0f ms by the wall clock)\n", "rows shown", watch.sum(),
                watch.sumByWall());
    std::printf("%-40s %8.0f ms\n", "longest stall", watch.worst());
    std::printf("%-40s %8.0f bytes\n\n", "memory of a note",
                (residentBytes() - before) / MidiNotes);
}

/// Eight notes to a measure, at 120 beats a minute.
QByteArray tune()
{
    return "X:1\nT:Many\nM:4/4\nL:1/8\nQ:1/4=120\nK:C\n"
        + QByteArray("CDEFGABc|cBAGFEDC|\n").repeated(Measures / 2);
}

void report(const char *what, const StallWatch &watch)
{
    std::printf("%-40s %8.1f ms %8.1f ms %8.1f ms%s\n", what, watch.worst(), watch.worstByWall(),
                watch.sum(), watch.worst() > LimitMs ? "   over the limit" : "");
}

/// The work, and what the event loop has to do for so long after it.
template <typename Work> void gesture(const char *what, double milliseconds, Work work)
{
    StallWatch watch;
    watch.take(work);
    watch.forMilliseconds(milliseconds);
    report(what, watch);
}

/// From the top to the bottom, in steps such as a turn of the wheel makes, and back at once.
void scroll(Stage &stage, const char *what)
{
    StallWatch watch;
    const int end = stage.bar()->maximum();
    for (int position = 0; position < end; position += 180) {
        watch.take([&] {
            stage.bar()->setValue(position);
            QCoreApplication::processEvents();
        });
    }
    watch.take([&] {
        stage.bar()->setValue(0);
        QCoreApplication::processEvents();
    });
    watch.forMilliseconds(300);
    report(what, watch);
}

void openRows(Stage &stage, const QString &path)
{
    QStringList paths;
    for (int row = 0; row < Rows; ++row)
        paths.append(path);
    StallWatch watch;
    watch.take([&] { stage.window().openFiles(paths); });
    watch.untilIdle();
    std::printf("%-40s %8.1f ms %8.1f ms %8.1f ms\n", "opening them, at once", watch.worst(),
                watch.worstByWall(), watch.sum());
}

void benchRows(const QString &game, const QString &home)
{
    Stage stage(game);
    std::printf("%d rows of %d notes; the limit is %.0f ms of the processor\n", Rows, Measures * 8,
                LimitMs);
    std::printf("%-40s %11s %11s %11s\n", "", "stall", "wall clock", "in all");
    openRows(stage, write(home + QLatin1String("/many.abc"), tune()));
    scroll(stage, "scrolling");
    gesture("playing, the first second", 1000, [&] { stage.trigger("actionPlay"); });
    gesture("the next five", 5000, [] {});
    scroll(stage, "scrolling while they play");
    gesture("playing again meanwhile", 1000, [&] { stage.trigger("actionPlay"); });
    gesture("stopping", 1000, [&] { stage.trigger("actionStop"); });
    gesture("selecting all", 500, [&] { stage.trigger("actionSelect_All"); });
    gesture("muting the selected", 500, [&] { stage.trigger("actionMute_Selected"); });
    gesture("selecting none", 500, [&] { stage.trigger("actionDeselect_All"); });
    gesture("playing them muted", 1000, [&] { stage.trigger("actionPlay"); });
    gesture("removing all while they play", 1000, [&] { stage.window().onClearTracks(); });
}

void makeHome(const QString &home)
{
    for (const char *const name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
        qputenv(name, QFile::encodeName(home));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QUILLMOOR_UPDATE_HOST", "127.0.0.1:1"); // where nothing listens
    qputenv("SDL_AUDIODRIVER", "dummy");
    qputenv("QUILLMOOR_SOUND", "builtin");
}

void run(const QString &table, const QString &home)
{
    const QString game = home + QLatin1String("/game");
    DemoGame().write(game);
#ifdef HAVE_XCB
    if (table.isEmpty() || table == QLatin1String("start"))
        benchStart(game);
#else
    std::printf("start is absent: it takes Debian package libxcb1-dev and a build with tests\n");
#endif
    if (table.isEmpty() || table == QLatin1String("midi"))
        benchMidi(game, home);
    if (table.isEmpty() || table == QLatin1String("rows"))
        benchRows(game, home);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    makeHome(home.path());
    const QApplication application(argc, argv);
    QCoreApplication::setOrganizationDomain(QStringLiteral("bench.example"));
    QCoreApplication::setApplicationName(QStringLiteral("Bench"));
    Settings::registerFormat();
    Icons::load();
    try {
        run(QCoreApplication::arguments().value(1), home.path());
    } catch (const QString &message) {
        std::fprintf(stderr, "bench_window: %s\n", qPrintable(message));
        return 1;
    }
    return 0;
}
