#include "ui/dialogs/ColorWidget.h"

ColorWidget::ColorWidget(QWidget *parent)
    : QFrame(parent)
{
    setColor(Qt::black);
}

void ColorWidget::setColor(const QColor &color)
{
    m_color = color;
    setStyleSheet(QStringLiteral("border: 2px solid black; border-radius: 4px; "
                                 "background-color: %1;")
                      .arg(color.name()));
    setAccessibleDescription(color.name());
}
