#include "ui/pianoroll/PianoKeys.h"

#include <array>

namespace {

constexpr int Semitones = 12;
constexpr qreal BlackWidth = 0.6;

/// C, D and E share the five lower semitones of an octave, F to B the seven upper ones.
constexpr int LowerWhiteKeys = 3;
constexpr qreal LowerHeight = 5.0 / 3;
constexpr qreal UpperStart = 5.0;
constexpr qreal UpperHeight = 1.75;

struct PitchClass {
    const char *name;
    int whiteKey; // counted from C; -1 for a black key
};

constexpr std::array<PitchClass, Semitones> pitchClasses{{{"C", 0},
                                                          {"C#", -1},
                                                          {"D", 1},
                                                          {"D#", -1},
                                                          {"E", 2},
                                                          {"F", 3},
                                                          {"F#", -1},
                                                          {"G", 4},
                                                          {"G#", -1},
                                                          {"A", 5},
                                                          {"A#", -1},
                                                          {"B", 6}}};

const PitchClass &entry(int pitch)
{
    return pitchClasses[static_cast<size_t>(PianoKeys::pitchClass(pitch))];
}

QRectF whiteOutline(int octaveStart, int whiteKey)
{
    if (whiteKey < LowerWhiteKeys)
        return {0.0, octaveStart + whiteKey * LowerHeight, 1.0, LowerHeight};
    const qreal offset = UpperStart + (whiteKey - LowerWhiteKeys) * UpperHeight;
    return {0.0, octaveStart + offset, 1.0, UpperHeight};
}

} // namespace

namespace PianoKeys {

int pitchClass(int pitch)
{
    const int remainder = pitch % Semitones;
    return remainder < 0 ? remainder + Semitones : remainder;
}

bool isBlack(int pitch)
{
    return entry(pitch).whiteKey < 0;
}

QString name(int pitch)
{
    return QStringLiteral("%1%2").arg(QLatin1String(entry(pitch).name)).arg(pitch / Semitones);
}

QRectF outline(int pitch)
{
    if (isBlack(pitch))
        return {0.0, static_cast<qreal>(pitch), BlackWidth, 1.0};
    return whiteOutline(pitch - pitchClass(pitch), entry(pitch).whiteKey);
}

} // namespace PianoKeys
