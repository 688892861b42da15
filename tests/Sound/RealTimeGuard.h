#pragma once

#include <cstddef>
#include <functional>

/// Traps for what an audio callback must not do.
namespace RealTimeGuard {

/// False in builds with a sanitizer, which has its own functions in place of those watched here,
/// and calls the system as it likes. Nothing is noticed then.
extern const bool isActive;

/// What `work` does on this thread: calls that allocate, free, or lock a mutex.
std::size_t forbiddenCalls(const std::function<void()> &work);

/// Does `work` on a thread of another process, a copy of this one, where the first call of the
/// system would be the last; its main thread does `meanwhile` again and again until the work is
/// done. Answers whether it was done to the end.
bool worksWithoutSystem(const std::function<void()> &work, const std::function<void()> &meanwhile);

} // namespace RealTimeGuard
