#pragma once

#include <QMetaType>
#include <QtGlobal>

/// What a finished render wrote.
struct RenderResult {
    quint64 frames = 0;
    double seconds = 0.0; ///< length of the file
    quint64 notes = 0;    ///< notes that were handed to the sound system
    float peak = 0.0F;    ///< largest absolute sample; 1 is full scale, the mix may lie beyond
    quint64 clipped = 0;  ///< samples that had to be clamped
};

Q_DECLARE_METATYPE(RenderResult)
