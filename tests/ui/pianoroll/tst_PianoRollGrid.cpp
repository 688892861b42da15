#include "ui/pianoroll/PianoRollGrid.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

using namespace PianoRollGrid;

class tst_PianoRollGrid : public QObject {
    Q_OBJECT

private slots:
    void rowsAreColouredByTheirKeys_data();
    void rowsAreColouredByTheirKeys();
    void linesLieBetweenRows();
    void rowsGoOnBelowZero();
    void everySecondMeasureIsShaded();
    void beatsAndMeasuresHaveLines();
    void aMeasureEndsAfterItsWholeBeats();
    void beatsWithinOnePixelAreNotShown();
    void measuresWithinOnePixelAreNotShown();
    void withoutBeatsThereAreOnlyRows_data();
    void withoutBeatsThereAreOnlyRows();
    void nothingIsDrawnFarBeyondTheScreen_data();
    void nothingIsDrawnFarBeyondTheScreen();
};

namespace {

constexpr Beats common{30240, 4};

/// 8 pixels a row, 100 ticks a pixel; the top is at `top`.
struct Canvas {
    explicit Canvas(int top = 70, qreal ticksPerPixel = 100)
        : transform(1 / ticksPerPixel, 0, 0, -8, 0, 8 * top)
    {
        image.fill(Qt::red);
    }

    void draw(const Beats &beats)
    {
        QPainter painter(&image);
        painter.setWorldTransform(transform);
        const QRectF rect = transform.inverted().mapRect(QRectF(image.rect()));
        drawRows(&painter, rect);
        drawBeats(&painter, rect, beats);
    }

    /// In the pixel that the place lies in.
    QColor at(qreal ticks, qreal pitch) const
    {
        const QPointF place = transform.map(QPointF(ticks, pitch));
        return image.pixelColor(static_cast<int>(place.x()), static_cast<int>(place.y()));
    }

    QTransform transform;
    QImage image{3000, 200, QImage::Format_RGB32};
};

QColor gray(int value)
{
    return {value, value, value};
}

} // namespace

void tst_PianoRollGrid::rowsAreColouredByTheirKeys_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<int>("shade");
    const QVector<int> shades{64, 56, 64, 56, 64, 64, 56, 64, 56, 64, 56, 64};
    for (int pitch = 48; pitch < 60; ++pitch)
        QTest::addRow("%d", pitch) << pitch << shades[pitch - 48];
}

void tst_PianoRollGrid::rowsAreColouredByTheirKeys()
{
    QFETCH(int, pitch);
    QFETCH(int, shade);
    Canvas canvas;
    canvas.draw(common);
    QCOMPARE(canvas.at(15000, pitch + 0.5), gray(shade));
    QCOMPARE(canvas.at(60000, pitch + 0.875), gray(shade));
}

void tst_PianoRollGrid::linesLieBetweenRows()
{
    Canvas canvas;
    canvas.draw(common);
    QCOMPARE(canvas.at(15000, 60), gray(32));
    QCOMPARE(canvas.at(15000, 48), gray(32));
    for (int pitch = 49; pitch < 60; ++pitch)
        QCOMPARE(canvas.at(15000, pitch), gray(48));
}

void tst_PianoRollGrid::rowsGoOnBelowZero()
{
    Canvas canvas(10);
    canvas.draw(common);
    QCOMPARE(canvas.at(15000, -0.5), gray(64)); // like B
    QCOMPARE(canvas.at(15000, -1.5), gray(56)); // like A sharp
    QCOMPARE(canvas.at(15000, 0), gray(32));
    QCOMPARE(canvas.at(15000, -1), gray(48));
    QCOMPARE(canvas.at(15000, -12), gray(32));
}

void tst_PianoRollGrid::everySecondMeasureIsShaded()
{
    Canvas canvas;
    canvas.draw(common);
    QCOMPARE(canvas.at(15000, 59.5), gray(64));
    QCOMPARE(canvas.at(120960 + 15000, 59.5), gray(70));
    QCOMPARE(canvas.at(120960 + 100000, 58.5), gray(62));
    QCOMPARE(canvas.at(2 * 120960 + 15000, 59.5), gray(64));
}

void tst_PianoRollGrid::beatsAndMeasuresHaveLines()
{
    Canvas canvas;
    canvas.draw(common);
    for (const int beat : {0, 4, 8})
        QCOMPARE(canvas.at(beat * 30240, 59.5), gray(32));
    for (const int beat : {1, 2, 3, 5, 6, 7, 9})
        QCOMPARE(canvas.at(beat * 30240, 59.5), gray(48));
    QCOMPARE(canvas.at(30240 + 100, 59.5), gray(64));
    QCOMPARE(canvas.at(30240 - 100, 59.5), gray(64));
}

/// 120960 / 7 is 17280, but 100000 / 7 leaves a rest.
void tst_PianoRollGrid::aMeasureEndsAfterItsWholeBeats()
{
    Canvas canvas;
    canvas.draw({100000 / 7, 7});
    QCOMPARE(canvas.at(14285 * 7, 59.5), gray(32));
    QCOMPARE(canvas.at(14285 * 7 + 500, 59.5), gray(70));
    QCOMPARE(canvas.at(14285 * 6, 59.5), gray(48));
}

void tst_PianoRollGrid::beatsWithinOnePixelAreNotShown()
{
    Canvas canvas;
    canvas.draw({99, 300});
    QCOMPARE(canvas.at(29700, 59.5), gray(32));
    QCOMPARE(canvas.at(15000, 59.5), gray(64));
    QCOMPARE(canvas.at(29700 + 15000, 59.5), gray(70));
    Canvas wide;
    wide.draw({100, 300});
    QCOMPARE(wide.at(15000, 59.5), gray(48));
}

void tst_PianoRollGrid::measuresWithinOnePixelAreNotShown()
{
    Canvas canvas;
    canvas.draw({33, 3});
    for (int x = 0; x < 3000; ++x)
        QCOMPARE(canvas.at(x * 100, 59.5), gray(64));
}

void tst_PianoRollGrid::withoutBeatsThereAreOnlyRows_data()
{
    QTest::addColumn<quint32>("ticksPerBeat");
    QTest::addColumn<quint32>("beatsPerMeasure");
    QTest::newRow("no length") << 0u << 4u;
    QTest::newRow("no beats") << 30240u << 0u;
    QTest::newRow("neither") << 0u << 0u;
    QTest::newRow("a tick") << 1u << 1u;
}

void tst_PianoRollGrid::withoutBeatsThereAreOnlyRows()
{
    QFETCH(quint32, ticksPerBeat);
    QFETCH(quint32, beatsPerMeasure);
    Canvas canvas;
    canvas.draw({ticksPerBeat, beatsPerMeasure});
    for (int x = 0; x < 3000; ++x)
        QCOMPARE(canvas.at(x * 100, 59.5), gray(64));
}

void tst_PianoRollGrid::nothingIsDrawnFarBeyondTheScreen_data()
{
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<quint32>("ticksPerBeat");
    constexpr qreal most = 18446744073709551615.0;
    QTest::newRow("wide") << QRectF(0, 20, most, 89) << 30240u;
    QTest::newRow("far") << QRectF(most, 20, 100000, 89) << 30240u;
    QTest::newRow("farther than any number") << QRectF(1e300, 20, 100000, 89) << 30240u;
    QTest::newRow("high") << QRectF(0, -most, 100000, 2 * most) << 30240u;
    QTest::newRow("everything") << QRectF(-most, -most, 2 * most, 2 * most) << 100u;
    QTest::newRow("long beats") << QRectF(0, 20, most, 89) << 4294967295u;
}

/// The test ends: there are at most as many lines as the widest screen has pixels.
void tst_PianoRollGrid::nothingIsDrawnFarBeyondTheScreen()
{
    QFETCH(QRectF, rect);
    QFETCH(quint32, ticksPerBeat);
    Canvas canvas;
    QPainter painter(&canvas.image);
    painter.setWorldTransform(canvas.transform);
    drawRows(&painter, rect);
    drawBeats(&painter, rect, {ticksPerBeat, 4});
    const Lines lines = visibleLines(painter, visiblePart(painter, rect), ticksPerBeat);
    QVERIFY(lines.end - lines.first <= 65537);
}

QTEST_MAIN(tst_PianoRollGrid)
#include "tst_PianoRollGrid.moc"
