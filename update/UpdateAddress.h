#pragma once

#include <QString>
#include <QUrl>

/// Where the newest version is asked for.
namespace UpdateAddress {

/// The host, with its port where that is not 80: the environment variable QUILLMOOR_UPDATE_HOST,
/// by which an administrator can name a server of the house, or unless that has a value the host
/// that was given to CMake under the same name.
QString configuredHost();

/// The address on a host; not valid when the text is no host.
QUrl onHost(const QString &host);

/// The address on the configured host, fixed for the rest of the process by the first call.
const QUrl &address();

} // namespace UpdateAddress
