#include "demo/Icons.h"

#include <QBuffer>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace Demo {

namespace {

constexpr int Size = 48;

const QColor &ink()
{
    static const QColor color(0x3B, 0x26, 0x16);
    return color;
}

QColor wood()
{
    return QColor(0xC0, 0x78, 0x3C);
}

QColor paleWood()
{
    return QColor(0xE6, 0xBE, 0x82);
}

QColor darkWood()
{
    return QColor(0x6A, 0x3F, 0x22);
}

QColor redWood()
{
    return QColor(0xA8, 0x4A, 0x2A);
}

QColor brass()
{
    return QColor(0xEB, 0xBE, 0x48);
}

QColor steel()
{
    return QColor(0xC3, 0xCE, 0xD6);
}

QColor black()
{
    return QColor(0x2C, 0x2A, 0x2E);
}

QColor ivory()
{
    return QColor(0xFB, 0xF6, 0xE6);
}

QColor red()
{
    return QColor(0xB8, 0x32, 0x2E);
}

QColor blue()
{
    return QColor(0x3A, 0x6E, 0xA5);
}

QPen outline(double width = 1.4)
{
    return QPen(ink(), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

void paintPlate(QPainter &painter)
{
    QLinearGradient paper(0.0, 0.0, 0.0, Size);
    paper.setColorAt(0.0, QColor(0xFA, 0xF1, 0xDA));
    paper.setColorAt(1.0, QColor(0xE2, 0xCD, 0xA2));
    painter.setPen(QPen(QColor(0x8A, 0x66, 0x3E), 1.5));
    painter.setBrush(paper);
    painter.drawRoundedRect(QRectF(1.0, 1.0, Size - 2.0, Size - 2.0), 8.0, 8.0);
}

void shape(QPainter &painter, const QPainterPath &path, const QColor &fill)
{
    painter.setPen(outline());
    painter.setBrush(fill);
    painter.drawPath(path);
}

void box(QPainter &painter, const QRectF &rect, const QColor &fill, double round = 1.0)
{
    painter.setPen(outline());
    painter.setBrush(fill);
    painter.drawRoundedRect(rect, round, round);
}

void disc(QPainter &painter, const QPointF &centre, double across, double down, const QColor &fill)
{
    painter.setPen(outline());
    painter.setBrush(fill);
    painter.drawEllipse(centre, across, down);
}

void line(QPainter &painter, double x1, double y1, double x2, double y2, double width = 1.4)
{
    painter.setPen(outline(width));
    painter.drawLine(QPointF(x1, y1), QPointF(x2, y2));
}

/// Turns what follows about the middle, so that a long instrument lies across the plate.
void tilt(QPainter &painter, double degrees)
{
    painter.translate(Size / 2.0, Size / 2.0);
    painter.rotate(degrees);
    painter.translate(-Size / 2.0, -Size / 2.0);
}

/// Finger holes on an instrument that lies level at the plate's middle.
void holes(QPainter &painter, double from, double to, int count, double radius)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink());
    for (int i = 0; i < count; ++i)
        painter.drawEllipse(QPointF(from + (to - from) * i / (count - 1), 24.0), radius, radius);
}

/// The waisted body of the bowed strings, between `top` and `bottom`.
QPainterPath waistedBody(double top, double bottom, double halfWidth)
{
    const double height = bottom - top;
    const double x = Size / 2.0;
    const double waist = top + 0.47 * height;
    QPainterPath path(QPointF(x, top));
    path.cubicTo(x + 1.1 * halfWidth, top, x + halfWidth, top + 0.34 * height, x + 0.55 * halfWidth,
                 waist);
    path.cubicTo(x + 1.3 * halfWidth, top + 0.6 * height, x + 1.2 * halfWidth, bottom, x, bottom);
    path.cubicTo(x - 1.2 * halfWidth, bottom, x - 1.3 * halfWidth, top + 0.6 * height,
                 x - 0.55 * halfWidth, waist);
    path.cubicTo(x - halfWidth, top + 0.34 * height, x - 1.1 * halfWidth, top, x, top);
    return path;
}

void paintBowedString(QPainter &painter, const QColor &fill, double top, double halfWidth)
{
    box(painter, QRectF(22.6, 5.0, 2.8, top + 8.0 - 5.0), darkWood());
    disc(painter, QPointF(24.0, 6.0), 2.2, 2.4, darkWood());
    shape(painter, waistedBody(top, 43.0, halfWidth), fill);
    box(painter, QRectF(22.9, top - 2.0, 2.2, 12.0), black(), 0.5);
    line(painter, 19.5, top + 12.0, 18.8, top + 17.5, 1.2);
    line(painter, 28.5, top + 12.0, 29.2, top + 17.5, 1.2);
    line(painter, 21.0, 35.0, 27.0, 35.0, 1.6);
    box(painter, QRectF(22.8, 37.0, 2.4, 5.0), black(), 0.8);
}

void paintBow(QPainter &painter)
{
    painter.save();
    tilt(painter, 24.0);
    line(painter, 36.0, 6.0, 36.0, 42.0, 1.8);
    painter.setPen(QPen(ivory(), 1.2));
    painter.drawLine(QPointF(38.4, 7.0), QPointF(38.4, 39.0));
    box(painter, QRectF(35.6, 36.5, 3.4, 4.0), black(), 0.6);
    painter.restore();
}

/// A tube with a bell at its right end, level at the plate's middle.
void paintReedTube(QPainter &painter, const QColor &fill, double bell)
{
    QPainterPath tube(QPointF(10.0, 22.4));
    tube.lineTo(34.0, 21.4);
    tube.quadTo(39.0, 21.0, 44.0, 24.0 - bell);
    tube.quadTo(45.6, 24.0, 44.0, 24.0 + bell);
    tube.quadTo(39.0, 27.0, 34.0, 26.6);
    tube.lineTo(10.0, 25.6);
    tube.closeSubpath();
    shape(painter, tube, fill);
}

} // namespace

QByteArray iconFile(IconPainter painter)
{
    QImage image(Size, Size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter canvas(&image);
    canvas.setRenderHint(QPainter::Antialiasing);
    paintPlate(canvas);
    painter(canvas);
    canvas.end();
    QByteArray file;
    QBuffer buffer(&file);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG"))
        throw QStringLiteral("Could not encode an icon.");
    return file;
}

void paintLute(QPainter &painter)
{
    tilt(painter, 38.0);
    box(painter, QRectF(21.8, 7.0, 4.4, 18.0), darkWood());
    box(painter, QRectF(21.4, 3.5, 8.5, 4.6), darkWood(), 1.5);
    QPainterPath body(QPointF(24.0, 17.0));
    body.cubicTo(31.0, 19.0, 36.0, 28.0, 35.0, 35.0);
    body.cubicTo(34.0, 42.0, 29.0, 45.0, 24.0, 45.0);
    body.cubicTo(19.0, 45.0, 14.0, 42.0, 13.0, 35.0);
    body.cubicTo(12.0, 28.0, 17.0, 19.0, 24.0, 17.0);
    shape(painter, body, wood());
    disc(painter, QPointF(24.0, 30.0), 3.8, 3.8, darkWood());
    line(painter, 18.5, 39.5, 29.5, 39.5, 2.0);
    for (double x : {22.8, 24.0, 25.2})
        line(painter, x, 9.0, x, 39.0, 0.5);
}

void paintHarp(QPainter &painter)
{
    for (int i = 0; i < 7; ++i)
        line(painter, 17.0 + 3.3 * i, 11.0 - 0.7 * i + (i > 4 ? 2.0 * (i - 4) : 0.0),
             17.0 + 3.3 * i, 40.0 - 3.6 * i, 0.7);
    QPainterPath neck(QPointF(10.0, 8.0));
    neck.cubicTo(18.0, 16.0, 26.0, 3.0, 38.0, 9.0);
    neck.lineTo(39.0, 13.5);
    neck.cubicTo(27.0, 8.0, 19.0, 19.0, 10.0, 13.0);
    neck.closeSubpath();
    shape(painter, neck, brass());
    QPainterPath soundBoard(QPointF(39.0, 11.0));
    soundBoard.lineTo(40.5, 16.0);
    soundBoard.lineTo(18.5, 44.0);
    soundBoard.lineTo(12.0, 42.5);
    soundBoard.closeSubpath();
    shape(painter, soundBoard, wood());
    box(painter, QRectF(9.5, 8.0, 4.0, 35.5), brass(), 1.5);
}

void paintPiano(QPainter &painter)
{
    QPainterPath lid(QPointF(8.0, 27.0));
    lid.lineTo(8.0, 12.0);
    lid.cubicTo(9.0, 4.0, 22.0, 5.0, 24.0, 12.0);
    lid.cubicTo(26.0, 19.0, 40.0, 14.0, 40.0, 24.0);
    lid.lineTo(40.0, 27.0);
    lid.closeSubpath();
    shape(painter, lid, black());
    box(painter, QRectF(6.0, 26.0, 36.0, 14.0), ivory(), 1.5);
    for (int i = 1; i < 8; ++i)
        line(painter, 6.0 + 4.5 * i, 27.0, 6.0 + 4.5 * i, 39.5, 0.9);
    painter.setPen(Qt::NoPen);
    painter.setBrush(black());
    for (int i : {1, 2, 4, 5, 6})
        painter.drawRect(QRectF(4.6 + 4.5 * i, 26.5, 2.8, 7.5));
}

void paintBass(QPainter &painter)
{
    tilt(painter, -14.0);
    paintBowedString(painter, redWood(), 15.0, 14.0);
}

void paintFiddle(QPainter &painter)
{
    painter.save();
    tilt(painter, -24.0);
    paintBowedString(painter, wood(), 20.0, 10.0);
    painter.restore();
    paintBow(painter);
}

void paintCello(QPainter &painter)
{
    painter.save();
    painter.translate(-6.0, -1.0);
    line(painter, 24.0, 42.0, 24.0, 46.5, 1.6);
    paintBowedString(painter, darkWood().lighter(150), 16.0, 11.5);
    painter.restore();
    paintBow(painter);
}

void paintFlute(QPainter &painter)
{
    tilt(painter, -38.0);
    box(painter, QRectF(2.0, 21.6, 44.0, 4.8), paleWood(), 2.0);
    for (double x : {4.0, 16.0, 43.0})
        box(painter, QRectF(x, 21.0, 2.0, 6.0), brass(), 0.6);
    disc(painter, QPointF(11.0, 24.0), 1.8, 1.3, darkWood());
    holes(painter, 22.0, 39.0, 6, 1.1);
}

void paintWhistle(QPainter &painter)
{
    tilt(painter, -52.0);
    box(painter, QRectF(12.0, 22.0, 33.0, 4.0), steel(), 0.8);
    QPainterPath mouth(QPointF(3.0, 24.6));
    mouth.lineTo(10.0, 21.0);
    mouth.lineTo(16.0, 21.0);
    mouth.lineTo(16.0, 27.0);
    mouth.lineTo(3.0, 27.0);
    mouth.closeSubpath();
    shape(painter, mouth, blue());
    painter.setBrush(ink());
    painter.drawRect(QRectF(11.0, 22.0, 2.6, 1.6));
    holes(painter, 21.0, 40.0, 6, 1.1);
}

void paintClarinet(QPainter &painter)
{
    tilt(painter, -40.0);
    QPainterPath beak(QPointF(2.0, 25.2));
    beak.lineTo(10.0, 21.8);
    beak.lineTo(10.0, 26.2);
    beak.closeSubpath();
    shape(painter, beak, black());
    paintReedTube(painter, black().lighter(130), 5.0);
    painter.setPen(QPen(ink(), 0.6));
    painter.setBrush(steel());
    for (double x : {13.0, 17.0, 21.0, 26.0, 30.0, 34.0})
        painter.drawEllipse(QPointF(x, 23.6), 1.5, 1.5);
    for (double x : {9.8, 23.3, 36.5})
        painter.drawRect(QRectF(x, 20.9, 1.3, 6.2));
}

void paintShawm(QPainter &painter)
{
    tilt(painter, 40.0);
    line(painter, 3.0, 24.0, 10.0, 24.0, 2.2);
    disc(painter, QPointF(9.5, 24.0), 1.4, 3.6, brass());
    paintReedTube(painter, redWood(), 8.5);
    holes(painter, 15.0, 32.0, 6, 1.1);
}

void paintHorn(QPainter &painter)
{
    painter.setBrush(Qt::NoBrush);
    for (const QPen &pen : {outline(6.0), QPen(brass(), 3.4)}) {
        painter.setPen(pen);
        painter.drawEllipse(QPointF(23.0, 22.0), 11.5, 11.5);
        painter.drawLine(QPointF(23.0, 10.5), QPointF(8.0, 6.5));
    }
    QPainterPath bell(QPointF(17.0, 31.0));
    bell.quadTo(28.0, 33.0, 30.0, 44.0);
    bell.quadTo(38.0, 42.0, 43.0, 31.0);
    bell.quadTo(32.0, 31.0, 23.5, 25.0);
    bell.closeSubpath();
    shape(painter, bell, brass());
    box(painter, QRectF(4.5, 4.6, 4.0, 3.6), steel(), 1.0);
    for (double x : {19.0, 23.0, 27.0})
        box(painter, QRectF(x - 1.4, 15.5, 2.8, 9.0), steel(), 1.0);
}

void paintAccordion(QPainter &painter)
{
    tilt(painter, -8.0);
    QPainterPath bellows(QPointF(16.0, 13.0));
    for (int i = 0; i < 4; ++i) {
        bellows.lineTo(18.0 + 4.0 * i, 9.5);
        bellows.lineTo(20.0 + 4.0 * i, 13.0);
    }
    bellows.lineTo(32.0, 37.0);
    for (int i = 3; i >= 0; --i) {
        bellows.lineTo(18.0 + 4.0 * i, 40.5);
        bellows.lineTo(16.0 + 4.0 * i, 37.0);
    }
    bellows.closeSubpath();
    shape(painter, bellows, ivory());
    for (int i = 1; i < 4; ++i)
        line(painter, 16.0 + 4.0 * i, 13.0, 16.0 + 4.0 * i, 37.0, 1.0);
    box(painter, QRectF(5.5, 10.0, 11.0, 30.0), red(), 2.5);
    box(painter, QRectF(31.5, 10.0, 11.0, 30.0), red(), 2.5);
    box(painter, QRectF(7.5, 12.5, 4.2, 25.0), ivory(), 0.8);
    for (int i = 1; i < 6; ++i)
        line(painter, 7.5, 12.5 + 4.2 * i, 11.7, 12.5 + 4.2 * i, 0.8);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ivory());
    for (int row = 0; row < 5; ++row) {
        for (double x : {35.0, 39.0})
            painter.drawEllipse(QPointF(x, 14.5 + 5.2 * row), 1.1, 1.1);
    }
}

void paintOrgan(QPainter &painter)
{
    static constexpr double Tops[] = {16.0, 11.0, 6.0, 6.0, 11.0, 16.0};
    for (int i = 0; i < 6; ++i) {
        const double x = 7.4 + 5.6 * i;
        box(painter, QRectF(x, Tops[i], 4.9, 26.0 - Tops[i] + 6.0), steel(), 1.6);
        painter.setBrush(ink());
        painter.drawRect(QRectF(x + 1.4, 25.0, 2.1, 1.4));
    }
    box(painter, QRectF(5.0, 31.0, 38.0, 12.0), wood(), 1.5);
    box(painter, QRectF(11.0, 34.0, 26.0, 5.0), ivory(), 0.6);
    for (int i = 1; i < 8; ++i)
        line(painter, 11.0 + 3.25 * i, 34.0, 11.0 + 3.25 * i, 39.0, 0.8);
}

void paintBells(QPainter &painter)
{
    line(painter, 5.0, 8.0, 43.0, 8.0, 2.6);
    struct Bell {
        double x;
        double size;
    };
    for (const Bell &bell : {Bell{14.5, 1.0}, Bell{34.0, 0.8}}) {
        painter.save();
        painter.translate(bell.x, 8.0);
        painter.scale(bell.size, bell.size);
        line(painter, 0.0, 0.0, 0.0, 5.0, 2.0);
        disc(painter, QPointF(0.0, 30.0), 2.6, 3.0, darkWood());
        QPainterPath body(QPointF(0.0, 4.0));
        body.cubicTo(7.5, 4.0, 4.5, 19.0, 10.0, 27.0);
        body.quadTo(10.5, 29.5, 8.0, 29.5);
        body.lineTo(-8.0, 29.5);
        body.quadTo(-10.5, 29.5, -10.0, 27.0);
        body.cubicTo(-4.5, 19.0, -7.5, 4.0, 0.0, 4.0);
        shape(painter, body, brass());
        line(painter, -8.0, 25.0, 8.0, 25.0, 1.0);
        painter.restore();
    }
}

void paintMarimba(QPainter &painter)
{
    for (int i = 0; i < 6; ++i) {
        const double x = 5.0 + 6.5 * i;
        box(painter, QRectF(x + 1.2, 24.0, 3.0, 17.0 - 1.8 * i), steel(), 1.0);
        box(painter, QRectF(x, 11.0 + 1.2 * i, 5.4, 19.0 - 2.4 * i), redWood(), 1.2);
    }
    line(painter, 12.0, 7.0, 28.0, 17.0, 1.6);
    line(painter, 41.0, 5.0, 31.0, 18.0, 1.6);
    disc(painter, QPointF(28.0, 17.5), 3.0, 3.0, red());
    disc(painter, QPointF(33.0, 19.0), 3.0, 3.0, red());
}

void paintMusicBox(QPainter &painter)
{
    QPainterPath lid(QPointF(9.0, 22.0));
    lid.lineTo(13.0, 7.0);
    lid.lineTo(35.0, 7.0);
    lid.lineTo(39.0, 22.0);
    lid.closeSubpath();
    shape(painter, lid, paleWood());
    box(painter, QRectF(7.0, 21.5, 34.0, 20.0), wood(), 2.0);
    box(painter, QRectF(10.0, 25.0, 28.0, 7.0), brass(), 2.5);
    for (int i = 0; i < 8; ++i)
        line(painter, 12.5 + 3.3 * i, 32.5, 12.5 + 3.3 * i, 38.5 - 0.5 * i, 1.2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink());
    for (int i = 0; i < 8; ++i)
        painter.drawEllipse(QPointF(12.5 + 3.3 * i, 26.8 + 1.9 * (i * 5 % 3)), 0.8, 0.8);
    line(painter, 41.0, 31.0, 45.0, 31.0, 1.6);
    line(painter, 45.0, 31.0, 45.0, 26.0, 1.6);
}

void paintDrums(QPainter &painter)
{
    line(painter, 38.5, 13.0, 40.5, 42.0, 1.4);
    disc(painter, QPointF(37.0, 12.5), 8.0, 2.4, brass());
    QPainterPath shell(QPointF(6.0, 23.0));
    shell.lineTo(8.0, 38.0);
    shell.cubicTo(12.0, 44.0, 28.0, 44.0, 32.0, 38.0);
    shell.lineTo(34.0, 23.0);
    shell.closeSubpath();
    shape(painter, shell, red());
    for (int i = 0; i < 5; ++i)
        line(painter, 8.0 + 6.0 * i, 25.0, 11.0 + 4.5 * i + (i % 2 == 0 ? 2.0 : 0.0), 41.0, 1.1);
    disc(painter, QPointF(20.0, 22.5), 14.0, 5.2, ivory());
    line(painter, 8.0, 6.0, 20.0, 21.0, 2.2);
    line(painter, 26.0, 5.0, 22.0, 22.0, 2.2);
}

} // namespace Demo
