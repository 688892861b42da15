#pragma once

#include "Sound/WaveOutput.h"

#include <QMetaType>
#include <QtGlobal>

/// What a finished render wrote.
struct RenderResult {
    quint64 frames = 0;
    double seconds = 0.0; ///< length of the file
    quint64 notes = 0;    ///< notes that were handed to the sound system
    float peak = 0.0F;    ///< largest absolute sample; 1 is full scale, the mix may lie beyond
    quint64 clipped = 0;  ///< samples that had to be clamped

    /// Without the notes. `rate` is in frames per second.
    static RenderResult of(const WaveOutput::Report &report, int rate)
    {
        RenderResult result;
        result.frames = report.frames;
        result.seconds = rate > 0 ? static_cast<double>(report.frames) / rate : 0.0;
        result.peak = report.peak;
        result.clipped = report.clipped;
        return result;
    }
};

Q_DECLARE_METATYPE(RenderResult)
