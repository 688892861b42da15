#pragma once

class QBoxLayout;
class TrackWidget;

/// The rows of the track list from top to bottom. Behind the last one the layout has a spacer,
/// which stays the last.
class TrackColumn {
public:
    /// Without a layout there are no rows, and nothing is done.
    explicit TrackColumn(QBoxLayout *layout)
        : m_layout(layout)
    {
    }

    bool exists() const { return m_layout != nullptr; }

    void append(TrackWidget *row);
    /// Only from the column; the row lives on.
    void remove(TrackWidget *row);

    /// The place from the top, or -1.
    int rowIndex(const TrackWidget *row) const;

    /// Each swaps the row with its neighbour, if it has one there.
    void moveUp(const TrackWidget *row);
    void moveDown(const TrackWidget *row);

    /// Lets every row be moved but beyond the ends.
    void updateMoveButtons() const;

private:
    int spacerIndex() const;
    TrackWidget *rowAt(int index) const;
    void swapWithNext(int index);

    QBoxLayout *m_layout;
};
