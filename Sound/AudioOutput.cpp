#include "Sound/AudioOutput.h"

#include "Sound/LiveOutput.h"

std::unique_ptr<AudioOutput> defaultAudioOutput()
{
    return std::make_unique<LiveOutput>();
}
