#include "Sound/PreparePool.h"

#include <algorithm>
#include <csignal>
#include <new>
#include <system_error>
#include <utility>

namespace {

/// A thread that holds signals back would not expect them to be handled here.
void leaveSignalsToOthers()
{
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

} // namespace

Preparation::Preparation(Make make)
    : m_make(std::move(make))
{
}

void Preparation::run()
{
    if (claim())
        finish(make());
}

const AudioSample &Preparation::sample()
{
    waitUntilDone();
    return m_sample;
}

FMOD_RESULT Preparation::takeError()
{
    const auto lock = waitUntilDone();
    return std::exchange(m_error, FMOD_OK);
}

bool Preparation::isDone() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_state == State::Done;
}

bool Preparation::claim()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_state != State::Open)
        return false;
    m_state = State::Running;
    return true;
}

FMOD_RESULT Preparation::make() noexcept
{
    FMOD_RESULT result = FMOD_ERR_INTERNAL;
    try {
        result = m_make(m_sample);
    } catch (const std::bad_alloc &) {
        result = FMOD_ERR_MEMORY;
    } catch (...) {
        result = FMOD_ERR_INTERNAL;
    }
    if (result != FMOD_OK)
        m_sample = AudioSample();
    m_make = nullptr;
    return result;
}

void Preparation::finish(FMOD_RESULT error)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_error = error;
    m_state = State::Done;
    m_done.notify_all();
}

std::unique_lock<std::mutex> Preparation::waitUntilDone()
{
    run();
    std::unique_lock<std::mutex> lock(m_mutex);
    m_done.wait(lock, [this] { return m_state == State::Done; });
    return lock;
}

unsigned PreparePool::defaultThreads()
{
    return std::clamp(std::thread::hardware_concurrency(), 1U, 8U);
}

PreparePool::PreparePool(unsigned threads)
    : m_maxThreads(threads)
{
}

PreparePool::~PreparePool()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closing = true;
    }
    m_changed.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

std::shared_ptr<Preparation> PreparePool::add(Preparation::Make make)
{
    auto added = std::make_shared<Preparation>(std::move(make));
    startThread();
    const std::shared_ptr<Preparation> surplus = push(added);
    m_changed.notify_one();
    if (surplus != nullptr)
        surplus->run();
    return added;
}

void PreparePool::startThread()
{
    if (m_threads.size() >= m_maxThreads)
        return;
    m_threads.reserve(m_maxThreads);
    try {
        m_threads.emplace_back([this] { work(); });
    } catch (const std::system_error &) {
        m_maxThreads = m_threads.size(); // the system gives no more
    }
}

/// Answers what has to be made at once, so that the queue stays short.
std::shared_ptr<Preparation> PreparePool::push(const std::shared_ptr<Preparation> &added)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_queue.push_back(added);
    return m_queue.size() > m_maxQueued ? takeFirst() : nullptr;
}

void PreparePool::standIn()
{
    if (!m_threads.empty() || m_queue.empty()) // without threads the queue is the caller's alone
        return;
    const std::shared_ptr<Preparation> first = takeFirst();
    if (first != nullptr)
        first->run();
}

std::shared_ptr<Preparation> PreparePool::takeFirst()
{
    std::shared_ptr<Preparation> first = m_queue.front().lock();
    m_queue.pop_front();
    return first;
}

void PreparePool::work()
{
    leaveSignalsToOthers();
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_closing || !m_queue.empty(); });
        if (m_closing)
            return;
        std::shared_ptr<Preparation> next = takeFirst();
        lock.unlock();
        if (next != nullptr)
            next->run();
        next.reset(); // may be the last to hold a large sample
        lock.lock();
    }
}
