#include "MainWindowView.h"

#include <QStringList>

namespace {

constexpr int RowHeight = 73;
constexpr int StripLeft = 400;
constexpr int StripTop = 74;
constexpr int StripHeight = 58;
/// Between the border of the strip and the edge of the window.
constexpr int StripMargin = 24;
/// Between a row's buttons, where its background can be seen.
constexpr QPoint Background(28, 104);

QPoint inRow(int row, QPoint point)
{
    return point + QPoint(0, row * RowHeight);
}

bool isRow(const QImage &image, int row)
{
    const QPoint point = inRow(row, Background);
    return image.rect().contains(point) && qGray(image.pixel(point)) > 0x90;
}

bool isSelected(const QImage &image, int row)
{
    const QRgb colour = image.pixel(inRow(row, Background));
    return qRed(colour) > qBlue(colour) + 0x30;
}

QImage stripOf(const QImage &image, int row)
{
    return image.copy(QRect(inRow(row, QPoint(StripLeft, StripTop)),
                            QSize(image.width() - StripLeft - StripMargin, StripHeight)));
}

/// The notes of a muted row are grey.
bool isMuted(const QImage &strip)
{
    for (int y = 0; y < strip.height(); ++y)
        for (int x = 0; x < strip.width(); ++x)
            if (qBlue(strip.pixel(x, y)) > qRed(strip.pixel(x, y)) + 0x40)
                return false;
    return true;
}

bool isWhite(const QImage &strip, int x)
{
    for (int y = 0; y < strip.height(); ++y)
        if (qGray(strip.pixel(x, y)) < 0xF0)
            return false;
    return true;
}

QString look(const QImage &image, int row)
{
    QStringList words;
    if (isSelected(image, row))
        words.append(QStringLiteral("selected"));
    if (isMuted(stripOf(image, row)))
        words.append(QStringLiteral("muted"));
    return words.isEmpty() ? QStringLiteral("plain") : words.join(QLatin1Char(','));
}

QPoint place(MainWindowView::Control control)
{
    const int column = control % 3;
    const int line = control / 3;
    return {28 + 24 * column, 89 + 30 * line};
}

} // namespace

QString MainWindowView::rows() const
{
    const QImage image = Desktop::image(m_window);
    QStringList rows;
    for (int row = 0; isRow(image, row); ++row)
        rows.append(look(image, row));
    return rows.join(QLatin1Char(' '));
}

int MainWindowView::rowCount() const
{
    const QImage image = Desktop::image(m_window);
    int row = 0;
    while (isRow(image, row))
        ++row;
    return row;
}

QImage MainWindowView::strip(int row) const
{
    return stripOf(Desktop::image(m_window), row);
}

int MainWindowView::position(int row) const
{
    const QImage picture = strip(row);
    for (int x = 0; x < picture.width(); ++x)
        if (isWhite(picture, x))
            return x;
    return -1;
}

void MainWindowView::click(int row, Control control, Desktop::Button button) const
{
    Desktop::click(m_window, inRow(row, place(control)), button);
}
