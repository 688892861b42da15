#pragma once

#include <functional>

/// Work on many things at once whose results are used in their order.
namespace Parallel {

/// As many as there are processors that this process may use.
int threadCount();

/// Calls `work` with every number below `count`, on at most `threads` threads of its own, and
/// `take` on the calling thread with the same numbers in ascending order, each when its work is
/// done. Work runs only so far ahead that little waits to be taken.
///
/// Throws the first that `work`, in this order, or `take` throws; all threads have ended then.
/// The signals that end the program never reach the threads, so that the calling thread may hold
/// them off (see SignalHold).
void inOrder(int count, int threads, const std::function<void(int)> &work,
             const std::function<void(int)> &take);

} // namespace Parallel
