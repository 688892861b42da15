#include "ui/editor/TextPattern.h"

#include <QStringView>

#include <algorithm>

PlainTextPattern::PlainTextPattern(const QString &text, Qt::CaseSensitivity sensitivity)
    : m_text(text)
    , m_sensitivity(sensitivity)
{
}

bool PlainTextPattern::isEmpty() const
{
    return m_text.isEmpty();
}

bool PlainTextPattern::spansLines() const
{
    return m_text.contains(QLatin1Char('\n'));
}

std::optional<TextMatch> PlainTextPattern::firstFrom(const QString &line, int from,
                                                     const SearchWatch &watch) const
{
    for (int start = from; start + m_text.size() <= line.size(); start += stride()) {
        watch();
        const auto window = QStringView(line).mid(start, stride() + m_text.size() - 1);
        const auto found = int(window.indexOf(m_text, 0, m_sensitivity));
        if (found >= 0)
            return matchAt(start + found);
    }
    return std::nullopt;
}

std::optional<TextMatch> PlainTextPattern::lastFrom(const QString &line, int from,
                                                    const SearchWatch &watch) const
{
    for (int last = std::min(from, line.size() - m_text.size()); last >= 0; last -= stride()) {
        watch();
        const int start = std::max(0, last - stride() + 1);
        const auto window = QStringView(line).mid(start, last - start + m_text.size());
        const auto found = int(window.lastIndexOf(m_text, last - start, m_sensitivity));
        if (found >= 0)
            return matchAt(start + found);
    }
    return std::nullopt;
}

std::optional<TextMatch> PlainTextPattern::at(const QString &line, int start) const
{
    const auto found = QStringView(line).mid(start, m_text.size());
    if (found.compare(m_text, m_sensitivity) != 0)
        return std::nullopt;
    return matchAt(start);
}

std::optional<TextMatch> PlainTextPattern::whole(const QString &text) const
{
    if (text.compare(m_text, m_sensitivity) != 0)
        return std::nullopt;
    return matchAt(0);
}

QString PlainTextPattern::replacement(const TextMatch &, const QString &after) const
{
    return after;
}

// How many places are tried between two calls of the watch. Trying one may mean to compare all of
// the text, which is slow when both text and line are long and alike, as in "aaa…".
int PlainTextPattern::stride() const
{
    constexpr int comparisons = 10'000'000;
    return std::max(1, comparisons / m_text.size());
}

TextMatch PlainTextPattern::matchAt(int start) const
{
    return {start, m_text.size(), {}};
}
