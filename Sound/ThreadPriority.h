#pragma once

/// How the system weighs threads against the rest of the machine's work.
namespace ThreadPriority {

/// Asks that the calling thread, and those that it starts from then on, come before ordinary work.
/// Where the user is not allowed that, nothing changes.
void prefer();

} // namespace ThreadPriority
