#pragma once

#include "ui/pianoroll/PianoKeys.h"
#include "ui/pianoroll/SideView.h"

#include <array>

class PianoRollKey;

/// The keyboard beside the piano roll, whose keys can be seen pressed. It scrolls vertically with
/// the view that it was made for.
class PianoRollKeyboard : public SideView {
    Q_OBJECT

public:
    /// A child of `view`, which scales it. `width` is in pixels.
    PianoRollKeyboard(QGraphicsView *view, int width);

    /// These ignore notes that have no key.
    void pressKey(int note);
    void releaseKey(int note);
    void releaseAll();

private:
    void addKeys();
    PianoRollKey *key(int note) const;

    QGraphicsView *m_view;                                 // the one it follows
    std::array<PianoRollKey *, PianoKeys::Count> m_keys{}; // the scene's
};
