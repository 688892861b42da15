#include "MIDI/Transforms.h"

namespace Transforms {

Track transposeTrack(const Track &track, int)
{
    return track;
}

Track withUnitLength(const Track &track, const QString &)
{
    return track;
}

Track withKey(const Track &track, const QString &)
{
    return track;
}

Track octaveUp(const Track &track)
{
    return track;
}

Track octaveDown(const Track &track)
{
    return track;
}

Track reread(const Track &track)
{
    return track;
}

} // namespace Transforms
