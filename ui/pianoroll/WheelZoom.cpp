#include "ui/pianoroll/WheelZoom.h"

#include <QWheelEvent>
#include <QWidget>

void WheelZoom::watch(QWidget *widget)
{
    widget->installEventFilter(this);
}

bool WheelZoom::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Wheel)
        return QObject::eventFilter(watched, event);
    const auto &wheel = static_cast<const QWheelEvent &>(*event);
    if (!wheel.modifiers().testFlag(Qt::ControlModifier))
        return false;
    turn(wheel);
    return true;
}

void WheelZoom::turn(const QWheelEvent &event)
{
    m_angle += event.angleDelta().y();
    const int notches = m_angle / QWheelEvent::DefaultDeltasPerStep;
    m_angle %= QWheelEvent::DefaultDeltasPerStep;
    const bool isVertical = event.modifiers().testFlag(Qt::ShiftModifier);
    if (notches != 0)
        emit turned(isVertical ? Qt::Vertical : Qt::Horizontal, notches,
                    event.globalPosition().toPoint());
}
