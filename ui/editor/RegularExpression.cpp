#include "ui/editor/RegularExpression.h"

namespace {

// With CaretAtOffset such a pattern is tried at the offset alone.
QRegExp anchored(const QString &pattern, Qt::CaseSensitivity sensitivity)
{
    return QRegExp(QStringLiteral("^(?:%1)").arg(pattern), sensitivity);
}

std::optional<TextMatch> found(const QRegExp &expression, int start)
{
    if (start < 0)
        return std::nullopt;
    return TextMatch{start, expression.matchedLength(), expression.capturedTexts()};
}

void requireValid(bool isValid)
{
    if (!isValid)
        throw QStringLiteral("Invalid regular expression");
}

void requireModest(const PatternShape &shape)
{
    if (!shape.isModest())
        throw QStringLiteral("The regular expression is too large.");
}

int digitAt(const QString &text, int position)
{
    return position < text.size() ? text.at(position).digitValue() : -1;
}

/// The group that a reference names, and the length of what names it.
struct Reference {
    int group = -1;
    int length = 0;
};

// Two digits where there are so many groups. What names none is a text like any other.
Reference referenceAt(const QString &text, int position, int groups)
{
    if (text.at(position) != QLatin1Char('\\'))
        return {};
    const int first = digitAt(text, position + 1);
    if (first < 1 || first > groups)
        return {};
    const int second = digitAt(text, position + 2);
    const int both = 10 * first + second;
    return second >= 0 && both <= groups ? Reference{both, 3} : Reference{first, 2};
}

void append(QString &text, const QString &addition)
{
    if (text.size() + addition.size() > TextPattern::LongestText)
        throw QStringLiteral("The text would become too long.");
    text += addition;
}

} // namespace

RegularExpression::RegularExpression(const QString &pattern, Qt::CaseSensitivity sensitivity)
    : m_shape(PatternShape::of(pattern))
{
    requireModest(m_shape);
    m_anywhere = QRegExp(pattern, sensitivity);
    requireValid(m_anywhere.isValid());
    m_atLineStart = anchored(pattern, sensitivity);
    m_laterInLine = anchored(m_shape.withoutCarets, sensitivity);
}

bool RegularExpression::isEmpty() const
{
    return m_anywhere.isEmpty();
}

// "^" and "$" are the ends of what is searched, so that must be a line.
bool RegularExpression::spansLines() const
{
    return false;
}

std::optional<TextMatch> RegularExpression::firstFrom(const QString &line, int from,
                                                      const SearchWatch &watch) const
{
    watch();
    if (isQuick(line.size()))
        return found(m_anywhere, m_anywhere.indexIn(line, from));
    for (int start = from; start <= line.size(); ++start, watch())
        if (auto match = at(line, start))
            return match;
    return std::nullopt;
}

std::optional<TextMatch> RegularExpression::lastFrom(const QString &line, int from,
                                                     const SearchWatch &watch) const
{
    watch();
    if (isQuick(line.size()))
        return found(m_anywhere, m_anywhere.lastIndexIn(line, from));
    for (int start = from; start >= 0; --start, watch())
        if (auto match = at(line, start))
            return match;
    return std::nullopt;
}

std::optional<TextMatch> RegularExpression::at(const QString &line, int start) const
{
    requireBearable(line.size());
    const QRegExp &expression = start == 0 ? m_atLineStart : m_laterInLine;
    return found(expression, expression.indexIn(line, start, QRegExp::CaretAtOffset));
}

std::optional<TextMatch> RegularExpression::whole(const QString &text) const
{
    requireBearable(text.size());
    return found(m_anywhere, m_anywhere.exactMatch(text) ? 0 : -1);
}

QString RegularExpression::replacement(const TextMatch &match, const QString &after) const
{
    if (!after.contains(QLatin1Char('\\')))
        return after;
    const int groups = match.captures.size() - 1;
    QString text;
    for (int position = 0; position < after.size();) {
        const Reference reference = referenceAt(after, position, groups);
        append(text,
               reference.length > 0 ? match.captures.at(reference.group)
                                    : QString(after.at(position)));
        position += std::max(1, reference.length);
    }
    return text;
}

// All places of a line within some hundredths of a second: such a line goes to QRegExp as a whole,
// which finds where a match could be much sooner than by trying.
bool RegularExpression::isQuick(int length) const
{
    constexpr double mostSteps = 1e6;
    return m_shape.effort(length) * length <= mostSteps;
}

// A step takes up to 20 ns, or 1.5 with look-aheads, of which most end soon.
void RegularExpression::requireBearable(int length) const
{
    const double mostSteps = m_shape.depth == 0 ? 1e8 : 1e9;
    if (m_shape.effort(length) > mostSteps)
        throw QStringLiteral("A line of the text is too long for this regular expression.");
}
