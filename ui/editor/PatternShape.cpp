#include "ui/editor/PatternShape.h"

#include <QVector>

#include <algorithm>
#include <cmath>

namespace {

/// Reads a pattern in the syntax of QRegExp from left to right.
class ShapeReader {
public:
    explicit ShapeReader(const QString &pattern)
        : m_pattern(pattern)
    {
    }

    PatternShape read();

private:
    struct Part {
        double atoms = 0;
        double branches = 0;
    };
    struct Group {
        Part content;
        Part last;
        bool isLookAhead = false;
    };

    void readNext();
    void readEscape();
    void readClass();
    void readCaret();
    void openGroup();
    void closeGroup();
    void repeat();
    void repeatCounted();
    void addAtom();
    void addPart(const Part &part);
    int readNumber();
    QChar peek(int distance = 0) const;
    void take(int length);

    const QString m_pattern;
    int m_position = 0;
    int m_lookAheads = 0;
    int m_deepest = 0;
    int m_nesting = 0;
    bool m_hasBackReference = false;
    QString m_withoutCarets;
    QVector<Group> m_groups{Group()};
};

PatternShape ShapeReader::read()
{
    while (m_position < m_pattern.size())
        readNext();
    while (m_groups.size() > 1)
        closeGroup();
    addPart({});
    const Part &all = m_groups.first().content;
    const int depth = m_deepest + int(m_hasBackReference);
    return {all.atoms, all.branches, depth, m_nesting, m_withoutCarets};
}

void ShapeReader::readNext()
{
    switch (peek().unicode()) {
    case '\\':
        return readEscape();
    case '[':
        return readClass();
    case '^':
        return readCaret();
    case '(':
        return openGroup();
    case ')':
        take(1);
        return closeGroup();
    case '|':
        m_groups.last().content.branches += 1;
        return addAtom();
    case '*':
    case '+':
    case '?':
        return repeat();
    case '{':
        return repeatCounted();
    default:
        return addAtom();
    }
}

void ShapeReader::readEscape()
{
    take(1);
    if (peek() >= QLatin1Char('1') && peek() <= QLatin1Char('9'))
        m_hasBackReference = true;
    addAtom();
}

// A bracket that comes first is a member like any other.
void ShapeReader::readClass()
{
    take(peek(1) == QLatin1Char('^') ? 2 : 1);
    do {
        take(peek() == QLatin1Char('\\') ? 2 : 1);
    } while (m_position < m_pattern.size() && peek() != QLatin1Char(']'));
    addAtom();
}

void ShapeReader::readCaret()
{
    const int place = m_withoutCarets.size();
    addAtom();
    m_withoutCarets.truncate(place);
    m_withoutCarets += QLatin1String("(?:\\b\\B)");
}

void ShapeReader::openGroup()
{
    const bool isSpecial = peek(1) == QLatin1Char('?');
    const bool isLookAhead =
        isSpecial && (peek(2) == QLatin1Char('=') || peek(2) == QLatin1Char('!'));
    m_groups.append({{}, {}, isLookAhead});
    m_nesting = std::max(m_nesting, m_groups.size() - 1);
    m_lookAheads += int(isLookAhead);
    m_deepest = std::max(m_deepest, m_lookAheads);
    take(isSpecial ? 3 : 1);
}

void ShapeReader::closeGroup()
{
    if (m_groups.size() == 1)
        return;
    addPart({});
    const Group closed = m_groups.takeLast();
    m_lookAheads -= int(closed.isLookAhead);
    addPart({closed.content.atoms + 1, closed.content.branches});
}

void ShapeReader::repeat()
{
    m_groups.last().last.branches += 1;
    take(1);
}

// Such a part is compiled as many times.
void ShapeReader::repeatCounted()
{
    take(1);
    const int least = std::max(1, readNumber());
    const bool isRange = peek() == QLatin1Char(',');
    take(isRange ? 1 : 0);
    const int times = std::max(least, readNumber());
    take(1);
    Part &last = m_groups.last().last;
    last = {last.atoms * times, (last.branches + int(isRange)) * times};
}

void ShapeReader::addAtom()
{
    take(1);
    addPart({1, 0});
}

// The part before it has no repetition behind it any more.
void ShapeReader::addPart(const Part &part)
{
    Group &group = m_groups.last();
    group.content.atoms += group.last.atoms;
    group.content.branches += group.last.branches;
    group.last = part;
}

// Not more than any pattern may say.
int ShapeReader::readNumber()
{
    constexpr int most = 10'000;
    int number = 0;
    for (; peek().isDigit(); take(1))
        number = std::min(most, 10 * number + peek().digitValue());
    return number;
}

QChar ShapeReader::peek(int distance) const
{
    return m_position + distance < m_pattern.size() ? m_pattern.at(m_position + distance) : QChar();
}

void ShapeReader::take(int length)
{
    m_withoutCarets += m_pattern.mid(m_position, length);
    m_position = std::min(m_pattern.size(), m_position + length);
}

} // namespace

PatternShape PatternShape::of(const QString &pattern)
{
    return ShapeReader(pattern).read();
}

double PatternShape::effort(int length) const
{
    return atoms * (branches + 1) * std::pow(double(length) + 1, depth + 1);
}

// Measured: 1000 optional characters take a second to compile, and ten times as long when they are
// twice as many. 40,000 plain ones take 50 ms. Groups in groups are compiled by recursion.
bool PatternShape::isModest() const
{
    constexpr double mostAtoms = 40'000;
    constexpr double mostPairs = 1'000'000;
    constexpr int deepest = 500;
    return nesting <= deepest && atoms <= mostAtoms && atoms * branches <= mostPairs;
}
