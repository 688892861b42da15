#include "ui/pianoroll/NotePainter.h"

#include <QPainter>
#include <QRandomGenerator>
#include <QtTest>

class tst_NotePainter : public QObject {
    Q_OBJECT

private slots:
    void itDrawsWhatARectangleItemWould_data();
    void itDrawsWhatARectangleItemWould();
    void aNarrowNoteIsALine_data();
    void aNarrowNoteIsALine();
    void anEndlessNoteFillsItsRow_data();
    void anEndlessNoteFillsItsRow();
    void itLeavesThePainterAsItWas();
    void aScaledScreenHasFinerNotes();
};

namespace {

constexpr int Notes = 400;

QBrush gradient(const QColor &bottom, const QColor &top)
{
    QLinearGradient gradient(0, 0, 0, 1);
    gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
    gradient.setColorAt(0, bottom);
    gradient.setColorAt(1, top);
    return gradient;
}

/// In all columns, some beginning left of the picture. QPainter leaves out pixels of the frame of
/// notes that are less than a pixel wide or cut off otherwise.
QVector<QRectF> someNotes(const QTransform &transform)
{
    QRandomGenerator random(5);
    QVector<QRectF> notes;
    while (notes.size() < Notes) {
        const qreal right = random.bounded(698.0) + 1;
        const qreal width = 1.5 * std::pow(10, random.bounded(3.0));
        const QRectF pixels(right - width, 0, width, 1);
        const qreal left = transform.inverted().mapRect(pixels).left();
        const int rows = 1 + static_cast<int>(200 / std::abs(transform.m22()));
        notes << QRectF(left, 64 - random.bounded(rows), width / transform.m11(), 1);
    }
    return notes;
}

QImage blank()
{
    QImage image(700, 300, QImage::Format_RGB32);
    image.fill(QColor(64, 64, 64));
    return image;
}

template <typename Draw> QImage picture(const QTransform &transform, Draw draw)
{
    QImage image = blank();
    QPainter painter(&image);
    painter.setWorldTransform(transform);
    for (const QRectF &note : someNotes(transform))
        draw(&painter, note);
    return image;
}

/// At 10 ticks and a row of 8 pixels, the pixel at (0, 292) being pitch 0.
QImage drawn(const QRectF &note, qreal bottom = 299)
{
    QImage image = blank();
    QPainter painter(&image);
    painter.setWorldTransform({0.1, 0, 0, -8, 0, bottom});
    NotePainter(Qt::blue).draw(&painter, note, false);
    return image;
}

} // namespace

void tst_NotePainter::itDrawsWhatARectangleItemWould_data()
{
    QTest::addColumn<QTransform>("transform");
    QTest::addColumn<bool>("isPressed");
    QTest::addColumn<QColor>("color");
    const QColor blue(32, 96, 255);
    for (const double horizontal : {0.0625, 0.125, 0.25, 0.5, 1.0, 2.0, 4.0, 8.0, 16.0})
        for (const double vertical : {-4.0, -6.0, -8.0, -12.0, -16.0, -24.0, -28.0})
            QTest::addRow("zoom %g %g", horizontal, vertical)
                << QTransform(horizontal / 315, 0, 0, vertical, -31, 40 - vertical * 64) << false
                << blue;
    const QTransform common(1 / 315.0, 0, 0, -8, -31, 600);
    QTest::newRow("pressed") << common << true << blue;
    QTest::newRow("translucent") << common << false << QColor(255, 0, 32, 100);
    QTest::newRow("uneven rows") << QTransform(1 / 315.0, 0, 0, -8.3, -31, 600.5) << false << blue;
    QTest::newRow("upside down") << QTransform(1 / 315.0, 0, 0, 8, -31, -400) << false << blue;
    QTest::newRow("turned") << QTransform(common).rotate(20) << false << blue;
    QTest::newRow("huge") << QTransform(1 / 315.0, 0, 0, -300, 0, 300 * 62) << false << blue;
}

void tst_NotePainter::itDrawsWhatARectangleItemWould()
{
    QFETCH(QTransform, transform);
    QFETCH(bool, isPressed);
    QFETCH(QColor, color);
    const NotePainter notes(color);
    const QImage drawn = picture(transform, [&](QPainter *painter, const QRectF &note) {
        notes.draw(painter, note, isPressed);
    });
    const QBrush brush = isPressed ? gradient(color.lighter(115), color.lighter(150))
                                   : gradient(color.darker(115), color.lighter(115));
    const QImage wanted = picture(transform, [&](QPainter *painter, const QRectF &note) {
        painter->setPen(QPen(Qt::black, 0));
        painter->setBrush(brush);
        painter->drawRect(note);
    });
    QCOMPARE(drawn, wanted);
}

void tst_NotePainter::aNarrowNoteIsALine_data()
{
    QTest::addColumn<QRectF>("note");
    QTest::addColumn<QRect>("pixels");
    QTest::newRow("no length") << QRectF(1000, 0, 0, 1) << QRect(100, 291, 1, 9);
    QTest::newRow("within a pixel") << QRectF(1001, 0, 8, 1) << QRect(100, 291, 1, 9);
    QTest::newRow("in two pixels") << QRectF(1008, 0, 4, 1) << QRect(100, 291, 2, 9);
    QTest::newRow("a pixel long") << QRectF(1000, 0, 10, 1) << QRect(100, 291, 2, 9);
}

void tst_NotePainter::aNarrowNoteIsALine()
{
    QFETCH(QRectF, note);
    QFETCH(QRect, pixels);
    QImage wanted = blank();
    QPainter(&wanted).fillRect(pixels, Qt::black);
    QCOMPARE(drawn(note), wanted);
}

void tst_NotePainter::anEndlessNoteFillsItsRow_data()
{
    QTest::addColumn<qreal>("bottom");
    QTest::newRow("whole pixels") << 299.0;
    QTest::newRow("between pixels") << 298.7;
}

void tst_NotePainter::anEndlessNoteFillsItsRow()
{
    QFETCH(qreal, bottom);
    const QImage wanted = drawn({-1000, 0, 10000, 1}, bottom);
    QVERIFY(wanted != blank());
    QCOMPARE(drawn({-1000, 0, 1e19, 1}, bottom), wanted);
    QCOMPARE(drawn({-1e19, 0, 2e19, 1}, bottom), wanted);
    QCOMPARE(drawn({1e19, 0, 1e19, 1}, bottom), blank());
    QCOMPARE(drawn({-2e19, 0, 1e19, 1}, bottom), blank());
}

void tst_NotePainter::itLeavesThePainterAsItWas()
{
    QImage image(100, 100, QImage::Format_RGB32);
    QPainter painter(&image);
    const QTransform transform(1 / 315.0, 0, 0, -8, -31, 600);
    painter.setWorldTransform(transform);
    NotePainter(Qt::red).draw(&painter, {0, 60, 30240, 1}, false);
    QCOMPARE(painter.worldTransform(), transform);
}

void tst_NotePainter::aScaledScreenHasFinerNotes()
{
    QImage image(200, 40, QImage::Format_RGB32);
    image.fill(Qt::white);
    image.setDevicePixelRatio(2);
    QPainter painter(&image);
    painter.setWorldTransform({1 / 315.0, 0, 0, -8, 10, 8});
    NotePainter(QColor(32, 96, 255)).draw(&painter, {0, 0, 63 * 315, 1}, false);
    QCOMPARE(image.pixelColor(20, 8), QColor(Qt::black));
    QVERIFY(image.pixelColor(22, 8) != QColor(Qt::black));
    QVERIFY(image.pixelColor(80, 4) != image.pixelColor(80, 5));
}

QTEST_MAIN(tst_NotePainter)
#include "tst_NotePainter.moc"
