#pragma once

#include <QString>

/// Finding out where the game is installed.
namespace GameSearch {

/// The directory that the settings hold, else the usual place, else what the user chooses when
/// asked. What was not in the settings is stored there. Empty when the user gives up.
QString findGame();

} // namespace GameSearch
