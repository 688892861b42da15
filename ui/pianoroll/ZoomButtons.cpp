#include "ui/pianoroll/ZoomButtons.h"

#include "ui/pianoroll/PianoRollZoom.h"

#include <QAbstractScrollArea>
#include <QIcon>
#include <QStyle>
#include <QToolButton>

namespace {

constexpr int Margin = 2; // pixels around an icon

/// The scroll bar's thickness is the button's already.
void setLength(QToolButton *button, Qt::Orientation orientation, int length)
{
    if (orientation == Qt::Horizontal)
        button->setFixedWidth(length);
    else
        button->setFixedHeight(length);
}

} // namespace

ZoomButtons::ZoomButtons(QAbstractScrollArea *area, Qt::Orientation orientation)
    : QObject(area)
    , m_area(area)
    , m_orientation(orientation)
    , m_in(addButton("zoom-in", tr("Zoom In")))
    , m_standard(addButton("zoom-default", tr("Default Zoom")))
    , m_out(addButton("zoom-out", tr("Zoom Out")))
{
}

void ZoomButtons::showIndex(const PianoRollZoom::Axis &axis, int index)
{
    m_in->setEnabled(index != axis.last);
    m_standard->setEnabled(index != axis.standard);
    m_out->setEnabled(index != 0);
}

QToolButton *ZoomButtons::addButton(const char *icon, const QString &text)
{
    const int length = m_area->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    auto *button = new QToolButton(m_area);
    button->setAutoRaise(true);
    button->setIcon(QIcon(QStringLiteral(":/icons/%1.png").arg(QLatin1String(icon))));
    button->setIconSize({length - 2 * Margin, length - 2 * Margin});
    button->setToolTip(text);
    button->setAccessibleName(text);
    m_area->addScrollBarWidget(button,
                               m_orientation == Qt::Horizontal ? Qt::AlignRight : Qt::AlignBottom);
    setLength(button, m_orientation, length);
    return button;
}
