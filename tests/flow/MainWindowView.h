#pragma once

#include "support/Desktop.h"

#include <QImage>
#include <QPoint>
#include <QString>

/// What can be seen in the main window, and where its controls are.
class MainWindowView {
public:
    explicit MainWindowView(Desktop::Window window)
        : m_window(window)
    {
    }

    /// A word for each row from the top: "plain", "selected", "muted" or "selected,muted".
    QString rows() const;
    int rowCount() const;
    /// The picture of a row's notes.
    QImage strip(int row) const;
    /// How far the white line is from the left of a row's strip; -1 where there is none.
    int position(int row) const;

    enum Control { Select, Edit, Up, Remove, Mute, Down };
    void click(int row, Control control, Desktop::Button button = Desktop::Left) const;

private:
    Desktop::Window m_window;
};
