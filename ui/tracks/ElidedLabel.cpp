#include "ui/tracks/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace {

/// More than fits on a screen: what comes behind is not measured, as it may be megabytes.
constexpr int LongestTip = 2000;
constexpr int LongestLine = 500;

/// Line breaks and tabs would leave the line.
QString oneLine(const QString &text, int length)
{
    return text.left(length).simplified();
}

QString shortened(const QString &text, int length)
{
    const QString line = oneLine(text, length);
    return text.size() > length ? line + QChar(0x2026) : line;
}

} // namespace

ElidedLabel::ElidedLabel(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::sizeHint() const
{
    return minimumSizeHint();
}

QSize ElidedLabel::minimumSizeHint() const
{
    const QMargins around = contentsMargins();
    return QSize(fontMetrics().averageCharWidth() * 10, fontMetrics().height()).grownBy(around);
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip
        && showWholeText(static_cast<QHelpEvent *>(event)->globalPos()))
        return true;
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), int(alignment()), palette(), isEnabled(),
                          shownText(), foregroundRole());
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(shortened(text(), LongestLine), Qt::ElideRight,
                                    contentsRect().width());
}

bool ElidedLabel::showWholeText(const QPoint &globalPlace)
{
    if (shownText() == oneLine(text(), LongestLine) && text().size() <= LongestLine)
        return false;
    // As markup, since a tip guesses otherwise whether it is some.
    const QString whole = shortened(text(), LongestTip).toHtmlEscaped();
    QToolTip::showText(globalPlace, QStringLiteral("<p>%1</p>").arg(whole), this);
    return true;
}
