#pragma once

#include "model/Ticks.h"
#include "ui/pianoroll/SideView.h"

/// The ruler above the piano roll, with the numbers of the measures. It scrolls horizontally with
/// the view that it was made for.
class PianoRollMeasureBar : public SideView {
    Q_OBJECT

public:
    static constexpr int Height = 20; // pixels

    /// A child of `view`, which scales it.
    explicit PianoRollMeasureBar(QGraphicsView *view);

    /// Of length 0, and of one that is less than a pixel, measures are not shown.
    void setMeasureLength(quint32 ticks);

protected:
    void drawForeground(QPainter *painter, const QRectF &rect) override;

private:
    void drawMeasure(QPainter *painter, const QRectF &rect, qint64 measure) const;
    void drawNumber(QPainter *painter, qint64 measure) const;

    quint32 m_measureLength = Ticks::PerWholeNote;
};
