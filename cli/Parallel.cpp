#include "cli/Parallel.h"

#include "model/Signals.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

#include <sched.h>

namespace {

using Task = std::function<void(int)>;

constexpr int AheadPerThread = 2;

/// The threads and what they have done.
class Crew {
public:
    Crew(int count, int threads, const Task &work);
    ~Crew();
    Crew(const Crew &) = delete;
    Crew &operator=(const Crew &) = delete;

    /// Returns when the work is done; throws what it threw.
    void await(int number);

private:
    void start(int threads);
    void run();
    std::optional<int> next();
    void perform(int number);

    const Task &m_work;
    const int m_count;
    const int m_ahead;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_next = 0;
    int m_awaited = 0;
    bool m_isStopped = false;
    // Set when the work is done, to what it threw or to nothing.
    std::vector<std::optional<std::exception_ptr>> m_outcomes;
    std::vector<std::thread> m_threads;
};

Crew::Crew(int count, int threads, const Task &work)
    : m_work(work)
    , m_count(count)
    , m_ahead(threads * AheadPerThread)
    , m_outcomes(static_cast<size_t>(count))
{
    start(std::min(count, threads));
}

Crew::~Crew()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isStopped = true;
    }
    m_changed.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

void Crew::start(int threads)
{
    const SignalHold hold; // which the threads inherit
    m_threads.reserve(static_cast<size_t>(threads));
    try {
        for (int i = 0; i < threads; ++i)
            m_threads.emplace_back([this] { run(); });
    } catch (const std::system_error &) {
        if (m_threads.empty()) // else fewer will do
            throw;
    }
}

void Crew::await(int number)
{
    std::unique_lock lock(m_mutex);
    m_awaited = number;
    m_changed.notify_all();
    const auto &outcome = m_outcomes.at(static_cast<size_t>(number));
    m_changed.wait(lock, [&] { return outcome.has_value(); });
    if (*outcome)
        std::rethrow_exception(*outcome);
}

void Crew::run()
{
    while (const auto number = next())
        perform(*number);
}

/// Nothing when there is no more to do.
std::optional<int> Crew::next()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(
        lock, [this] { return m_isStopped || m_next == m_count || m_next <= m_awaited + m_ahead; });
    if (m_isStopped || m_next == m_count)
        return std::nullopt;
    return m_next++;
}

void Crew::perform(int number)
{
    std::exception_ptr failure;
    try {
        m_work(number);
    } catch (...) {
        failure = std::current_exception();
    }
    {
        const std::lock_guard lock(m_mutex);
        m_outcomes.at(static_cast<size_t>(number)) = failure;
    }
    m_changed.notify_all();
}

} // namespace

int Parallel::threadCount()
{
    cpu_set_t usable;
    if (sched_getaffinity(0, sizeof usable, &usable) == 0)
        return std::max(1, CPU_COUNT(&usable));
    // More processors than the set has room for.
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

void Parallel::inOrder(int count, int threads, const Task &work, const Task &take)
{
    Crew crew(count, threads, work);
    for (int i = 0; i < count; ++i) {
        crew.await(i);
        take(i);
    }
}
