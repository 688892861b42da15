#pragma once

/// The whole program: takes the arguments apart, runs the command, reports what it throws.
namespace Application {

/// Answers the exit status. Call once, from main().
int run(int argc, char **argv);

} // namespace Application
