#pragma once

#include <QColor>
#include <QString>

class QWidget;

/// The modal dialog in which the user picks a colour.
namespace ColorDialogs {

/// An opaque colour, `start` being chosen at first; not valid when the user cancels.
QColor color(QWidget *parent, const QString &title, const QColor &start);

} // namespace ColorDialogs
