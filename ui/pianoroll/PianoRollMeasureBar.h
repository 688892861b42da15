#pragma once

#include <QGraphicsView>

/// The ruler above the piano roll, with the numbers of the measures.
class PianoRollMeasureBar : public QGraphicsView {
    Q_OBJECT

public:
    explicit PianoRollMeasureBar(QGraphicsView *view);

    void setMeasureLength(quint32 ticks);
};
