#include "model/Track.h"
#include "ui/tracks/NoteBlocks.h"
#include "ui/tracks/StripPainter.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

namespace {

constexpr QSize Size(200, 61);
constexpr quint64 Length = quint64(64) * Ticks::PerWholeNote + 999;

Track manyNotes()
{
    Track track;
    for (quint64 i = 0; i < 2000; ++i) {
        const quint64 time = i * 7919 * 977 % Length;
        const quint64 duration = i % 40 == 0 ? Length - time : i * 37 % 90000;
        track.addEvent(TrackEvent::makeNote(21 + quint32(i * 13 % 88), time, duration));
    }
    track.sortEvents();
    track.setMeasure(90720, 3);
    return track;
}

/// The part of a strip on a screen of `ratio` pixels to one; the rest is anything.
QImage drawn(const Track &track, const QRect &part, qreal ratio)
{
    QImage image(Size * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    StripPainter strip(painter, part, StripScale(Size, Length));
    strip.drawGround();
    strip.drawMeasureLines(track.measureLength());
    strip.drawOctaveLines();
    strip.drawNotes(track, NoteBlocks(track.events()), Qt::blue);
    return image;
}

/// The pixels that lie in `part` as a whole.
QRect pixelsOf(const QRect &part, qreal ratio)
{
    const QPoint first(qCeil(part.left() * ratio), qCeil(part.top() * ratio));
    const QPoint end(qFloor((part.right() + 1) * ratio), qFloor((part.bottom() + 1) * ratio));
    return {first, end - QPoint(1, 1)};
}

} // namespace

class TestStripPainter : public QObject {
    Q_OBJECT

private slots:
    void aPartHasThePixelsOfTheWhole_data()
    {
        QTest::addColumn<qreal>("ratio");
        QTest::addColumn<QSize>("part");
        for (const double ratio : {1.0, 1.25, 1.5, 2.0, 3.0}) {
            const auto name = [ratio](const char *part) {
                return QByteArray(part) + ", ratio " + QByteArray::number(ratio);
            };
            QTest::newRow(name("columns").constData()) << ratio << QSize(1, 61);
            QTest::newRow(name("rows").constData()) << ratio << QSize(200, 1);
            QTest::newRow(name("tiles").constData()) << ratio << QSize(13, 10);
        }
    }
    void aPartHasThePixelsOfTheWhole()
    {
        QFETCH(const qreal, ratio);
        QFETCH(const QSize, part);
        const Track track = manyNotes();
        const QRect all(QPoint(0, 0), Size);
        const QImage whole = drawn(track, all, ratio);
        for (int y = 0; y < Size.height(); y += part.height()) {
            for (int x = 0; x < Size.width(); x += part.width()) {
                const QRect place = QRect(QPoint(x, y), part) & all;
                const QRect pixels = pixelsOf(place, ratio);
                QCOMPARE(drawn(track, place, ratio).copy(pixels), whole.copy(pixels));
            }
        }
    }

    void linesReachTheEdgesOfAFineScreen()
    {
        QImage image(200, 200, QImage::Format_RGB32);
        image.setDevicePixelRatio(2);
        QPainter painter(&image);
        StripPainter strip(painter, QRect(0, 0, 100, 100), StripScale(QSize(100, 100), 4));
        strip.drawGround();
        strip.drawMeasureLines(2);
        QCOMPARE(image.pixel(100, 0), qRgb(32, 32, 32));
        QCOMPARE(image.pixel(100, 199), qRgb(32, 32, 32));
        strip.drawOctaveLines();
        QCOMPARE(image.pixel(0, 0), qRgb(48, 48, 48));
        QCOMPARE(image.pixel(199, 0), qRgb(48, 48, 48));
    }

    void linesCloserThanPixelsOfAFineScreenFillIt()
    {
        constexpr quint64 Longest = std::numeric_limits<quint64>::max();
        QImage image(200, 200, QImage::Format_RGB32);
        image.setDevicePixelRatio(2);
        QPainter painter(&image);
        StripPainter strip(painter, QRect(0, 0, 100, 100), StripScale(QSize(100, 100), Longest));
        strip.drawGround();
        strip.drawMeasureLines(1);
        for (int x = 0; x < 199; ++x)
            QCOMPARE(image.pixel(x, 100), qRgb(32, 32, 32));
    }
};

QTEST_MAIN(TestStripPainter)
#include "tst_StripPainter.moc"
