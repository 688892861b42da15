#pragma once

#include <cstddef>

#include <pthread.h>

/// Lets no thread begin for its lifetime: the stack that each would get is larger than memory.
class ThreadRefusal {
public:
    ThreadRefusal()
    {
        pthread_getattr_default_np(&m_previous);
        pthread_attr_t attributes;
        pthread_getattr_default_np(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t{1} << 60);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }
    ~ThreadRefusal()
    {
        pthread_setattr_default_np(&m_previous);
        pthread_attr_destroy(&m_previous);
    }
    ThreadRefusal(const ThreadRefusal &) = delete;
    ThreadRefusal &operator=(const ThreadRefusal &) = delete;

private:
    pthread_attr_t m_previous;
};
