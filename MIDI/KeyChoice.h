#pragma once

#include <QString>

#include <optional>

/// A key as the user chooses it: a mode and a number of sharps or flats.
struct KeyChoice {
    quint32 mode = 0; ///< as in the key table: 0 major, 1 minor, 2 mixolydian ... 6 locrian
    quint32 row = 7;  ///< 7 - n has n sharps, 7 + n has n flats

    /// Whether a major key is written out as "Cmaj". Of fromText(): whether the text did so.
    bool hasMajorQualifier = false;

    /// As ABC writes it: "Eb", "Ebmaj", "Cm", "Dmix".
    QString text() const;

    /// The game's own players know major and minor keys alone.
    bool isSupportedByGame() const { return mode <= 1; }

    /// The first key in `text`, in any case: "Bb", "f# minor", "D dor", "A aeo". That is the first
    /// letter and what of a key follows it, so "clef=bass" is C major. Nothing for a text
    /// without letters, or with a tonic that no row has in that mode ("none", "HP", "Fbm").
    static std::optional<KeyChoice> fromText(const QString &text);
};
