#pragma once

#include "model/Settings.h"

#include <QString>
#include <QStringList>

class QWidget;

/// The modal file dialogs. Each answers an empty text or list when the user cancels it.
///
/// Those that take a setting open in the directory that it holds, and store there the absolute
/// directory of what was chosen.
namespace FileDialogs {

QStringList openFiles(QWidget *parent, const QString &caption, const QString &filter,
                      Settings::Setting directory);
QString openFile(QWidget *parent, const QString &caption, const QString &filter,
                 Settings::Setting directory);

/// An existing directory, starting at `start`.
QString directory(QWidget *parent, const QString &caption, const QString &start);

} // namespace FileDialogs
