#pragma once

#include "Sound/PreparePool.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

/// The samples of a test: given and compared as a whole.
struct WholeSample {
    std::vector<float> left;
    std::vector<float> right; ///< empty for a mono sound

    WholeSample() = default;
    WholeSample(std::vector<float> leftSide, std::vector<float> rightSide = {});
    /// What there is of it.
    explicit WholeSample(const AudioSample &sample);

    bool isStereo() const { return !right.empty(); }
    std::size_t frames() const { return left.size(); }

    /// Makes it complete.
    void copyTo(AudioSample &sample) const;

    /// A making in one piece, by a function that fills the sample.
    using Fill = std::function<FMOD_RESULT(WholeSample &)>;
    static Preparation::Make made(const Fill &fill);
    static std::shared_ptr<Preparation> preparation(const WholeSample &sample);
};

/// What a mixer plays.
class CompleteSample : public AudioSample {
public:
    explicit CompleteSample(const WholeSample &sample) { sample.copyTo(*this); }
};

/// The whole sample, made here or waited for.
WholeSample whole(Preparation &preparation);
