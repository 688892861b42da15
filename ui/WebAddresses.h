#pragma once

#include <QUrl>

/// The pages that the Help menu leads to.
namespace WebAddresses {

QUrl forum();
QUrl bugTracker();
QUrl donation();

/// Whether it may be opened though a stranger gave it: a web page, and not a local file or another
/// program.
bool isWebPage(const QUrl &url);

} // namespace WebAddresses
