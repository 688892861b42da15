#pragma once

#include <QObject>
#include <QPoint>

class QWheelEvent;
class QWidget;

/// Zooming with the wheel while Ctrl is held, or Ctrl and Shift for the vertical direction.
class WheelZoom : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Wheel events with Ctrl no longer reach the widget.
    void watch(QWidget *widget);

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    /// By a notch of the wheel, positive inwards. `place` is global.
    void turned(Qt::Orientation orientation, int notches, const QPoint &place);

private:
    void turn(const QWheelEvent &event);

    int m_angle = 0; // what does not make a notch yet
};
