#pragma once

#include <QGraphicsRectItem>

/// One key of the keyboard beside the piano roll.
class PianoRollKey : public QGraphicsRectItem {
public:
    /// `note` is a pitch of PianoKeys.
    explicit PianoRollKey(int note);

    quint32 note() const { return m_note; }

    /// Presses are counted, so that notes of one pitch may overlap: the key is up again after as
    /// many releases, or a reset.
    void press();
    void release();
    void reset();

private:
    void showReleased();

    bool m_black;
    quint32 m_note;
    int m_pressCount = 0;
};
