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

/// Where to save, with `name` as the proposal. A name typed without a suffix gets that of the
/// filter; whether an existing file may be replaced has been asked. Opens in the directory that
/// `start` holds and stores the chosen one in `chosen`.
QString saveFile(QWidget *parent, const QString &caption, const QString &filter,
                 const QString &name, Settings::Setting start, Settings::Setting chosen);

/// An existing directory, starting at `start`.
QString directory(QWidget *parent, const QString &caption, const QString &start);

} // namespace FileDialogs
