#pragma once

#include <QList>
#include <QString>
#include <QUrl>

/// What a drag brings to the main window.
namespace DroppedFiles {

enum Kind { Abc, Midi, Other };

/// By the end of the URL's file name: ".abc" or ".mid" in any case, of a local file.
Kind kind(const QUrl &url);

/// Whether there is something, and all of it can be opened.
bool areSuitable(const QList<QUrl> &urls);

/// The path of a local file, whose name may be any bytes.
QString path(const QUrl &url);

} // namespace DroppedFiles
