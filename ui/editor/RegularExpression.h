#pragma once

#include "ui/editor/PatternShape.h"
#include "ui/editor/TextPattern.h"

#include <QRegExp>

/// A regular expression in the syntax of QRegExp.
///
/// QRegExp never takes exponential time, but it cannot be interrupted, and a pattern that fails
/// late at every place, such as "(a+)+$" or just ".*x", takes time that grows with the square of
/// the line's length: 1 s for 8,000 characters, days for a line of 5 MB. Back-references and
/// look-aheads add a power each. So a long line is tried one place after the other with the watch
/// called in between, and a line at which a single place could take longer than a second or two
/// is refused.
class RegularExpression : public TextPattern {
public:
    /// Throws a QString when the pattern is not valid or would take too long to compile.
    RegularExpression(const QString &pattern, Qt::CaseSensitivity sensitivity);

    bool isEmpty() const override;
    bool spansLines() const override;
    /// These four throw a QString when the text is too long for the pattern.
    std::optional<TextMatch> firstFrom(const QString &line, int from,
                                       const SearchWatch &watch) const override;
    std::optional<TextMatch> lastFrom(const QString &line, int from,
                                      const SearchWatch &watch) const override;
    std::optional<TextMatch> at(const QString &line, int start) const override;
    std::optional<TextMatch> whole(const QString &text) const override;

    /// With \1 to \9 and so on replaced by what the groups have caught, as QString::replace() does.
    QString replacement(const TextMatch &match, const QString &after) const override;

private:
    bool isQuick(int length) const;
    void requireBearable(int length) const;

    PatternShape m_shape;
    QRegExp m_anywhere;
    QRegExp m_atLineStart;
    QRegExp m_laterInLine;
};
