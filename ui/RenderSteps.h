#pragma once

#include <QtGlobal>

/// The progress of a render as a progress bar takes it.
struct RenderSteps {
    int value;
    int maximum;

    /// Both as they are where they fit, else scaled down alike. The value is not beyond the
    /// maximum.
    static RenderSteps of(quint64 progress, quint64 total);
};
