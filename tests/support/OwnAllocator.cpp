#include "support/OwnAllocator.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace OwnAllocator {

std::atomic<std::size_t> allocations{0};
thread_local bool isShort = false;

} // namespace OwnAllocator

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define HAS_SANITIZERS_ALLOCATOR
#endif
#endif
#ifndef HAS_SANITIZERS_ALLOCATOR
void *operator new(std::size_t size)
{
    ++OwnAllocator::allocations;
    const bool isRefused = std::exchange(OwnAllocator::isShort, false);
    void *const memory = isRefused ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}
#endif
