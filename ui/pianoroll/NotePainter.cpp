#include "ui/pianoroll/NotePainter.h"

#include <QLinearGradient>
#include <QPaintEngine>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int StripWidth = 256;
constexpr int TallestStrip = 256;

QBrush gradient(const QColor &bottom, const QColor &top)
{
    QLinearGradient gradient(0, 0, 0, 1);
    gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
    gradient.setColorAt(0, bottom);
    gradient.setColorAt(1, top);
    return gradient;
}

bool isWhole(qreal number)
{
    return number == std::rint(number);
}

/// Whether all notes are equally many whole pixels high and start at whole ones.
bool hasWholeRows(const QTransform &transform)
{
    const qreal height = -transform.m22();
    return transform.type() <= QTransform::TxScale && isWhole(height) && isWhole(transform.dy())
        && height >= 2 && height <= TallestStrip;
}

bool canDrawPixels(const QPainter &painter)
{
    return painter.device()->devicePixelRatioF() == 1.0
        && painter.paintEngine()->type() == QPaintEngine::Raster
        && !painter.testRenderHint(QPainter::Antialiasing)
        && hasWholeRows(painter.worldTransform());
}

/// The column in which QPainter draws a line at `x`: it cuts off all below a 64th of a pixel, and
/// takes the column that this is in. What is far outside is moved nearer, where it is not seen yet.
int pixelColumn(const QPainter &painter, qreal x)
{
    constexpr qreal outside = -StripWidth;
    const qreal column =
        std::clamp(painter.worldTransform().m11() * x + painter.worldTransform().dx(), outside,
                   painter.device()->width() + 1.0);
    return static_cast<int>(column * 64) >> 6;
}

/// What a screen can show of the note: QPainter does not draw what is too wide for its numbers.
QRectF nearPart(const QTransform &transform, const QRectF &note)
{
    constexpr qreal widestScreen = 65536;
    const qreal reach = widestScreen / std::abs(transform.m11());
    const qreal start = -transform.dx() / transform.m11();
    QRectF part = note;
    part.setLeft(std::clamp(note.left(), start - reach, start + reach));
    part.setRight(std::clamp(note.right(), start - reach, start + reach));
    return part;
}

/// The columns between the two of the frame.
void drawInside(QPainter *painter, int left, int right, int top, const QImage &strip)
{
    for (int x = left; x < right; x += StripWidth)
        painter->drawImage(x, top, strip, 0, 0, std::min(StripWidth, right - x), strip.height());
}

void drawFramed(QPainter *painter, const QRect &pixels, const QImage &strip)
{
    if (pixels.width() <= 2) {
        painter->fillRect(pixels, Qt::black);
        return;
    }
    painter->fillRect(pixels.left(), pixels.top(), 1, pixels.height(), Qt::black);
    painter->fillRect(pixels.right(), pixels.top(), 1, pixels.height(), Qt::black);
    drawInside(painter, pixels.left() + 1, pixels.right(), pixels.top(), strip);
}

} // namespace

NotePainter::NotePainter(const QColor &color)
    : m_color(color)
    , m_pen(Qt::black, 0) // cosmetic
    , m_released{gradient(color.darker(115), color.lighter(115)), {}}
    , m_pressed{gradient(color.lighter(115), color.lighter(150)), {}}
{
}

void NotePainter::draw(QPainter *painter, const QRectF &note, bool isPressed) const
{
    Look &look = isPressed ? m_pressed : m_released;
    if (canDrawPixels(*painter))
        drawPixels(painter, note, look);
    else
        drawShape(painter, note, look);
}

void NotePainter::drawShape(QPainter *painter, const QRectF &note, const Look &look) const
{
    painter->setPen(m_pen);
    painter->setBrush(look.brush);
    const QTransform &transform = painter->worldTransform();
    painter->drawRect(transform.type() <= QTransform::TxScale ? nearPart(transform, note) : note);
}

void NotePainter::drawPixels(QPainter *painter, const QRectF &note, Look &look) const
{
    const QTransform transform = painter->worldTransform();
    const int height = qRound(-transform.m22());
    const int top = qRound(transform.m22() * note.bottom() + transform.dy());
    const int left = pixelColumn(*painter, note.left());
    const int right = pixelColumn(*painter, note.right());
    painter->resetTransform();
    drawFramed(painter, {left, top, right - left + 1, height + 1}, strip(look, height));
    painter->setWorldTransform(transform);
}

const QImage &NotePainter::strip(Look &look, int height) const
{
    QImage &strip = look.strips[height];
    if (strip.isNull())
        strip = makeStrip(look, height);
    return strip;
}

/// Of a note so wide that its sides are not on it.
QImage NotePainter::makeStrip(const Look &look, int height) const
{
    const bool isOpaque = m_color.alpha() == 255;
    QImage strip(StripWidth, height + 1,
                 isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
    strip.fill(Qt::transparent);
    QPainter painter(&strip);
    painter.setWorldTransform(QTransform(1, 0, 0, -height, 0, height));
    drawShape(&painter, QRectF(-StripWidth, 0, 3.0 * StripWidth, 1), look);
    return strip;
}
