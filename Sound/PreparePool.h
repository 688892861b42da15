#pragma once

#include "Sound/AudioSample.h"
#include "Sound/Fmod.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// A sample that is made once, by the thread that gets to it first. Every function may be called
/// by any thread, but not by the audio callback.
class Preparation {
public:
    /// What fills the (empty) sample. On an error or an exception the sample stays silent. It may
    /// wait for another preparation, as long as that makes no circle.
    using Make = std::function<FMOD_RESULT(AudioSample &)>;

    explicit Preparation(Make make);

    /// Makes the sample, unless that is done or another thread is at it. Does not throw.
    void run();

    /// The sample, without frames where it could not be made. Makes it here or waits for the
    /// thread that does; it does not change any more then.
    const AudioSample &sample();

    /// Why the sample could not be made, told once: FMOD_OK from the second call on. Makes it or
    /// waits like sample().
    FMOD_RESULT takeError();

    bool isDone() const;

private:
    enum class State { Open, Running, Done };

    bool claim();
    FMOD_RESULT make() noexcept;
    void finish(FMOD_RESULT error);
    std::unique_lock<std::mutex> waitUntilDone();

    mutable std::mutex m_mutex; // for the state and the error; the rest is the running thread's
    std::condition_variable m_done;
    State m_state = State::Open;
    FMOD_RESULT m_error = FMOD_OK;
    Make m_make; // gone when done, and what it holds with it
    AudioSample m_sample;
};

/// Threads that make samples ahead of their use, in the order they were asked for.
///
/// What is due before a thread came to it is made by the thread that needs it, so that all works,
/// only slower, where no thread can be started. The results do not depend on who made them.
class PreparePool {
public:
    /// What may wait before add() lends a hand; it bounds the open files and bytes in memory.
    static constexpr std::size_t MaxQueued = 64;
    /// The same where the caller of add() has no time to lend.
    static constexpr std::size_t MaxQueuedLive = 512;

    /// One per processor, at least 1 and at most 8.
    static unsigned defaultThreads();

    /// Threads are started when there is something to do; with 0 there are none.
    explicit PreparePool(unsigned threads = defaultThreads());
    /// Ends after what is being made. What waits is then left to those who hold it.
    ~PreparePool();
    PreparePool(const PreparePool &) = delete;
    PreparePool &operator=(const PreparePool &) = delete;

    /// Queues the making of a sample. When nobody holds the preparation any more before a thread
    /// came to it, it is dropped.
    std::shared_ptr<Preparation> add(Preparation::Make make);

    /// For the thread that calls add(), and before it does.
    void setMaxQueued(std::size_t count) { m_maxQueued = count; }
    /// Makes the first that waits where no thread could be started; else does nothing. For the
    /// thread that calls add(), when it will not wait for what it added.
    void standIn();

private:
    using Queue = std::deque<std::weak_ptr<Preparation>>;

    void startThread();
    void work();
    std::shared_ptr<Preparation> takeFirst();
    std::shared_ptr<Preparation> push(const std::shared_ptr<Preparation> &added);

    std::mutex m_mutex; // for the queue and the end
    std::condition_variable m_changed;
    Queue m_queue;
    bool m_closing = false;
    std::vector<std::thread> m_threads;
    std::size_t m_maxThreads;
    std::size_t m_maxQueued = MaxQueued;
};
