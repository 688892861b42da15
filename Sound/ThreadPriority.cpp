#include "Sound/ThreadPriority.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// A thread of an ordinary program has 0. Not the lowest: what mixes for a device has that.
constexpr int Niceness = -10;

} // namespace

void ThreadPriority::prefer()
{
    const auto thread = static_cast<id_t>(syscall(SYS_gettid));
    if (getpriority(PRIO_PROCESS, thread) > Niceness)
        setpriority(PRIO_PROCESS, thread, Niceness);
}
