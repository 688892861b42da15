#pragma once

#include <cstddef>

/// Where a writer's bytes go. Every call answers whether it worked; after a failure the sink is
/// only good for being destroyed, which drops what was not committed.
class ByteSink {
public:
    ByteSink() = default;
    virtual ~ByteSink() = default;
    ByteSink(const ByteSink &) = delete;
    ByteSink &operator=(const ByteSink &) = delete;

    virtual bool append(const void *bytes, std::size_t count) = 0;
    /// Overwrites the first bytes, nothing is appended after that.
    virtual bool rewriteStart(const void *bytes, std::size_t count) = 0;
    /// Puts the finished whole in place.
    virtual bool commit() = 0;
};
