#pragma once

#include <QObject>

class QAbstractScrollArea;
class QToolButton;

namespace PianoRollZoom {
struct Axis;
}

/// Three buttons at the end of one of an area's scroll bars, which zoom in its direction.
class ZoomButtons : public QObject {
    Q_OBJECT

public:
    /// The area becomes the parent; the buttons belong to its scroll bar.
    ZoomButtons(QAbstractScrollArea *area, Qt::Orientation orientation);

    QToolButton *in() const { return m_in; }
    QToolButton *standard() const { return m_standard; }
    QToolButton *out() const { return m_out; }

    /// Enables those that would change something.
    void showIndex(const PianoRollZoom::Axis &axis, int index);

private:
    QToolButton *addButton(const char *icon, const QString &text);

    QAbstractScrollArea *m_area;
    Qt::Orientation m_orientation;
    QToolButton *m_in;
    QToolButton *m_standard;
    QToolButton *m_out;
};
