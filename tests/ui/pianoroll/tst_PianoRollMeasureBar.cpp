#include "RollStage.h"
#include "support/SettingsSandbox.h"
#include "ui/pianoroll/PianoRollMeasureBar.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QtTest>

#include <memory>

class tst_PianoRollMeasureBar : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { m_sandbox = std::make_unique<SettingsSandbox>(); }
    void cleanupTestCase() { m_sandbox.reset(); }
    void everySecondMeasureIsShaded();
    void measuresBeginWithALine();
    void numbersStandFourPixelsRightOfTheLine_data();
    void numbersStandFourPixelsRightOfTheLine();
    void cleanup() { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }
    void numbersCountFromOne_data();
    void numbersCountFromOne();
    void aNumberDoesNotLeaveItsMeasure();
    void itFollowsTheTracksMeasure();
    void impossibleMeasuresAreNotShown_data();
    void impossibleMeasuresAreNotShown();
    void scrollingKeepsNumbersWhole();
    void itHasNoFrame();

private:
    std::unique_ptr<SettingsSandbox> m_sandbox;
};

namespace {

/// At the default zoom: 384 pixels a common measure.
struct BarStage : RollStage {
    BarStage() { setTrack(longTrack()); }

    static Track longTrack(quint32 measureLength = 120960)
    {
        Track track;
        track.addEvent(TrackEvent::makeNote(60, 0, 100 * quint64{120960}));
        track.sortEvents();
        track.setMeasure(measureLength, 4);
        return track;
    }

    QImage picture()
    {
        return view.measureBar()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }
    QColor at(int x, int y = 1) { return picture().pixelColor(x, y); }
};

QColor gray(int value)
{
    return {value, value, value};
}

/// The smallest rectangle of `image` within `area` that holds all that is lighter than the ground.
QRect inkIn(const QImage &image, const QRect &area)
{
    QRect ink;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (qGray(image.pixel(x, y)) > 72)
                ink |= QRect(x, y, 1, 1);
    return ink;
}

} // namespace

void tst_PianoRollMeasureBar::everySecondMeasureIsShaded()
{
    BarStage stage;
    QCOMPARE(stage.at(100), gray(64));
    QCOMPARE(stage.at(384 + 100), gray(70));
    QCOMPARE(stage.at(384 + 383), gray(70));
    QCOMPARE(stage.at(2 * 384 + 20), gray(64));
}

void tst_PianoRollMeasureBar::measuresBeginWithALine()
{
    BarStage stage;
    for (const int x : {0, 384, 768})
        for (const int y : {0, 10, 19})
            QCOMPARE(stage.at(x, y), gray(32));
    QCOMPARE(stage.at(1), gray(64));
    QCOMPARE(stage.at(385), gray(70));
}

void tst_PianoRollMeasureBar::numbersStandFourPixelsRightOfTheLine_data()
{
    QTest::addColumn<Qt::LayoutDirection>("desktop");
    QTest::newRow("left to right") << Qt::LeftToRight;
    QTest::newRow("right to left") << Qt::RightToLeft;
}

void tst_PianoRollMeasureBar::numbersStandFourPixelsRightOfTheLine()
{
    QFETCH(Qt::LayoutDirection, desktop);
    QGuiApplication::setLayoutDirection(desktop);
    BarStage stage;
    const QImage image = stage.picture();
    const QRect ink = inkIn(image, {385, 0, 300, 20});
    QVERIFY2(ink.left() >= 388 && ink.left() <= 391, QByteArray::number(ink.left()));
    QVERIFY(std::abs(ink.center().y() - 10) <= 1);
    QRgb brightest = 0;
    for (int y = ink.top(); y <= ink.bottom(); ++y)
        for (int x = ink.left(); x <= ink.right(); ++x)
            brightest = std::max(brightest, image.pixel(x, y));
    QVERIFY(qGray(brightest) > 100);
    QVERIFY(qGray(brightest) <= 128);
}

/// The number fills the same pixels as the text drawn by hand; how dark these are is the font
/// engine's affair.
void tst_PianoRollMeasureBar::numbersCountFromOne_data()
{
    QTest::addColumn<int>("measure");
    QTest::addColumn<QString>("number");
    QTest::newRow("first") << 0 << "1";
    QTest::newRow("fifth") << 4 << "5";
    QTest::newRow("ninety-first") << 90 << "91";
}

void tst_PianoRollMeasureBar::numbersCountFromOne()
{
    QFETCH(int, measure);
    QFETCH(QString, number);
    BarStage stage;
    stage.view.horizontalScrollBar()->setValue(measure * 384);
    QImage wanted(384, 20, QImage::Format_ARGB32_Premultiplied); // like what is grabbed
    wanted.fill(gray(64));
    QPainter painter(&wanted);
    painter.setFont(stage.view.measureBar()->font());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(gray(128));
    painter.drawText(QRect(4, 0, 380, 20), Qt::AlignLeft | Qt::AlignVCenter, number);
    const QRect area(2, 0, 100, 20);
    const QRect ink = inkIn(stage.picture(), area);
    const QRect wantedInk = inkIn(wanted, area);
    QVERIFY(wantedInk.adjusted(-2, -1, 2, 1).contains(ink));
    QVERIFY(ink.adjusted(-2, -1, 2, 1).contains(wantedInk));
}

void tst_PianoRollMeasureBar::aNumberDoesNotLeaveItsMeasure()
{
    BarStage stage;
    stage.view.horizontalScrollBar()->setValue(90 * 384);
    stage.setTrack(BarStage::longTrack(120960 / 40)); // 9.6 pixels and four digits
    const QImage image = stage.picture();
    for (qint64 measure = 3601; measure < 3620; ++measure) {
        const int x = static_cast<int>(static_cast<qreal>(measure) * 9.6 - 90 * 384 + 0.001);
        QCOMPARE(image.pixelColor(x, 10), gray(32));
        QVERIFY(inkIn(image, {x + 1, 0, 3, 20}).isEmpty());
        QVERIFY(!inkIn(image, {x + 4, 0, 5, 20}).isEmpty());
    }
}

void tst_PianoRollMeasureBar::itFollowsTheTracksMeasure()
{
    BarStage stage;
    stage.setTrack(BarStage::longTrack(90720));
    QCOMPARE(stage.at(288), gray(32));
    QCOMPARE(stage.at(384), gray(70));
    QCOMPARE(stage.at(288 * 2 + 100), gray(64));
    stage.view.setScene(nullptr);
    stage.view.trackChanged();
    QCOMPARE(stage.at(384), gray(32));
}

void tst_PianoRollMeasureBar::impossibleMeasuresAreNotShown_data()
{
    QTest::addColumn<quint32>("length");
    QTest::newRow("none") << 0u;
    QTest::newRow("a tick") << 1u;
    QTest::newRow("within a pixel") << 314u;
}

void tst_PianoRollMeasureBar::impossibleMeasuresAreNotShown()
{
    QFETCH(quint32, length);
    BarStage stage;
    stage.setTrack(BarStage::longTrack(length));
    QImage blank = stage.picture();
    blank.fill(gray(64));
    QCOMPARE(stage.picture(), blank);
    stage.view.horizontalScrollBar()->setValue(INT_MAX);
    QCOMPARE(stage.picture(), blank);
}

/// What is scrolled into sight is painted in strips.
void tst_PianoRollMeasureBar::scrollingKeepsNumbersWhole()
{
    BarStage stage;
    for (int x = 0; x < 500; x += 7) {
        stage.view.horizontalScrollBar()->setValue(x);
        QCoreApplication::processEvents();
    }
    QScreen *screen = stage.view.screen();
    const QImage shown = screen->grabWindow(stage.view.winId())
                             .toImage()
                             .copy(stage.view.measureBar()->geometry())
                             .convertToFormat(QImage::Format_RGB32);
    QCOMPARE(shown, stage.picture());
}

void tst_PianoRollMeasureBar::itHasNoFrame()
{
    BarStage stage;
    QCOMPARE(stage.view.measureBar()->viewport()->size(), stage.view.measureBar()->size());
    QCOMPARE(stage.view.measureBar()->scene()->sceneRect(), QRectF(0, 0, 120960, 20));
}

QTEST_MAIN(tst_PianoRollMeasureBar)
#include "tst_PianoRollMeasureBar.moc"
