#include "ui/ProblemLabel.h"

#include <QPainter>
#include <QStyle>

namespace {

constexpr int WidestCharacters = 48;
constexpr int NarrowestCharacters = 12;

/// A tool tip takes what looks like markup for markup.
QString toolTipOf(const QString &line)
{
    return line.isEmpty() ? QString() : QStringLiteral("<p>%1</p>").arg(line.toHtmlEscaped());
}

} // namespace

ProblemLabel::ProblemLabel(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    hide();
}

void ProblemLabel::setLine(const QString &text)
{
    const QString line = text.simplified();
    setText(line);
    setToolTip(toolTipOf(line));
    setVisible(!line.isEmpty());
}

QSize ProblemLabel::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const int widest = WidestCharacters * metrics.averageCharWidth();
    return {qMin(metrics.horizontalAdvance(text()) + 1, widest), metrics.height()};
}

QSize ProblemLabel::minimumSizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const int narrowest = NarrowestCharacters * metrics.averageCharWidth();
    return {qMin(sizeHint().width(), narrowest), metrics.height()};
}

void ProblemLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, width());
    style()->drawItemText(&painter, rect(), Qt::AlignLeft | Qt::AlignVCenter, palette(),
                          isEnabled(), shown, foregroundRole());
}
