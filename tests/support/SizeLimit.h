#pragma once

#include <csignal>

#include <sys/resource.h>

/// Files may not grow beyond a size for its lifetime, as on a full disk.
class SizeLimit {
public:
    explicit SizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit = {bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    SizeLimit(const SizeLimit &) = delete;
    SizeLimit &operator=(const SizeLimit &) = delete;

private:
    rlimit m_before = {};
};
