#include "RollStage.h"
#include "model/Settings.h"
#include "support/SettingsSandbox.h"
#include "ui/pianoroll/PianoRollKeyboard.h"
#include "ui/pianoroll/PianoRollMeasureBar.h"

#include <QPaintEvent>
#include <QScreen>
#include <QScrollBar>
#include <QtTest>

#include <memory>

class tst_PianoRollView : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { m_sandbox = std::make_unique<SettingsSandbox>(); }
    void cleanupTestCase() { m_sandbox.reset(); }
    void cleanup() { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }
    void sidesStandInTheMargins_data();
    void sidesStandInTheMargins();
    void theCornerIsDarkWithTwoBorders();
    void itIsSetUpAsAScrolledPicture();
    void theGridFollowsTheTracksMeasure();
    void notesLieOnTheirRows();
    void draggingPans();
    void keyboardAndGridScrollTogether();
    void keyboardAndGridShareTheirRange();
    void rulerAndGridScrollTogether();
    void theRulerHasTheGridsRange();
    void resizingKeepsTheSidesInStep();
    void theLineIsSeenWhilePlaying();
    void theLineIsWhereThePositionIs_data();
    void theLineIsWhereThePositionIs();
    void theLineIsPaintedAlone();
    void theLineSurvivesScrolling();
    void aPressedNoteIsPaintedAlone();
    void hidingAndShowingKeepsThePlace();
    void aPositionOutsideIsBroughtIntoView();
    void aPositionInSightDoesNotScroll();
    void aPositionBeyondAllEndsIsBounded();
    void theFirstNotesAreShownInTheMiddle();
    void notesAfterAnEmptyTrackAreShownInTheMiddle();
    void laterTracksDoNotMoveTheView();
    void aViewNeedsNoScene();
    void unusualTracksAreShown_data();
    void unusualTracksAreShown();
    void manyNotesAppearByThemselves();

private:
    std::unique_ptr<SettingsSandbox> m_sandbox;
};

namespace {

QColor gray(int value)
{
    return {value, value, value};
}

QColor colorAt(RollStage &stage, qreal ticks, qreal pitch)
{
    return QColor(stage.at(ticks, pitch));
}

Track longTrack()
{
    Track track;
    track.addEvent(TrackEvent::makeNote(60, 0, 200 * quint64{120960}));
    track.sortEvents();
    return track;
}

/// What has been painted of a widget, in device pixels.
class PaintWatch : public QObject {
public:
    explicit PaintWatch(QWidget *widget)
    {
        QApplication::processEvents();
        widget->installEventFilter(this);
    }
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            painted += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
    QRegion painted;
};

/// As it is on the screen, not painted anew.
QImage shown(RollStage &stage)
{
    QApplication::processEvents();
    const QPoint corner = stage.view.viewport()->mapTo(&stage.view, {0, 0});
    return stage.view.screen()
        ->grabWindow(stage.view.winId())
        .toImage()
        .copy(QRect(corner, stage.view.viewport()->size()))
        .convertToFormat(QImage::Format_RGB32);
}

QImage paintedAnew(RollStage &stage)
{
    return stage.view.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

void tst_PianoRollView::sidesStandInTheMargins_data()
{
    QTest::addColumn<Qt::LayoutDirection>("desktop");
    QTest::newRow("left to right") << Qt::LeftToRight;
    QTest::newRow("right to left") << Qt::RightToLeft;
}

void tst_PianoRollView::sidesStandInTheMargins()
{
    QFETCH(Qt::LayoutDirection, desktop);
    QGuiApplication::setLayoutDirection(desktop);
    RollStage stage;
    for (const QSize &size : {QSize(800, 600), QSize(300, 200)}) {
        stage.view.resize(size);
        const QRect grid = stage.view.viewport()->geometry();
        const int edge = stage.view.frameWidth();
        QCOMPARE(grid.topLeft(), QPoint(40 + edge, 20 + edge));
        QCOMPARE(stage.view.keyboard()->geometry(), QRect(edge, 20 + edge, 40, grid.height()));
        QCOMPARE(stage.view.measureBar()->geometry(), QRect(40 + edge, edge, grid.width(), 20));
    }
}

void tst_PianoRollView::theCornerIsDarkWithTwoBorders()
{
    RollStage stage;
    const int edge = stage.view.frameWidth();
    const QImage image = stage.view.grab().toImage().copy(edge, edge, 40, 20);
    QCOMPARE(image.pixelColor(0, 0), QColor(0x40, 0x40, 0x40));
    QCOMPARE(image.pixelColor(38, 18), QColor(0x40, 0x40, 0x40));
    QCOMPARE(image.pixelColor(39, 0), QColor(Qt::black));
    QCOMPARE(image.pixelColor(0, 19), QColor(Qt::black));
}

void tst_PianoRollView::itIsSetUpAsAScrolledPicture()
{
    const RollStage stage;
    QCOMPARE(stage.view.alignment(), Qt::AlignTop | Qt::AlignLeft);
    QCOMPARE(stage.view.cacheMode(), QGraphicsView::CacheBackground);
    QVERIFY(stage.view.optimizationFlags().testFlag(QGraphicsView::DontAdjustForAntialiasing));
    QCOMPARE(stage.view.horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
    QCOMPARE(stage.view.verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
    QCOMPARE(stage.view.dragMode(), QGraphicsView::ScrollHandDrag);
}

void tst_PianoRollView::theGridFollowsTheTracksMeasure()
{
    RollStage stage;
    QCOMPARE(colorAt(stage, 15000, 71.5), gray(64));
    QCOMPARE(colorAt(stage, 120960, 71.5), gray(32));
    QCOMPARE(colorAt(stage, 30240, 71.5), gray(48));
    Track track;
    track.setMeasure(90720, 6);
    stage.setTrack(track);
    QCOMPARE(colorAt(stage, 90720, 71.5), gray(32));
    QCOMPARE(colorAt(stage, 15120, 71.5), gray(48));
    QCOMPARE(colorAt(stage, 120960, 71.5), gray(48));
    QCOMPARE(colorAt(stage, 90720 + 10000, 71.5), gray(70));
    QCOMPARE(colorAt(stage, 90720 + 10000, 70.5), gray(62));
}

void tst_PianoRollView::notesLieOnTheirRows()
{
    RollStage stage;
    stage.setTrack(trackOf({60, 62}));
    QCOMPARE(colorAt(stage, 0, 60.5), QColor(Qt::black));
    QCOMPARE(colorAt(stage, 30240, 60.5), QColor(Qt::black));
    QCOMPARE(colorAt(stage, 15000, 61), QColor(Qt::black));
    QCOMPARE(colorAt(stage, 15000, 60), QColor(Qt::black));
    const QColor low = colorAt(stage, 15000, 60.125);
    const QColor high = colorAt(stage, 15000, 60.875);
    QVERIFY(low.blue() > 200 && high.blue() > 200);
    QVERIFY(high.red() > low.red());
    QVERIFY(colorAt(stage, 45000, 62.5).blue() > 200);
    QCOMPARE(colorAt(stage, 45000, 60.5), gray(64));
}

void tst_PianoRollView::draggingPans()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.horizontalScrollBar()->setValue(1000);
    const int down = stage.view.verticalScrollBar()->value();
    QWidget *grid = stage.view.viewport();
    QTest::mousePress(grid, Qt::LeftButton, {}, {400, 200});
    QMouseEvent move(QEvent::MouseMove, QPointF(300, 190), Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(grid, &move);
    QTest::mouseRelease(grid, Qt::LeftButton, {}, {300, 190});
    QCOMPARE(stage.view.horizontalScrollBar()->value(), 1100);
    QCOMPARE(stage.view.verticalScrollBar()->value(), down + 10);
}

void tst_PianoRollView::keyboardAndGridScrollTogether()
{
    RollStage stage;
    QScrollBar *grid = stage.view.verticalScrollBar();
    QScrollBar *keys = stage.view.keyboard()->verticalScrollBar();
    QCOMPARE(keys->value(), grid->value());
    grid->setValue(grid->minimum() + 33);
    QCOMPARE(keys->value(), grid->minimum() + 33);
    keys->setValue(grid->minimum() + 77);
    QCOMPARE(grid->value(), grid->minimum() + 77);
    QCOMPARE(stage.view.keyboard()->mapFromScene(0, 60).y(), stage.view.mapFromScene(0, 60).y());
}

void tst_PianoRollView::keyboardAndGridShareTheirRange()
{
    RollStage stage;
    QScrollBar *grid = stage.view.verticalScrollBar();
    QScrollBar *keys = stage.view.keyboard()->verticalScrollBar();
    QCOMPARE(grid->maximum() - grid->minimum(), 89 * 8 - 400);
    QCOMPARE(keys->minimum(), grid->minimum());
    QCOMPARE(keys->maximum(), grid->maximum());
    grid->setRange(-500, -100);
    QCOMPARE(keys->minimum(), -500);
    QCOMPARE(keys->maximum(), -100);
    keys->setRange(-400, -200);
    QCOMPARE(grid->minimum(), -400);
    QCOMPARE(grid->maximum(), -200);
}

void tst_PianoRollView::rulerAndGridScrollTogether()
{
    RollStage stage;
    stage.setTrack(longTrack());
    QScrollBar *grid = stage.view.horizontalScrollBar();
    QScrollBar *ruler = stage.view.measureBar()->horizontalScrollBar();
    grid->setValue(5000);
    QCOMPARE(ruler->value(), 5000);
    ruler->setValue(6000);
    QCOMPARE(grid->value(), 6000);
    QCOMPARE(stage.view.measureBar()->mapFromScene(1.9e6, 0).x(),
             stage.view.mapFromScene(1.9e6, 60).x());
}

/// Though its own scene is a measure long.
void tst_PianoRollView::theRulerHasTheGridsRange()
{
    RollStage stage;
    stage.setTrack(longTrack());
    QScrollBar *grid = stage.view.horizontalScrollBar();
    QScrollBar *ruler = stage.view.measureBar()->horizontalScrollBar();
    QCOMPARE(grid->maximum(), 200 * 384 - 800);
    QCOMPARE(ruler->maximum(), 200 * 384 - 800);
    grid->setValue(70000);
    stage.view.measureBar()->resize(300, 20);
    QCOMPARE(ruler->maximum(), 200 * 384 - 800);
    QCOMPARE(grid->maximum(), 200 * 384 - 800);
    QCOMPARE(grid->value(), 70000);
}

void tst_PianoRollView::resizingKeepsTheSidesInStep()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.horizontalScrollBar()->setValue(40000);
    for (const QSize &size : {QSize(500, 300), QSize(1200, 1000), QSize(200, 100)}) {
        stage.view.resize(size);
        QApplication::processEvents();
        QCOMPARE(stage.view.horizontalScrollBar()->value(), 40000);
        QCOMPARE(stage.view.measureBar()->horizontalScrollBar()->value(), 40000);
        for (const qreal pitch : {30.0, 60.0, 100.0})
            QCOMPARE(stage.view.keyboard()->mapFromScene(0, pitch).y(),
                     stage.view.mapFromScene(0, pitch).y());
    }
}

void tst_PianoRollView::theLineIsSeenWhilePlaying()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.setPosition(15120);
    QCOMPARE(colorAt(stage, 15120, 71.5), gray(64));
    stage.view.setPlaying(true);
    QCOMPARE(colorAt(stage, 15120, 71.5), gray(192));
    QCOMPARE(colorAt(stage, 15120, 60.5), gray(192)); // over the note
    QCOMPARE(colorAt(stage, 15120 - 315, 71.5), gray(64));
    QCOMPARE(colorAt(stage, 15120 + 315, 71.5), gray(64));
    QCOMPARE(QColor(stage.pixel({48, 0})), gray(192));
    QCOMPARE(QColor(stage.pixel({48, 399})), gray(192));
    stage.view.setPosition(45360);
    QCOMPARE(colorAt(stage, 15120, 71.5), gray(64));
    QCOMPARE(colorAt(stage, 45360, 71.5), gray(192));
    stage.view.setPlaying(false);
    QCOMPARE(colorAt(stage, 45360, 71.5), gray(64));
}

void tst_PianoRollView::theLineIsWhereThePositionIs_data()
{
    QTest::addColumn<quint64>("position");
    QTest::addColumn<int>("column");
    QTest::newRow("start") << quint64{0} << 0;
    QTest::newRow("left of a pixel") << quint64{315 * 100} << 100;
    QTest::newRow("right of it") << quint64{315 * 101 - 1} << 100;
    QTest::newRow("the next one") << quint64{315 * 101} << 101;
    QTest::newRow("last pixel") << quint64{315 * 799} << 799;
    QTest::newRow("beside it") << quint64{315 * 800} << -1;
    QTest::newRow("far away") << std::numeric_limits<quint64>::max() << -1;
}

void tst_PianoRollView::theLineIsWhereThePositionIs()
{
    QFETCH(quint64, position);
    QFETCH(int, column);
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.setPlaying(true);
    stage.view.setPosition(position);
    const QImage image = shown(stage);
    for (int x = 0; x < image.width(); ++x)
        QCOMPARE(image.pixelColor(x, 100) == gray(192), x == column);
}

void tst_PianoRollView::theLineIsPaintedAlone()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.setPlaying(true);
    stage.view.setPosition(31500);
    PaintWatch watch(stage.view.viewport());
    stage.view.setPosition(31501); // the same pixel
    QApplication::processEvents();
    QVERIFY(watch.painted.isEmpty());
    stage.view.setPosition(63000);
    QApplication::processEvents();
    QCOMPARE(watch.painted, QRegion(99, 0, 3, 400) + QRegion(199, 0, 3, 400));
    QCOMPARE(shown(stage), paintedAnew(stage));
    watch.painted = {};
    stage.view.setPlaying(false);
    stage.view.setPosition(0);
    QApplication::processEvents();
    QCOMPARE(watch.painted, QRegion(199, 0, 3, 400));
    QCOMPARE(shown(stage), paintedAnew(stage));
}

void tst_PianoRollView::theLineSurvivesScrolling()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.setPlaying(true);
    for (int step = 0; step < 60; ++step) {
        stage.view.setPosition(315 * 900 + static_cast<quint64>(step) * 777);
        stage.view.horizontalScrollBar()->setValue(step * 7);
        if (step % 3 == 0)
            QCOMPARE(shown(stage), paintedAnew(stage));
    }
}

void tst_PianoRollView::aPressedNoteIsPaintedAlone()
{
    RollStage stage;
    stage.setTrack(trackOf({60, 62, 64}));
    const QImage before = shown(stage);
    PaintWatch watch(stage.view.viewport());
    stage.scene.pressNote(1);
    QApplication::processEvents();
    QVERIFY(shown(stage) != before);
    QCOMPARE(shown(stage), paintedAnew(stage));
    stage.scene.releaseNote(1);
    QCOMPARE(shown(stage), before);
    watch.painted = {};
    stage.scene.pressNote(1);
    QApplication::processEvents();
    const int top = stage.view.mapFromScene(30240, 63).y();
    QVERIFY(QRect(94, top - 2, 100, 12).contains(watch.painted.boundingRect()));
    stage.scene.releaseAll();
    QCOMPARE(shown(stage), before);
}

void tst_PianoRollView::hidingAndShowingKeepsThePlace()
{
    RollStage stage;
    stage.setTrack(longTrack());
    QApplication::processEvents();
    stage.view.horizontalScrollBar()->setValue(12345);
    stage.view.verticalScrollBar()->setValue(stage.view.verticalScrollBar()->minimum() + 7);
    for (int i = 0; i < 3; ++i) {
        stage.view.hide();
        stage.view.show();
        QApplication::processEvents();
        QCOMPARE(stage.view.horizontalScrollBar()->value(), 12345);
        QCOMPARE(stage.view.verticalScrollBar()->value(),
                 stage.view.verticalScrollBar()->minimum() + 7);
    }
}

void tst_PianoRollView::aPositionOutsideIsBroughtIntoView()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.setPosition(315 * 800);
    stage.view.showPosition();
    QCOMPARE(stage.view.horizontalScrollBar()->value(), 700);
    stage.view.setPosition(315 * 60000);
    stage.view.showPosition();
    QCOMPARE(stage.view.horizontalScrollBar()->value(), 59900);
    stage.view.setPosition(315 * 59899);
    stage.view.showPosition();
    QCOMPARE(stage.view.horizontalScrollBar()->value(), 59799);
    stage.view.setPosition(0);
    stage.view.showPosition();
    QCOMPARE(stage.view.horizontalScrollBar()->value(), 0);
}

void tst_PianoRollView::aPositionInSightDoesNotScroll()
{
    RollStage stage;
    stage.setTrack(longTrack());
    const int down = stage.view.verticalScrollBar()->value();
    stage.view.horizontalScrollBar()->setValue(1000);
    for (const quint64 column : {1000, 1500, 1799}) {
        stage.view.setPosition(column * 315);
        stage.view.showPosition();
        QCOMPARE(stage.view.horizontalScrollBar()->value(), 1000);
    }
    QCOMPARE(stage.view.verticalScrollBar()->value(), down);
}

void tst_PianoRollView::aPositionBeyondAllEndsIsBounded()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.setPosition(std::numeric_limits<quint64>::max());
    stage.view.showPosition();
    QCOMPARE(stage.view.horizontalScrollBar()->value(), 200 * 384 - 800);
    stage.view.showPosition();
    QCOMPARE(stage.view.horizontalScrollBar()->value(), 200 * 384 - 800);
}

void tst_PianoRollView::theFirstNotesAreShownInTheMiddle()
{
    PianoRollScene scene;
    PianoRollView view(&scene);
    scene.setTrack(trackOf({90, 94}));
    view.trackChanged();
    view.resize(500, 300);
    view.show();
    QApplication::processEvents();
    QVERIFY(std::abs(view.mapFromScene(0, 92.5).y() - view.viewport()->height() / 2) <= 1);
    QCOMPARE(view.horizontalScrollBar()->value(), 0);
}

void tst_PianoRollView::notesAfterAnEmptyTrackAreShownInTheMiddle()
{
    RollStage stage;
    stage.setTrack({});
    stage.view.viewport()->grab();
    stage.setTrack(trackOf({50, 54}));
    const int middle = stage.view.viewport()->height() / 2;
    QVERIFY(std::abs(stage.view.mapFromScene(0, 52.5).y() - middle) <= 1);
}

void tst_PianoRollView::laterTracksDoNotMoveTheView()
{
    RollStage stage;
    stage.setTrack(longTrack());
    QApplication::processEvents();
    stage.view.verticalScrollBar()->setValue(stage.view.verticalScrollBar()->minimum() + 5);
    stage.view.horizontalScrollBar()->setValue(5000);
    Track track = longTrack();
    track.addEvent(TrackEvent::makeNote(25, 0, 30240));
    track.sortEvents();
    stage.setTrack(track);
    QApplication::processEvents();
    stage.view.resize(900, 500);
    QCOMPARE(stage.view.verticalScrollBar()->value(),
             stage.view.verticalScrollBar()->minimum() + 5);
    QCOMPARE(stage.view.horizontalScrollBar()->value(), 5000);
}

void tst_PianoRollView::aViewNeedsNoScene()
{
    PianoRollView view(nullptr);
    view.show();
    view.trackChanged();
    view.setPlaying(true);
    view.setPosition(100);
    view.showPosition();
    view.onHZoomIn();
    view.onHZoomDefault();
    view.keyboard()->pressKey(60);
    QVERIFY(!view.grab().isNull());
}

void tst_PianoRollView::unusualTracksAreShown_data()
{
    QTest::addColumn<quint32>("measureLength");
    QTest::addColumn<quint32>("beats");
    QTest::addColumn<quint64>("time");
    QTest::addColumn<quint64>("duration");
    constexpr quint64 far = quint64{1} << 53;
    constexpr quint64 most = std::numeric_limits<quint64>::max();
    QTest::newRow("no beats") << 120960u << 0u << quint64{0} << quint64{30240};
    QTest::newRow("no measure") << 0u << 4u << quint64{0} << quint64{30240};
    QTest::newRow("nothing") << 0u << 0u << quint64{0} << quint64{0};
    QTest::newRow("more beats than ticks") << 100u << 4000000000u << quint64{0} << far;
    QTest::newRow("measure of a tick") << 1u << 1u << quint64{0} << far;
    QTest::newRow("measure of a tick, later") << 1u << 1u << far << quint64{0};
    QTest::newRow("endless") << 4294967295u << 1u << quint64{0} << most;
    QTest::newRow("endlessly late") << 1u << 1u << most << most;
}

void tst_PianoRollView::unusualTracksAreShown()
{
    QFETCH(quint32, measureLength);
    QFETCH(quint32, beats);
    QFETCH(quint64, time);
    QFETCH(quint64, duration);
    Track track;
    track.addEvent(TrackEvent::makeNote(60, time, duration));
    track.setMeasure(measureLength, beats);
    track.sortEvents();
    RollStage stage;
    stage.setTrack(track);
    stage.view.setPlaying(true);
    stage.view.setPosition(time);
    stage.scene.pressNote(0);
    for (int zoom = 0; zoom < 9; ++zoom) {
        stage.view.horizontalScrollBar()->setValue(INT_MAX);
        stage.view.showPosition();
        QVERIFY(!stage.view.grab().isNull());
        stage.view.horizontalScrollBar()->setValue(0);
        QCOMPARE(colorAt(stage, 20, 71.5).alpha(), 255);
        zoom < 4 ? stage.view.onHZoomOut() : stage.view.onHZoomIn();
    }
    stage.view.onHZoomDefault();
    stage.view.horizontalScrollBar()->setValue(0);
    QCOMPARE(QColor(stage.pixel({200, stage.view.mapFromScene(0, 71.5).y()})), gray(64));
}

void tst_PianoRollView::manyNotesAppearByThemselves()
{
    Track track;
    for (quint64 i = 0; i < 25000; ++i)
        track.addEvent(TrackEvent::makeNote(60, i * 3150, 3150));
    track.sortEvents();
    RollStage stage;
    stage.setTrack(track);
    stage.view.horizontalScrollBar()->setValue(stage.view.horizontalScrollBar()->maximum());
    QVERIFY(colorAt(stage, 24999 * 3150 + 1500, 60.5).blue() < 80);
    QTRY_VERIFY(QColor(shown(stage).pixel(795, stage.view.mapFromScene(0, 60.5).y())).blue() > 200);
    QCOMPARE(shown(stage), paintedAnew(stage));
}

QTEST_MAIN(tst_PianoRollView)
#include "tst_PianoRollView.moc"
