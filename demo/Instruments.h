#pragma once

#include "demo/Icons.h"
#include "demo/Signal.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <functional>
#include <vector>

namespace Demo {

/// One sample of an instrument, not made yet.
struct SamplePlan {
    int note;
    QString fileName;
    std::function<Sound()> make; ///< finished sound; may run on any thread
};

/// An instrument of the demo game, as it will be made.
struct InstrumentPlan {
    QString name; ///< what the user reads
    QString kind; ///< the name of its folder
    QString description;
    double fadeout; ///< seconds
    IconPainter icon;
    std::vector<SamplePlan> samples; ///< ascending by note
};

/// The instruments of the game's own package.
std::vector<InstrumentPlan> gameInstruments();
/// The one that comes as a mod in a directory, and the one that comes as a packaged mod.
InstrumentPlan looseModInstrument();
InstrumentPlan packagedModInstrument();

/// Files by their absolute asset path.
using Assets = QMap<QString, QByteArray>;

/// Makes every sample, icon, description and tuning of the instruments, on all processors. The
/// answer has one element for each of `plans`. Throws a QString if a sample cannot be encoded.
std::vector<Assets> makeAssets(const std::vector<InstrumentPlan> &plans);

} // namespace Demo
