#include "RollStage.h"
#include "model/Settings.h"
#include "support/SettingsSandbox.h"
#include "support/WidgetDriver.h"
#include "ui/pianoroll/PianoRollKeyboard.h"
#include "ui/pianoroll/PianoRollMeasureBar.h"

#include <QScrollBar>
#include <QToolButton>
#include <QWheelEvent>
#include <QtTest>

#include <memory>

class tst_PianoRollZooming : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { m_sandbox = std::make_unique<SettingsSandbox>(); }
    void cleanupTestCase() { m_sandbox.reset(); }
    void init();
    void horizontalStepsHaveFactors_data();
    void horizontalStepsHaveFactors();
    void verticalStepsHaveFactors_data();
    void verticalStepsHaveFactors();
    void aQuarterIs96PixelsWideByDefault();
    void storedZoomsOutOfRangeAreTheNearest_data();
    void storedZoomsOutOfRangeAreTheNearest();
    void storedZoomsThatAreNoNumbersAreTheDefault_data();
    void storedZoomsThatAreNoNumbersAreTheDefault();
    void fourStepsInReachTheLast();
    void horizontalButtonsStopAtTheEnds();
    void verticalButtonsStopAtTheEnds();
    void slotsStopAtTheEnds();
    void theZoomIsStored();
    void buttonsStandAtTheEndsOfTheScrollBars();
    void zoomingKeepsTheMiddle();
    void zoomingKeepsTheSidesInStep();
    void theWheelZoomsWithControl();
    void theWheelZoomsVerticallyWithControlAndShift();
    void theWheelZoomsOverTheRulerToo();
    void smallTurnsOfTheWheelAddUp();

private:
    std::unique_ptr<SettingsSandbox> m_sandbox;
};

namespace {

void store(const QVariant &horizontal, const QVariant &vertical)
{
    Settings::instance().setValue(Settings::PianoRollHScale, horizontal);
    Settings::instance().setValue(Settings::PianoRollVScale, vertical);
}

int storedHorizontal()
{
    return Settings::instance().value(Settings::PianoRollHScale).toInt();
}

int storedVertical()
{
    return Settings::instance().value(Settings::PianoRollVScale).toInt();
}

double horizontalFactor(const RollStage &stage)
{
    return stage.view.transform().m11() * 315;
}

double verticalFactor(const RollStage &stage)
{
    return stage.view.transform().m22();
}

/// In the order in which they stand beside the scroll bar.
QList<QToolButton *> buttons(const RollStage &stage, Qt::Orientation orientation)
{
    QList<QToolButton *> found;
    const QWidget *area = orientation == Qt::Horizontal
        ? stage.view.horizontalScrollBar()->parentWidget()
        : stage.view.verticalScrollBar()->parentWidget();
    found = area->findChildren<QToolButton *>();
    std::sort(found.begin(), found.end(), [](const QWidget *one, const QWidget *other) {
        return one->x() + one->y() < other->x() + other->y();
    });
    return found;
}

QToolButton *button(const RollStage &stage, Qt::Orientation orientation, const QString &tip)
{
    for (QToolButton *each : buttons(stage, orientation))
        if (each->toolTip() == tip)
            return each;
    return nullptr;
}

const QString in = QStringLiteral("Zoom In");
const QString standard = QStringLiteral("Default Zoom");
const QString out = QStringLiteral("Zoom Out");

QString enabled(const RollStage &stage, Qt::Orientation orientation)
{
    QString text;
    for (const QString &tip : {in, standard, out})
        text += button(stage, orientation, tip)->isEnabled() ? QLatin1Char('+') : QLatin1Char('-');
    return text;
}

Track longTrack()
{
    Track track;
    track.addEvent(TrackEvent::makeNote(60, 0, 200 * quint64{120960}));
    track.sortEvents();
    return track;
}

bool turnWheel(QWidget *widget, const QPoint &place, int angle, Qt::KeyboardModifiers modifiers)
{
    QWheelEvent event(place, widget->mapToGlobal(place), {}, {0, angle}, Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    return QApplication::sendEvent(widget, &event);
}

} // namespace

void tst_PianoRollZooming::init()
{
    store(4, 2);
}

void tst_PianoRollZooming::horizontalStepsHaveFactors_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("factor");
    const QVector<double> factors{0.0625, 0.125, 0.25, 0.5, 1.0, 2.0, 4.0, 8.0, 16.0};
    for (int index = 0; index < 9; ++index)
        QTest::addRow("%d", index) << index << factors[index];
}

void tst_PianoRollZooming::horizontalStepsHaveFactors()
{
    QFETCH(int, index);
    QFETCH(double, factor);
    store(index, 2);
    const RollStage stage;
    QCOMPARE(stage.view.transform(), QTransform::fromScale(factor / 315.0, -8));
    QCOMPARE(stage.view.measureBar()->transform(), QTransform::fromScale(factor / 315.0, 1));
    QCOMPARE(stage.view.keyboard()->transform(), QTransform::fromScale(40, -8));
}

void tst_PianoRollZooming::verticalStepsHaveFactors_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("factor");
    const QVector<double> factors{-4, -6, -8, -12, -16, -24, -28};
    for (int index = 0; index < 7; ++index)
        QTest::addRow("%d", index) << index << factors[index];
}

void tst_PianoRollZooming::verticalStepsHaveFactors()
{
    QFETCH(int, index);
    QFETCH(double, factor);
    store(4, index);
    const RollStage stage;
    QCOMPARE(stage.view.transform(), QTransform::fromScale(1 / 315.0, factor));
    QCOMPARE(stage.view.measureBar()->transform(), QTransform::fromScale(1 / 315.0, 1));
    QCOMPARE(stage.view.keyboard()->transform(), QTransform::fromScale(40, factor));
}

void tst_PianoRollZooming::aQuarterIs96PixelsWideByDefault()
{
    const RollStage stage;
    QCOMPARE(stage.view.mapFromScene(QPointF(30240, 60)) - stage.view.mapFromScene(QPointF(0, 61)),
             QPoint(96, 8));
}

void tst_PianoRollZooming::storedZoomsOutOfRangeAreTheNearest_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<double>("horizontal");
    QTest::addColumn<double>("vertical");
    QTest::newRow("too large") << 9 << 16.0 << -28.0;
    QTest::newRow("far too large") << INT_MAX << 16.0 << -28.0;
    QTest::newRow("negative") << -1 << 0.0625 << -4.0;
    QTest::newRow("far too small") << INT_MIN << 0.0625 << -4.0;
}

void tst_PianoRollZooming::storedZoomsOutOfRangeAreTheNearest()
{
    QFETCH(int, stored);
    store(stored, stored);
    RollStage stage;
    QTEST(horizontalFactor(stage), "horizontal");
    QTEST(verticalFactor(stage), "vertical");
    stage.view.onHZoomDefault();
    QCOMPARE(horizontalFactor(stage), 1.0);
}

void tst_PianoRollZooming::storedZoomsThatAreNoNumbersAreTheDefault_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::newRow("text") << QVariant(QStringLiteral("wide"));
    QTest::newRow("fraction") << QVariant(6.5);
    QTest::newRow("list") << QVariant(QVariantList{1, 2});
    QTest::newRow("nothing") << QVariant();
}

void tst_PianoRollZooming::storedZoomsThatAreNoNumbersAreTheDefault()
{
    QFETCH(QVariant, stored);
    store(stored, stored);
    const RollStage stage;
    QCOMPARE(horizontalFactor(stage), 1.0);
    QCOMPARE(verticalFactor(stage), -8.0);
}

void tst_PianoRollZooming::fourStepsInReachTheLast()
{
    const RollStage stage;
    QCOMPARE(enabled(stage, Qt::Horizontal), QStringLiteral("+-+"));
    for (int i = 0; i < 4; ++i)
        WidgetDriver::click(button(stage, Qt::Horizontal, in));
    QCOMPARE(horizontalFactor(stage), 16.0);
    QCOMPARE(enabled(stage, Qt::Horizontal), QStringLiteral("-++"));
    WidgetDriver::click(button(stage, Qt::Horizontal, standard));
    QCOMPARE(horizontalFactor(stage), 1.0);
    QCOMPARE(enabled(stage, Qt::Horizontal), QStringLiteral("+-+"));
}

void tst_PianoRollZooming::horizontalButtonsStopAtTheEnds()
{
    const RollStage stage;
    for (int i = 0; i < 4; ++i)
        WidgetDriver::click(button(stage, Qt::Horizontal, out));
    QCOMPARE(horizontalFactor(stage), 0.0625);
    QCOMPARE(enabled(stage, Qt::Horizontal), QStringLiteral("++-"));
    WidgetDriver::click(button(stage, Qt::Horizontal, in));
    QCOMPARE(horizontalFactor(stage), 0.125);
    QCOMPARE(enabled(stage, Qt::Horizontal), QStringLiteral("+++"));
    QCOMPARE(verticalFactor(stage), -8.0);
}

void tst_PianoRollZooming::verticalButtonsStopAtTheEnds()
{
    const RollStage stage;
    QCOMPARE(enabled(stage, Qt::Vertical), QStringLiteral("+-+"));
    for (int i = 0; i < 4; ++i)
        WidgetDriver::click(button(stage, Qt::Vertical, in));
    QCOMPARE(verticalFactor(stage), -28.0);
    QCOMPARE(enabled(stage, Qt::Vertical), QStringLiteral("-++"));
    WidgetDriver::click(button(stage, Qt::Vertical, standard));
    QCOMPARE(verticalFactor(stage), -8.0);
    WidgetDriver::click(button(stage, Qt::Vertical, out));
    WidgetDriver::click(button(stage, Qt::Vertical, out));
    QCOMPARE(verticalFactor(stage), -4.0);
    QCOMPARE(enabled(stage, Qt::Vertical), QStringLiteral("++-"));
    QCOMPARE(horizontalFactor(stage), 1.0);
}

void tst_PianoRollZooming::slotsStopAtTheEnds()
{
    RollStage stage;
    for (int i = 0; i < 20; ++i) {
        stage.view.onHZoomIn();
        stage.view.onVZoomIn();
    }
    QCOMPARE(horizontalFactor(stage), 16.0);
    QCOMPARE(verticalFactor(stage), -28.0);
    for (int i = 0; i < 20; ++i) {
        stage.view.onHZoomOut();
        stage.view.onVZoomOut();
    }
    QCOMPARE(horizontalFactor(stage), 0.0625);
    QCOMPARE(verticalFactor(stage), -4.0);
    stage.view.onVZoomDefault();
    QCOMPARE(verticalFactor(stage), -8.0);
}

void tst_PianoRollZooming::theZoomIsStored()
{
    RollStage stage;
    stage.view.onHZoomIn();
    stage.view.onVZoomOut();
    QCOMPARE(storedHorizontal(), 5);
    QCOMPARE(storedVertical(), 1);
    stage.view.onHZoomDefault();
    stage.view.onVZoomDefault();
    QCOMPARE(storedHorizontal(), 4);
    QCOMPARE(storedVertical(), 2);
    store(99, -5);
    const RollStage next;
    QCOMPARE(storedHorizontal(), 8);
    QCOMPARE(storedVertical(), 0);
}

void tst_PianoRollZooming::buttonsStandAtTheEndsOfTheScrollBars()
{
    const RollStage stage;
    for (const Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical}) {
        const QScrollBar *bar = orientation == Qt::Horizontal ? stage.view.horizontalScrollBar()
                                                              : stage.view.verticalScrollBar();
        const QList<QToolButton *> all = buttons(stage, orientation);
        QCOMPARE(all.size(), 3);
        QCOMPARE(all[0]->toolTip(), out);
        QCOMPARE(all[1]->toolTip(), standard);
        QCOMPARE(all[2]->toolTip(), in);
        for (const QToolButton *each : all) {
            QVERIFY(each->autoRaise());
            QVERIFY(each->isVisible());
            QVERIFY(each->text().isEmpty());
            QCOMPARE(each->accessibleName(), each->toolTip());
            QVERIFY(!bar->geometry().intersects(each->geometry()));
            QCOMPARE(each->parentWidget()->rect() | each->geometry(), each->parentWidget()->rect());
        }
    }
}

void tst_PianoRollZooming::zoomingKeepsTheMiddle()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.horizontalScrollBar()->setValue(20000);
    const QPoint middle = stage.view.viewport()->rect().center();
    const QPointF before = stage.view.mapToScene(middle);
    stage.view.onHZoomIn();
    stage.view.onVZoomIn();
    const QPointF after = stage.view.mapToScene(middle);
    QVERIFY(std::abs(after.x() - before.x()) < 2 * 315);
    QVERIFY(std::abs(after.y() - before.y()) < 0.5);
}

void tst_PianoRollZooming::zoomingKeepsTheSidesInStep()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.horizontalScrollBar()->setValue(20000);
    const auto inStep = [&stage] {
        const QScrollBar *across = stage.view.measureBar()->horizontalScrollBar();
        const QScrollBar *down = stage.view.keyboard()->verticalScrollBar();
        return across->value() == stage.view.horizontalScrollBar()->value()
            && across->maximum() == stage.view.horizontalScrollBar()->maximum()
            && down->value() == stage.view.verticalScrollBar()->value()
            && down->maximum() == stage.view.verticalScrollBar()->maximum();
    };
    QVERIFY(inStep());
    for (int i = 0; i < 4; ++i) {
        stage.view.onHZoomIn();
        stage.view.onVZoomIn();
        QVERIFY(inStep());
    }
    for (int i = 0; i < 8; ++i) {
        stage.view.onHZoomOut();
        stage.view.onVZoomOut();
        QVERIFY(inStep());
    }
    stage.view.onHZoomDefault();
    QCOMPARE(stage.view.horizontalScrollBar()->maximum(), 200 * 384 - 800);
}

void tst_PianoRollZooming::theWheelZoomsWithControl()
{
    RollStage stage;
    stage.setTrack(longTrack());
    stage.view.horizontalScrollBar()->setValue(20000);
    const QPoint mouse(600, 100);
    const QPointF before = stage.view.mapToScene(mouse);
    turnWheel(stage.view.viewport(), mouse, 120, Qt::ControlModifier);
    QCOMPARE(horizontalFactor(stage), 2.0);
    QCOMPARE(verticalFactor(stage), -8.0);
    const QPointF after = stage.view.mapToScene(mouse);
    QVERIFY(std::abs(after.x() - before.x()) < 315);
    QVERIFY(std::abs(after.y() - before.y()) < 0.2);
    turnWheel(stage.view.viewport(), mouse, -240, Qt::ControlModifier);
    QCOMPARE(horizontalFactor(stage), 0.5);
    QCOMPARE(storedHorizontal(), 3);
    turnWheel(stage.view.viewport(), mouse, INT_MAX, Qt::ControlModifier);
    QCOMPARE(horizontalFactor(stage), 16.0);
}

void tst_PianoRollZooming::theWheelZoomsVerticallyWithControlAndShift()
{
    const RollStage stage;
    turnWheel(stage.view.viewport(), {600, 100}, 120, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(verticalFactor(stage), -12.0);
    QCOMPARE(horizontalFactor(stage), 1.0);
}

void tst_PianoRollZooming::theWheelZoomsOverTheRulerToo()
{
    const RollStage stage;
    turnWheel(stage.view.measureBar()->viewport(), {600, 10}, 120, Qt::ControlModifier);
    QCOMPARE(horizontalFactor(stage), 2.0);
    turnWheel(stage.view.keyboard()->viewport(), {20, 100}, 120, Qt::ControlModifier);
    QCOMPARE(horizontalFactor(stage), 4.0);
}

void tst_PianoRollZooming::smallTurnsOfTheWheelAddUp()
{
    const RollStage stage;
    for (int i = 0; i < 7; ++i)
        turnWheel(stage.view.viewport(), {600, 100}, 15, Qt::ControlModifier);
    QCOMPARE(horizontalFactor(stage), 1.0);
    turnWheel(stage.view.viewport(), {600, 100}, 15, Qt::ControlModifier);
    QCOMPARE(horizontalFactor(stage), 2.0);
}

QTEST_MAIN(tst_PianoRollZooming)
#include "tst_PianoRollZooming.moc"
