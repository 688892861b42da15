#pragma once

/// The window program from its first line to its last.
namespace StartUp {

/// Answers the exit status. Call once, from main().
int run(int argc, char **argv);

} // namespace StartUp
