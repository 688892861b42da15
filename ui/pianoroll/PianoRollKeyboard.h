#pragma once

#include <QGraphicsView>

/// The keyboard beside the piano roll, whose keys can be seen pressed.
class PianoRollKeyboard : public QGraphicsView {
    Q_OBJECT

public:
    explicit PianoRollKeyboard(QGraphicsView *view);

    void pressKey(int note);
    void releaseKey(int note);
    void releaseAll();
};
