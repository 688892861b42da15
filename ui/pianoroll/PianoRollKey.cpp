#include "ui/pianoroll/PianoRollKey.h"

#include "ui/pianoroll/PianoKeys.h"

#include <QBrush>
#include <QPen>

namespace {

QColor releasedColor(bool isBlack)
{
    return isBlack ? QColor(64, 64, 64) : QColor(255, 255, 255);
}

QColor pressedColor(bool isBlack)
{
    return isBlack ? QColor(192, 192, 192) : QColor(128, 128, 128);
}

} // namespace

PianoRollKey::PianoRollKey(int note)
    : QGraphicsRectItem(PianoKeys::outline(note))
    , m_black(PianoKeys::isBlack(note))
    , m_note(static_cast<quint32>(note))
{
    setPen(QPen(Qt::black, 0)); // cosmetic
    setZValue(m_black ? 1 : 0);
    setToolTip(PianoKeys::name(note));
    showReleased();
}

void PianoRollKey::press()
{
    if (m_pressCount++ == 0)
        setBrush(pressedColor(m_black));
}

void PianoRollKey::release()
{
    if (m_pressCount > 0 && --m_pressCount == 0)
        showReleased();
}

void PianoRollKey::reset()
{
    if (m_pressCount == 0)
        return;
    m_pressCount = 0;
    showReleased();
}

void PianoRollKey::showReleased()
{
    setBrush(releasedColor(m_black));
}
