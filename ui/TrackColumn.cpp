#include "ui/TrackColumn.h"

#include "ui/tracks/TrackWidget.h"

#include <QBoxLayout>

/// A row that is shown makes the layout place all rows at once, unless that is off. On again, it
/// does so when the event loop comes to it, once for however many rows.
void TrackColumn::append(TrackWidget *row)
{
    if (!exists())
        return;
    m_layout->insertWidget(spacerIndex(), row);
    m_layout->setEnabled(false);
    row->show();
    m_layout->setEnabled(true);
}

void TrackColumn::remove(TrackWidget *row)
{
    if (exists())
        m_layout->removeWidget(row);
}

int TrackColumn::rowIndex(const TrackWidget *row) const
{
    for (int i = 0; i < spacerIndex(); ++i) {
        if (rowAt(i) == row)
            return i;
    }
    return -1;
}

void TrackColumn::moveUp(const TrackWidget *row)
{
    const int index = rowIndex(row);
    if (index >= 1)
        swapWithNext(index - 1);
}

void TrackColumn::moveDown(const TrackWidget *row)
{
    const int index = rowIndex(row);
    if (index >= 0 && index < spacerIndex() - 1)
        swapWithNext(index);
}

void TrackColumn::updateMoveButtons() const
{
    const int last = spacerIndex() - 1;
    for (int i = 0; i <= last; ++i) {
        TrackWidget *const row = rowAt(i);
        if (row == nullptr)
            return;
        row->setMoveEnabled(i != 0, i != last);
    }
}

/// -1 without a layout.
int TrackColumn::spacerIndex() const
{
    return exists() ? m_layout->count() - 1 : -1;
}

TrackWidget *TrackColumn::rowAt(int index) const
{
    return qobject_cast<TrackWidget *>(m_layout->itemAt(index)->widget());
}

void TrackColumn::swapWithNext(int index)
{
    QLayoutItem *const upper = m_layout->takeAt(index);
    m_layout->insertItem(index + 1, upper);
    updateMoveButtons();
}
