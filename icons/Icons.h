#pragma once

/// The program's pictures, compiled in under ":/icons/".
namespace Icons {

/// Makes them known. The linker drops resources of a static library that nobody names: call once
/// before the first window.
void load();

} // namespace Icons
