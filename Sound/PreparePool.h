#pragma once

#include "Sound/AudioSample.h"
#include "Sound/Fmod.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// A sample that is made in pieces, each by the thread that gets to it first. Every function may
/// be called by any thread, but not by the audio callback, for which there is sample() alone.
class Preparation {
public:
    /// What goes on with the sample until it has so many frames or is complete. It is called again
    /// for every piece, by one thread at a time, until the sample is complete. An error or an
    /// exception completes it with what was published before. It may wait for another
    /// preparation, as long as that makes no circle.
    using Make = std::function<FMOD_RESULT(AudioSample &sample, std::size_t frames)>;

    /// The frames of a sample that is wanted to its end.
    static constexpr std::size_t All = std::numeric_limits<std::size_t>::max();
    /// What is made of every sample ahead of its use, so that a voice can begin: 0.3 s at 48 kHz.
    static constexpr std::size_t HeadFrames = 14400;

    explicit Preparation(Make make);

    /// Makes what is missing of the first `frames` frames, unless another thread is at the sample.
    /// Does not throw.
    void run(std::size_t frames);
    /// Likewise, but also waits for the other thread. Afterwards sample().has(frames).
    void makeUpTo(std::size_t frames);

    /// What there is of it so far.
    const AudioSample &sample() const { return m_sample; }

    /// Why no more of the sample could be made, told once: FMOD_OK from the second call on, and
    /// while nothing went wrong.
    FMOD_RESULT takeError();

private:
    friend class PreparePool;

    void make(std::unique_lock<std::mutex> &lock, std::size_t frames);
    FMOD_RESULT tryMake(std::size_t frames) noexcept;

    std::mutex m_mutex; // for the error and who is at it; the rest is the running thread's
    std::condition_variable m_paused;
    bool m_isRunning = false;
    FMOD_RESULT m_error = FMOD_OK;
    Make m_make; // gone when the sample is complete, and what it holds with it
    AudioSample m_sample;
    std::size_t m_asked = HeadFrames; // of the pool, which guards it
};

/// Threads that make samples ahead of their use, piece by piece: first the heads of all samples,
/// in the order they were asked for, then the further pieces.
///
/// What is due before a thread came to it is made by the thread that needs it, so that all works,
/// only slower, where no thread can be started. The results do not depend on who made them.
class PreparePool {
public:
    /// The heads that may wait before add() lends a hand.
    static constexpr std::size_t MaxQueued = 64;
    /// The same where the caller of add() has no time to lend.
    static constexpr std::size_t MaxQueuedLive = 512;

    /// One per processor, at least 1 and at most 8.
    static unsigned defaultThreads();

    /// Threads are started when there is something to do; with 0 there are none.
    explicit PreparePool(unsigned threads = defaultThreads());
    /// Ends after the pieces that are being made. What waits is then left to those who hold it.
    ~PreparePool();
    PreparePool(const PreparePool &) = delete;
    PreparePool &operator=(const PreparePool &) = delete;

    // For one thread, which owns the pool.

    /// Queues the making of a sample's head. When nobody holds the preparation any more before a
    /// thread came to it, it is dropped, here as in ask().
    std::shared_ptr<Preparation> add(Preparation::Make make);
    /// Queues what is missing of the first `frames` frames, unless that was asked for before.
    void ask(const std::shared_ptr<Preparation> &preparation, std::size_t frames);

    /// Before add().
    void setMaxQueued(std::size_t count) { m_maxQueued = count; }
    /// Makes the first that waits where no thread could be started; else does nothing. For when
    /// the caller will not wait for what it added.
    void standIn();

private:
    struct Job {
        std::shared_ptr<Preparation> preparation;
        std::size_t frames = 0;

        void run() const;
    };
    using Queue = std::deque<std::weak_ptr<Preparation>>;

    void startThread();
    void work();
    bool isIdle() const { return m_heads.empty() && m_pieces.empty(); }
    Job takeFirst();
    Job pushHead(const std::shared_ptr<Preparation> &added);

    std::mutex m_mutex; // for the queues, what was asked for, and the end
    std::condition_variable m_changed;
    Queue m_heads;
    Queue m_pieces;
    bool m_closing = false;
    std::vector<std::thread> m_threads;
    std::size_t m_maxThreads;
    std::size_t m_maxQueued = MaxQueued;
};
