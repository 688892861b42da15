// A track of 200,000 notes on the piano roll, beside as many plain rectangles in a stock view:
// how long the event loop stands still while they appear, and how many frames a second there are
// while it is scrolled and zoomed. Once with the notes as a long piece has them, once with 32 times
// as many at a time.

#include "StallWatch.h"
#include "model/Track.h"
#include "ui/pianoroll/PianoRollScene.h"
#include "ui/pianoroll/PianoRollView.h"

#include <QApplication>
#include <QGraphicsRectItem>
#include <QLinearGradient>
#include <QPen>
#include <QScrollBar>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

constexpr int NoteCount = 200000;
constexpr int Pitches = 88;
const QSize viewSize(1200, 700);
constexpr std::array<double, 9> zooms{0.0625, 0.125, 0.25, 0.5, 1, 2, 4, 8, 16};

/// Sixteenths, `chord` of them at once.
Track makeTrack(int chord)
{
    Track track;
    for (int i = 0; i < NoteCount; ++i)
        track.addEvent(TrackEvent::makeNote(21 + static_cast<quint32>(i * 7 % Pitches),
                                            static_cast<quint64>(i / chord) * 7560, 7560));
    track.sortEvents();
    return track;
}

/// What is shown, and how it is changed.
class Subject {
public:
    virtual ~Subject() = default;
    virtual QGraphicsView &view() = 0;
    virtual void setTrack(const Track &track) = 0;
    virtual void setZoom(double factor) = 0;
    virtual void pressNote(int index) = 0;
};

class Roll : public Subject {
public:
    QGraphicsView &view() override { return m_view; }
    void setTrack(const Track &track) override
    {
        m_scene.setTrack(track);
        m_view.trackChanged();
    }
    void setZoom(double factor) override
    {
        const auto wanted = std::find(zooms.begin(), zooms.end(), factor) - zooms.begin();
        for (; m_index < wanted; ++m_index)
            m_view.onHZoomIn();
        for (; m_index > wanted; --m_index)
            m_view.onHZoomOut();
    }
    void pressNote(int index) override { m_scene.pressNote(static_cast<uint>(index)); }

private:
    PianoRollScene m_scene;
    PianoRollView m_view{&m_scene};
    std::ptrdiff_t m_index = 4;
};

/// The rectangles are all added at once, as nothing else is told.
class Stock : public Subject {
public:
    Stock()
    {
        m_view.setCacheMode(QGraphicsView::CacheBackground);
        setZoom(1);
    }
    QGraphicsView &view() override { return m_view; }
    void setTrack(const Track &track) override
    {
        m_scene.clear();
        m_items.clear();
        m_scene.setSceneRect(0, 20, static_cast<qreal>(track.length()), 89);
        for (const TrackEvent &event : track.events())
            m_items << makeItem(event);
    }
    void setZoom(double factor) override
    {
        m_view.setTransform(QTransform::fromScale(factor / 315, -8));
    }
    void pressNote(int index) override { m_items[index]->setBrush(m_pressed); }

private:
    static QBrush gradient(int bottom, int top)
    {
        const QColor color(32, 96, 255);
        QLinearGradient gradient(0, 0, 0, 1);
        gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
        gradient.setColorAt(0, color.lighter(bottom));
        gradient.setColorAt(1, color.lighter(top));
        return gradient;
    }
    QGraphicsRectItem *makeItem(const TrackEvent &event)
    {
        return m_scene.addRect(static_cast<qreal>(event.time()), event.note(),
                               static_cast<qreal>(event.duration()), 1.0, QPen(Qt::black, 0),
                               m_released);
    }

    QBrush m_released = gradient(87, 115);
    QBrush m_pressed = gradient(115, 150);
    QGraphicsScene m_scene;
    QGraphicsView m_view{&m_scene};
    QVector<QGraphicsRectItem *> m_items;
};

template <typename Step> double framesPerSecond(QGraphicsView &view, int frames, Step step)
{
    const double start = Bench::ownSeconds();
    for (int frame = 0; frame < frames; ++frame) {
        step(frame);
        QApplication::processEvents();
        view.viewport()->repaint(0, 0, 1, 1); // what is still to be painted, too
    }
    return frames / (Bench::ownSeconds() - start);
}

void fill(Subject &subject, const Track &track, const char *what)
{
    const double start = Bench::ownSeconds();
    subject.setTrack(track);
    const double call = (Bench::ownSeconds() - start) * 1e3;
    Bench::StallWatch loop;
    loop.untilIdle();
    std::printf("  %-26s %8.1f ms, all done after %.0f ms, longest stall %.1f ms\n", what, call,
                call + loop.sum(), std::max(call, loop.worst()));
}

void report(const char *what, double rate)
{
    std::printf("  %-26s %8.0f frames/s\n", what, rate);
}

void move(Subject &subject)
{
    QGraphicsView &view = subject.view();
    QScrollBar *bar = view.horizontalScrollBar();
    report("scrolling by 10 pixels",
           framesPerSecond(view, 300, [bar](int frame) { bar->setValue(1000 + frame * 10); }));
    report("scrolling by a screen", framesPerSecond(view, 100, [bar](int frame) {
               bar->setValue(frame % 20 * viewSize.width());
           }));
    report("zooming", framesPerSecond(view, 64, [&subject](int frame) {
               const int step = frame % 16;
               subject.setZoom(zooms[static_cast<size_t>(step < 8 ? step : 16 - step)]);
           }));
    subject.setZoom(zooms[0]);
    report("whole repaint, zoomed out",
           framesPerSecond(view, 20, [&view](int) { view.viewport()->update(); }));
    subject.setZoom(1);
    bar->setValue(0);
    report("pressing notes",
           framesPerSecond(view, 50, [&subject](int frame) { subject.pressNote(frame); }));
}

void measure(Subject &subject, const Track &track, const char *what)
{
    std::printf("%s\n", what);
    subject.view().resize(viewSize);
    subject.view().show();
    QApplication::processEvents();
    fill(subject, track, "setTrack");
    move(subject);
    fill(subject, track, "setTrack again");
}

void compare(int chord)
{
    const Track track = makeTrack(chord);
    std::printf("%d notes in %.0f measures\n", NoteCount,
                static_cast<double>(track.length()) / track.measureLength());
    Roll roll;
    measure(roll, track, " PianoRollView");
    Stock stock;
    measure(stock, track, " stock view");
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    qputenv("XDG_RUNTIME_DIR", home.path().toUtf8());
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QCoreApplication::setOrganizationDomain(QStringLiteral("bench.example"));
    QCoreApplication::setApplicationName(QStringLiteral("Bench"));
    compare(4);
    compare(128);
    return 0;
}
