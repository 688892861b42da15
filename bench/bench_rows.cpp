// The rows of the main window: five hundred of them, and the strip of a track with 200,000 notes,
// painted whole and by the column that the play position leaves. Run it with
// QT_QPA_PLATFORM=offscreen.
#include "Quillmoor/InstrumentSetModel.h"
#include "Quillmoor/QuillmoorInstrumentSet.h"
#include "Timing.h"
#include "icons/Icons.h"
#include "ui/tracks/TrackVisualizationWidget.h"
#include "ui/tracks/TrackWidget.h"

#include <QApplication>
#include <QFile>
#include <QImage>
#include <QScrollArea>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int RowCount = 500;
constexpr int DenseNotes = 200000;
constexpr int Instruments = 60;

void report(const char *what, double value, const char *unit)
{
    std::printf("%-52s %10.3f %s\n", what, value, unit);
}

/// In milliseconds.
template <typename Work> double spent(Work work)
{
    const double start = Bench::ownSeconds();
    work();
    return (Bench::ownSeconds() - start) * 1000;
}

double residentKilobytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * 4;
}

Track track(int notes)
{
    Track track;
    for (int i = 0; i < notes; ++i) {
        const auto time = static_cast<quint64>(i) * 5040;
        const auto pitch = static_cast<quint32>(30 + i * 37 % 60);
        const quint64 duration = i % 100 == 0 ? 1000000 : 7560;
        track.addEvent(TrackEvent::makeNote(pitch, time, duration));
    }
    track.sortEvents();
    return track;
}

/// A scrolled list such as the main window's.
class List {
public:
    explicit List(InstrumentSetModel *model)
        : m_model(model)
        , m_content(new QWidget)
        , m_layout(new QVBoxLayout(m_content))
    {
        m_layout->addStretch();
        m_area.setWidget(m_content);
        m_area.setWidgetResizable(true);
        m_area.resize(900, 600);
        m_area.show();
        QApplication::processEvents();
    }

    void add(int rows, const Track &track)
    {
        m_content->hide();
        for (int i = 0; i < rows; ++i) {
            m_rows.append(new TrackWidget(QStringLiteral("T%1").arg(i), track, m_model, m_content));
            m_layout->insertWidget(i, m_rows.last());
            m_rows.last()->setMaxLength(track.length());
        }
    }

    void show()
    {
        m_content->show();
        QApplication::processEvents();
    }

    template <typename Change> void forEach(Change change)
    {
        std::for_each(m_rows.begin(), m_rows.end(), change);
        QApplication::processEvents();
    }

    /// By a little less than the height of a row.
    void scroll(int step)
    {
        m_area.verticalScrollBar()->setValue(step * 61);
        QApplication::processEvents();
    }

private:
    InstrumentSetModel *m_model;
    QScrollArea m_area;
    QWidget *m_content;
    QVBoxLayout *m_layout;
    QVector<TrackWidget *> m_rows;
};

void benchList(InstrumentSetModel *model)
{
    const Track song = track(1000);
    List list(model);
    const double before = residentKilobytes();
    report("constructing 500 rows", spent([&] { list.add(RowCount, song); }), "ms");
    report("showing them", spent([&] { list.show(); }), "ms");
    report("memory of a row", (residentKilobytes() - before) / RowCount, "KB");
    double worst = 0;
    for (int step = 1; step < 100; ++step)
        worst = std::max(worst, spent([&] { list.scroll(step); }));
    report("slowest of 99 steps of scrolling", worst, "ms");
    report("selecting them all",
           spent([&] { list.forEach([](TrackWidget *row) { row->setSelected(true); }); }), "ms");
    report("muting them all",
           spent([&] { list.forEach([](TrackWidget *row) { row->setMuted(true, true); }); }), "ms");
    list.forEach([](TrackWidget *row) { row->setPlaying(true); });
    worst = 0;
    for (quint64 i = 1; i < 100; ++i)
        worst = std::max(
            worst, spent([&] {
                list.forEach([&](TrackWidget *row) { row->setPosition(song.length() / 100 * i); });
            }));
    report("slowest of 99 moves of all play positions", worst, "ms");
}

double painting(TrackVisualizationWidget &strip, QImage &image, const QRect &part, int times)
{
    return 1000 / times * Bench::timed(Bench::ownSeconds, [&] {
               for (int i = 0; i < times; ++i)
                   strip.render(&image, part.topLeft(), part);
           });
}

void benchStrip()
{
    const Track dense = track(DenseNotes);
    TrackVisualizationWidget strip(nullptr);
    strip.resize(1200, 66);
    strip.setMaxLength(dense.length());
    const double before = residentKilobytes();
    report("giving 200,000 notes to a strip", spent([&] { strip.setTrack(dense); }), "ms");
    report("memory of a note there", (residentKilobytes() - before) * 1024 / DenseNotes, "bytes");
    QImage image(strip.size(), QImage::Format_RGB32);
    report("painting them all", painting(strip, image, strip.rect(), 1), "ms");
    report("painting one column of 1200", painting(strip, image, QRect(600, 0, 1, 66), 100), "ms");
    report("painting the rows that scrolling by 20 uncovers",
           painting(strip, image, QRect(0, 46, 1200, 20), 1), "ms");
    const Track small = track(1000);
    strip.setTrack(small);
    strip.setMaxLength(small.length());
    report("painting 1,000 notes", painting(strip, image, strip.rect(), 10), "ms");
    strip.setTrack(Track());
    report("painting none", painting(strip, image, strip.rect(), 10), "ms");
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path()));
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Bench"));
    Icons::load();
    QuillmoorInstrumentSet set(QDir(home.path()), false);
    for (int i = 0; i < Instruments; ++i)
        set.add(QStringLiteral("Instrument %1").arg(i), Instrument(), QIcon());
    InstrumentSetModel model(&set, nullptr);
    benchStrip();
    benchList(&model);
    return 0;
}
