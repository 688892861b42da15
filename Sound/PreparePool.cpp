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

void Preparation::run(std::size_t frames)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_isRunning && !m_sample.has(frames))
        make(lock, frames);
}

void Preparation::makeUpTo(std::size_t frames)
{
    if (m_sample.has(frames))
        return;
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_sample.has(frames)) {
        if (m_isRunning)
            m_paused.wait(lock);
        else
            make(lock, frames);
    }
}

FMOD_RESULT Preparation::takeError()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_error, FMOD_OK);
}

void Preparation::make(std::unique_lock<std::mutex> &lock, std::size_t frames)
{
    m_isRunning = true;
    lock.unlock();
    const FMOD_RESULT result = tryMake(frames);
    lock.lock();
    m_isRunning = false;
    if (result != FMOD_OK)
        m_error = result;
    m_paused.notify_all();
}

/// Leaves the sample with all that was wanted, or complete.
FMOD_RESULT Preparation::tryMake(std::size_t frames) noexcept
{
    FMOD_RESULT result = FMOD_ERR_INTERNAL;
    try {
        result = m_make(m_sample, frames);
    } catch (const std::bad_alloc &) {
        result = FMOD_ERR_MEMORY;
    } catch (...) {
        result = FMOD_ERR_INTERNAL;
    }
    if (result == FMOD_OK && !m_sample.has(frames))
        result = FMOD_ERR_INTERNAL;
    if (result != FMOD_OK)
        m_sample.complete();
    if (m_sample.isComplete())
        m_make = nullptr;
    return result;
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
    const Job surplus = pushHead(added);
    m_changed.notify_one();
    surplus.run();
    return added;
}

void PreparePool::ask(const std::shared_ptr<Preparation> &preparation, std::size_t frames)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (preparation->m_asked >= frames || preparation->sample().has(frames))
            return;
        preparation->m_asked = frames;
        m_pieces.push_back(preparation);
    }
    m_changed.notify_one();
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
PreparePool::Job PreparePool::pushHead(const std::shared_ptr<Preparation> &added)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_heads.push_back(added);
    return m_heads.size() > m_maxQueued ? takeFirst() : Job();
}

void PreparePool::standIn()
{
    if (!m_threads.empty() || isIdle()) // without threads the queues are the caller's alone
        return;
    takeFirst().run();
}

PreparePool::Job PreparePool::takeFirst()
{
    const bool isHead = !m_heads.empty();
    Queue &queue = isHead ? m_heads : m_pieces;
    Job first;
    first.preparation = queue.front().lock();
    queue.pop_front();
    if (first.preparation != nullptr)
        first.frames = isHead ? Preparation::HeadFrames : first.preparation->m_asked;
    return first;
}

/// Waits where another thread is at the sample: that one may have been told to make less.
void PreparePool::Job::run() const
{
    if (preparation != nullptr)
        preparation->makeUpTo(frames);
}

void PreparePool::work()
{
    leaveSignalsToOthers();
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_closing || !isIdle(); });
        if (m_closing)
            return;
        Job next = takeFirst();
        lock.unlock();
        next.run();
        next = Job(); // may be the last to hold a large sample
        lock.lock();
    }
}
