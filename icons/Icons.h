#pragma once

#include <QIcon>

/// The program's pictures, compiled in under ":/icons/".
namespace Icons {

/// Makes them known. The linker drops resources of a static library that nobody names: call once
/// before the first window.
void load();

/// The program's own icon in all sizes, from title bar to task switcher. After load().
QIcon application();

} // namespace Icons
