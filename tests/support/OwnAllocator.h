#pragma once

#include <atomic>
#include <cstddef>

/// Watches every allocation of the program that OwnAllocator.cpp is a source of. With the thread
/// sanitizer, whose own functions stand there, it sees none.
namespace OwnAllocator {

/// How many there were so far, on all threads.
extern std::atomic<std::size_t> allocations;

/// Whether the next one of this thread finds no memory; false again after it.
extern thread_local bool isShort;

} // namespace OwnAllocator
