#include "WholeSample.h"

#include <utility>

WholeSample::WholeSample(std::vector<float> leftSide, std::vector<float> rightSide)
    : left(std::move(leftSide))
    , right(std::move(rightSide))
{
}

WholeSample::WholeSample(const AudioSample &sample)
    : left(sample.left(), sample.left() + sample.frames())
    , right(sample.right(), sample.right() + (sample.isStereo() ? sample.frames() : 0))
{
}

void WholeSample::copyTo(AudioSample &sample) const
{
    sample.allocate(frames(), isStereo());
    sample.append(left.data(), right.data(), frames());
    sample.publish();
    sample.complete();
}

Preparation::Make WholeSample::made(const Fill &fill)
{
    return [fill](AudioSample &sample, std::size_t) {
        WholeSample filled;
        const FMOD_RESULT result = fill(filled);
        if (result == FMOD_OK)
            filled.copyTo(sample);
        return result;
    };
}

std::shared_ptr<Preparation> WholeSample::preparation(const WholeSample &sample)
{
    return std::make_shared<Preparation>([sample](AudioSample &result, std::size_t) {
        sample.copyTo(result);
        return FMOD_OK;
    });
}

WholeSample whole(Preparation &preparation)
{
    preparation.makeUpTo(Preparation::All);
    return WholeSample(preparation.sample());
}
