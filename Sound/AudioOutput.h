#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

/// What an output plays: an endless stream of frames, made block by block.
class AudioSource {
public:
    /// Writes the next `frames` frames, of which any number is allowed, as pairs of left and
    /// right. Every sample is a number from -1 to 1. Called by one thread at a time; takes no
    /// lock, allocates nothing and makes no system call.
    virtual void fill(float *interleaved, std::size_t frames) noexcept = 0;

protected:
    ~AudioSource() = default;
};

/// Where a source is heard, in real time: a device, or a clock that stands in for one.
///
/// All functions are for one thread, which is not the one that fills. An output whose device
/// fails goes on filling at the pace of a clock, and comes back to the device by itself: for the
/// source time never stands still between start() and stop().
class AudioOutput {
public:
    static constexpr unsigned Rate = 48000;         ///< frames per second
    static constexpr unsigned Channels = 2;         ///< floats per frame
    static constexpr std::size_t BlockFrames = 512; ///< wished for; any other may come

    /// Stops.
    virtual ~AudioOutput() = default;

    /// Begins to call `source.fill()` on a thread of the output's own, every 48000 frames in a
    /// second. Answers false where there is no such thread. Once between construction or stop()
    /// and the next stop(); the source must live until then.
    virtual bool start(AudioSource &source) = 0;

    /// Returns when fill() is not running and will not be called any more. May be called at any
    /// time, also without start().
    virtual void stop() = 0;

    /// Why no sound comes out, as a sentence for the user; empty while it really does, and until
    /// that is known.
    virtual std::string problem() const = 0;
};

/// Makes an output that is not yet started. Never answers null.
using AudioOutputFactory = std::function<std::unique_ptr<AudioOutput>()>;

/// The one of the machine.
std::unique_ptr<AudioOutput> defaultAudioOutput();
