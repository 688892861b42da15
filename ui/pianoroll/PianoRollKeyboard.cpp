#include "ui/pianoroll/PianoRollKeyboard.h"

#include "ui/pianoroll/PianoRollGrid.h"
#include "ui/pianoroll/PianoRollKey.h"
#include "ui/pianoroll/ScrollCoupling.h"

#include <QScrollBar>

namespace {

constexpr qreal InitialPixelsPerSemitone = -8.0;

size_t indexOf(int note)
{
    return static_cast<size_t>(note - PianoKeys::Lowest);
}

} // namespace

PianoRollKeyboard::PianoRollKeyboard(QGraphicsView *view, int width)
    : SideView(view, {0, PianoRollGrid::LowestRow, 1, PianoRollGrid::RowCount}, {48, 48, 48})
    , m_view(view)
{
    addKeys();
    scale(width, InitialPixelsPerSemitone);
    ScrollCoupling::coupleRanges(m_view->verticalScrollBar(), verticalScrollBar());
    ScrollCoupling::coupleValues(m_view->verticalScrollBar(), verticalScrollBar());
}

void PianoRollKeyboard::pressKey(int note)
{
    if (PianoKeys::isKey(note))
        key(note)->press();
}

void PianoRollKeyboard::releaseKey(int note)
{
    if (PianoKeys::isKey(note))
        key(note)->release();
}

void PianoRollKeyboard::releaseAll()
{
    for (PianoRollKey *each : m_keys)
        each->reset();
}

void PianoRollKeyboard::addKeys()
{
    for (int note = PianoKeys::Lowest; note <= PianoKeys::Highest; ++note) {
        m_keys[indexOf(note)] = new PianoRollKey(note);
        ownScene()->addItem(m_keys[indexOf(note)]);
    }
}

PianoRollKey *PianoRollKeyboard::key(int note) const
{
    return m_keys[indexOf(note)];
}
