#include "ui/pianoroll/NotePainter.h"

#include <QPainter>
#include <QRandomGenerator>
#include <QtTest>

class tst_NotePainter : public QObject {
    Q_OBJECT

private slots:
    void itDrawsWhatARectangleItemWould_data();
    void itDrawsWhatARectangleItemWould();
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

/// From nothing to longer than the picture, some of them beside it.
QVector<QRectF> someNotes()
{
    QRandomGenerator random(5);
    QVector<QRectF> notes{{0, 60, 0, 1}, {0, 61, 1e15, 1}, {-1e15, 62, 2e15, 1}, {1e12, 63, 10, 1}};
    while (notes.size() < Notes)
        notes << QRectF(random.bounded(250000.0) - 20000, 20 + random.bounded(89),
                        std::pow(10, random.bounded(5.5)), 1);
    return notes;
}

template <typename Draw> QImage picture(const QTransform &transform, Draw draw)
{
    QImage image(700, 300, QImage::Format_RGB32);
    image.fill(QColor(64, 64, 64));
    QPainter painter(&image);
    painter.setWorldTransform(transform);
    for (const QRectF &note : someNotes())
        draw(&painter, note);
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
    const QTransform usual(1 / 315.0, 0, 0, -8, -31, 600);
    QTest::newRow("pressed") << usual << true << blue;
    QTest::newRow("translucent") << usual << false << QColor(255, 0, 32, 100);
    QTest::newRow("uneven rows") << QTransform(1 / 315.0, 0, 0, -8.3, -31, 600.5) << false << blue;
    QTest::newRow("upside down") << QTransform(1 / 315.0, 0, 0, 8, -31, -400) << false << blue;
    QTest::newRow("turned") << QTransform(usual).rotate(20) << false << blue;
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
    int shown = 0;
    for (int y = 0; y < drawn.height(); ++y)
        for (int x = 0; x < drawn.width(); ++x)
            if (drawn.pixel(x, y) != wanted.pixel(x, y) && ++shown < 12)
                qDebug("%d %d %08x %08x", x, y, drawn.pixel(x, y), wanted.pixel(x, y));
    QCOMPARE(drawn, wanted);
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
