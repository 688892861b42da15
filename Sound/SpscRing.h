#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

/// A queue of fixed size between two threads, of which one only pushes and the other only pops.
///
/// Neither ever waits, and neither allocates after construction. What was written before a push()
/// is seen after the pop() of that item.
template <typename Item> class SpscRing {
public:
    /// Holds `capacity` items, rounded up to a power of two.
    explicit SpscRing(std::size_t capacity)
        : m_items(roundedUp(capacity))
    {
    }

    std::size_t capacity() const { return m_items.size(); }

    /// For the pushing thread; false when there is no room.
    bool push(const Item &item) noexcept
    {
        const std::size_t end = m_end.value.load(std::memory_order_relaxed);
        if (end - m_begin.value.load(std::memory_order_acquire) == m_items.size())
            return false;
        m_items[place(end)] = item;
        m_end.value.store(end + 1, std::memory_order_release);
        return true;
    }

    /// For the popping thread; false when there is nothing.
    bool pop(Item &item) noexcept
    {
        const std::size_t begin = m_begin.value.load(std::memory_order_relaxed);
        if (begin == m_end.value.load(std::memory_order_acquire))
            return false;
        item = m_items[place(begin)];
        m_begin.value.store(begin + 1, std::memory_order_release);
        return true;
    }

private:
    static constexpr std::size_t CacheLine = 64;

    /// Apart from its neighbours, so that the threads do not take a line of the cache from each
    /// other all the time.
    struct Index {
        char before[CacheLine];
        std::atomic<std::size_t> value{0};
    };

    static std::size_t roundedUp(std::size_t capacity)
    {
        std::size_t size = 1;
        while (size < capacity)
            size *= 2;
        return size;
    }

    std::size_t place(std::size_t index) const { return index & (m_items.size() - 1); }

    std::vector<Item> m_items;
    // Both only grow; what they overflow at is a multiple of the size.
    Index m_begin;
    Index m_end;
};
