#include "RealTimeGuard.h"

#include <atomic>
#include <thread>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HAS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HAS_SANITIZER
#endif
#endif

#ifdef HAS_SANITIZER

const bool RealTimeGuard::isActive = false;

std::size_t RealTimeGuard::forbiddenCalls(const std::function<void()> &work)
{
    work();
    return 0;
}

bool RealTimeGuard::worksWithoutSystem(const std::function<void()> &work,
                                       const std::function<void()> &meanwhile)
{
    std::atomic<bool> isDone{false};
    std::thread thread([&] {
        work();
        isDone = true;
    });
    while (!isDone)
        meanwhile();
    thread.join();
    return true;
}

#else

#include <cerrno>
#include <cstddef>

#include <dlfcn.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

const bool RealTimeGuard::isActive = true;

namespace {

constexpr unsigned MaxSeconds = 120;

thread_local bool isWatched = false;
thread_local std::size_t calls = 0;

void note()
{
    if (isWatched)
        ++calls;
}

/// The next system call of this thread, other than its end, ends the process.
bool giveUpTheSystem()
{
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
    };
    const sock_fprog program = {sizeof rules / sizeof rules[0], rules};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

[[noreturn]] void workInChild(const std::function<void()> &work,
                              const std::function<void()> &meanwhile)
{
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    alarm(MaxSeconds); // a copy that hangs is gone by itself
    static std::atomic<bool> isDone{false};
    std::thread([&work] {
        if (!giveUpTheSystem())
            _exit(2);
        work();
        isDone = true;
        syscall(SYS_exit, 0);
    }).detach();
    while (!isDone)
        meanwhile();
    _exit(0);
}

} // namespace

std::size_t RealTimeGuard::forbiddenCalls(const std::function<void()> &work)
{
    calls = 0;
    isWatched = true;
    work();
    isWatched = false;
    return calls;
}

bool RealTimeGuard::worksWithoutSystem(const std::function<void()> &work,
                                       const std::function<void()> &meanwhile)
{
    const pid_t child = fork();
    if (child == 0)
        workInChild(work, meanwhile);
    int status = -1;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// All of this program's allocations pass here, those of the standard library too.
extern "C" {

void *libcMalloc(std::size_t size) __asm__("__libc_malloc");
void *libcCalloc(std::size_t count, std::size_t size) __asm__("__libc_calloc");
void *libcRealloc(void *memory, std::size_t size) __asm__("__libc_realloc");
void *libcMemalign(std::size_t alignment, std::size_t size) __asm__("__libc_memalign");
void libcFree(void *memory) __asm__("__libc_free");

void *malloc(std::size_t size) noexcept
{
    note();
    return libcMalloc(size);
}

void *calloc(std::size_t count, std::size_t size) noexcept
{
    note();
    return libcCalloc(count, size);
}

void *realloc(void *memory, std::size_t size) noexcept
{
    note();
    return libcRealloc(memory, size);
}

void *aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    note();
    return libcMemalign(alignment, size);
}

int posix_memalign(void **memory, std::size_t alignment, std::size_t size) noexcept
{
    note();
    *memory = libcMemalign(alignment, size);
    return *memory != nullptr ? 0 : ENOMEM;
}

void free(void *memory) noexcept
{
    note();
    libcFree(memory);
}

int pthread_mutex_lock(pthread_mutex_t *mutex) noexcept
{
    using Lock = int (*)(pthread_mutex_t *);
    static std::atomic<Lock> lock{nullptr};
    note();
    if (lock == nullptr)
        lock = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    return lock.load()(mutex);
}

} // extern "C"

#endif
