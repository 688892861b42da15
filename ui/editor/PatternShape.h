#pragma once

#include <QString>

/// What can be seen of the text of a regular expression without compiling it: how much work it may
/// make. For one that is not valid the numbers mean nothing.
struct PatternShape {
    /// Characters, classes and groups, each as often as a repetition like {3} has it.
    double atoms = 0;
    /// Those of them that may be left out, come again, or have an alternative.
    double branches = 0;
    /// How many levels of look-aheads lie in each other; one more with back-references.
    int depth = 0;
    /// How many groups lie in each other.
    int nesting = 0;
    /// The pattern with each "^" turned into what never matches.
    QString withoutCarets;

    static PatternShape of(const QString &pattern);

    /// In steps of some nanoseconds, more than matching at one place of a text of this length
    /// takes at the worst.
    double effort(int length) const;
    /// Whether it is compiled in less than a second or two, and in little memory.
    bool isModest() const;
};
