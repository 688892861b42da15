#pragma once

#include <QGraphicsRectItem>

/// One key of the keyboard beside the piano roll.
class PianoRollKey : public QGraphicsRectItem {
public:
    explicit PianoRollKey(int note);

    void press();
    void release();
    void reset();
};
