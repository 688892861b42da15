#include "ABC/ABCTokenizer.h"

#include "ABC/FieldValues.h"

#include <algorithm>
#include <array>

namespace {

enum Group {
    Field,
    Value,
    InstructionName,
    Parameters,
    CommentText,
    Staccato,
    Accidental,
    NoteLetter,
    Octave,
    LengthNum,
    LengthSlash,
    LengthDen,
    TieGroup,
    Dot,
    RestLetter,
    TupletFirst,
    TupletSecond,
    TupletThird,
    GroupCount
};

constexpr std::array<const char *, GroupCount> GroupNames{
    "field",      "value", "instruction", "parameters", "comment",  "staccato",
    "accidental", "note",  "octave",      "lennum",     "lenslash", "lenden",
    "tie",        "dot",   "rest",        "n1",         "n2",       "n3"};

constexpr int RestOfLine = -1;

bool isLineEnd(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

} // namespace

struct TokenKind {
    TokenKind(ABCTokenizer::Kind tokenKind, int maximum, const char *pattern)
        : kind(tokenKind)
        , maxLength(maximum)
        , expression(pattern,
                     tokenKind == ABCTokenizer::Whitespace
                         ? Expression::Anchored | Expression::UnicodeSpaces
                         : Expression::Anchored)
    {
        std::transform(GroupNames.begin(), GroupNames.end(), groups.begin(),
                       [this](const char *name) { return expression.group(name); });
    }

    ABCTokenizer::Kind kind;
    int maxLength;
    Expression expression;
    std::array<int, GroupCount> groups; // their numbers in the expression, 0 for none
};

namespace {

using T = ABCTokenizer;

// Indexed by kind.
const std::array<TokenKind, T::KindCount> &tokenTable()
{
    static const std::array<TokenKind, T::KindCount> table{{
        {T::Unknown, 1, R"( \G. )"},
        {T::EndOfInput, 1, R"( \G. )"},
        {T::HeaderField, RestOfLine, R"( ^(?<field>[A-Za-z+]):\s*(?<value>.*)$ )"},
        {T::InlineField, 20, R"( \G\[(?<field>[A-Za-z+]):\s*(?<value>.*?)\] )"},
        {T::Instruction, RestOfLine, R"( ^%%(?<instruction>[-_a-zA-Z+])\s*(?<parameters>.*)$ )"},
        {T::Whitespace, RestOfLine, R"( \G\s+ )"},
        {T::Note, 20,
         R"( \G(?<staccato>\.)?(?<accidental>\^*|_*|=)(?<note>[A-Ga-g])(?<octave>'+|,*))"
         R"((?<length>(?<lennum>\d+)?(?<lenslash>/*)(?<lenden>\d+)?))"
         R"((?<tie>(?<dot>\.)?-(?<tiedir>[,']?))? )"},
        {T::Rest, 10,
         R"( \G(?<rest>[zxZX])(?<length>(?<lennum>\d+)?(?<lenslash>/*)(?<lenden>\d+)?) )"},
        {T::Annotation, 50, R"re( \G"(?<placement>[_^<>]|@)(?<text>.*?)(?!\\)" )re"},
        {T::VariantEnding, 10, R"( \G\[(?<repeatnum>\d+([,-]\d+)*) )"},
        {T::Bar, 20,
         R"( \G(?<dot>\.)?(?<bar>:*\[?\|\]?:*|\[\|?\]|:+)(?<repeatnum>\d+([,-]\d+)*)? )"},
        {T::ChordSymbol, 50, R"re( \G"(?<harmony>.*?)" )re"},
        {T::Tuplet, 10, R"( \G\((?<n1>\d+)(:(?<n2>\d+)?)?(:(?<n3>\d+)?)?)"},
        {T::SlurStart, 2, R"( \G(?<dot>\.?)\( )"},
        {T::SlurEnd, 2, R"( \G(?<dot>\.?)\) )"},
        {T::ChordStart, 1, R"( \G\[ )"},
        {T::ChordEnd, 10,
         R"( \G\](?<length>(?<lennum>\d+)?(?<lenslash>/*)(?<lenden>\d+)?))"
         R"((?<tie>(?<dot>\.)?-?(?<tiedir>[,']?)) )"},
        {T::GraceStart, 2, R"( \G{(?<slash>/?) )"},
        {T::GraceEnd, 1, R"( \G} )"},
        {T::BrokenRhythm, 10, R"( \G\<+|\>+ )"},
        {T::BangDecoration, 50, R"( \G!(?<decoration>[^!]*?)! )"},
        {T::PlusDecoration, 50, R"( \G\+(?<decoration>[^+]*?)\+ )"},
        {T::LineContinuation, 1, R"( \G\\ )"},
        {T::LineBreakSymbol, 1, R"( \G\$|! )"},
        {T::VoiceOverlay, 1, R"( \G& )"},
        {T::BackQuote, 1, R"( \G` )"},
        {T::Comment, RestOfLine, R"( \G%(?<comment>.*)$ )"},
        {T::Symbol, 1, R"( \G[H-Z-h-z~] )"},
        {T::Tie, 3, R"( \G(?<dot>\.)?-(?<tiedir>[,']?) )"},
    }};
    return table;
}

// Compiled at program start, so that no first reader pays for it.
[[maybe_unused]] const auto &compiledTable = tokenTable();

} // namespace

ABCTokenizer::ABCTokenizer(const QString &text)
    : m_table(tokenTable().data())
    , m_text(text)
{
    startLine(0);
}

void ABCTokenizer::startLine(int position)
{
    const QChar *const begin = m_text.constData() + position;
    const QChar *const textEnd = m_text.constData() + m_text.size();
    const QChar *const end = std::find_if(begin, textEnd, isLineEnd);
    m_lineText = QStringView(begin, end);
    // An empty line yields one token of white space.
    if (m_lineText.isEmpty())
        m_lineText = QStringView(u" ", 1);
    m_nextLine = -1;
    if (end != textEnd) {
        const bool isPair =
            *end == QLatin1Char('\r') && end + 1 != textEnd && end[1] == QLatin1Char('\n');
        m_nextLine = static_cast<int>(end - m_text.constData()) + (isPair ? 2 : 1);
    }
}

ABCTokenizer::Kind ABCTokenizer::next()
{
    m_tokenLine = m_line;
    m_tokenColumn = m_column;
    if (m_atEnd)
        return m_kind = EndOfInput;
    if (tryCandidates(lookAhead(0)) || tryKind(Unknown))
        return m_kind;
    throw QStringLiteral("Internal error, could not match any regex.");
}

/// A null character stands for what is past the line's end: it chooses nothing.
QChar ABCTokenizer::lookAhead(int distance) const
{
    const int position = m_column + distance;
    return position < m_lineText.size() ? m_lineText.at(position) : QChar();
}

/// The text from the cursor on. It may end inside a surrogate pair without any harm: the matches
/// of all bounded kinds end with an ASCII character, but for Unknown, which takes halves.
QStringView ABCTokenizer::window(int maxLength) const
{
    const int rest = static_cast<int>(m_lineText.size()) - m_column;
    return m_lineText.mid(m_column, maxLength == RestOfLine ? rest : std::min(maxLength, rest));
}

bool ABCTokenizer::tryCandidates(QChar c)
{
    if (c.isLetter())
        return tryLetter(c);
    if (c.isSpace())
        return tryKind(Whitespace);
    return tryPunctuation(c);
}

bool ABCTokenizer::tryLetter(QChar c)
{
    if (m_column == 0 && lookAhead(1) == QLatin1Char(':') && tryKind(HeaderField))
        return true;
    const ushort lower = c.toLower().unicode();
    if (lower >= 'a' && lower <= 'g' && tryKind(Note))
        return true;
    if ((lower == 'x' || lower == 'z') && tryKind(Rest))
        return true;
    return tryKind(Symbol);
}

bool ABCTokenizer::tryPunctuation(QChar c)
{
    switch (c.unicode()) {
    case '!':
        return (m_bangIsLineBreak && tryKind(LineBreakSymbol))
            || (m_bangDecorations && tryKind(BangDecoration));
    case '"':
        return tryKind(Annotation) || tryKind(ChordSymbol);
    case '$':
        return m_dollarIsLineBreak && tryKind(LineBreakSymbol);
    case '%':
        return (m_column == 0 && lookAhead(1) == QLatin1Char('%') && tryKind(Instruction))
            || tryKind(Comment);
    case '&':
        return tryKind(VoiceOverlay);
    case '(':
        return (lookAhead(1).isDigit() && tryKind(Tuplet)) || tryKind(SlurStart);
    case ')':
        return tryKind(SlurEnd);
    case '+':
        return tryKind(PlusDecoration);
    case '-':
        return tryKind(Tie);
    case '.':
        return tryDot();
    case ':':
    case '|':
        return tryKind(Bar);
    case '<':
    case '>':
        return tryKind(BrokenRhythm);
    case '=':
    case '^':
    case '_':
        return tryKind(Note);
    case '[':
        return tryOpeningBracket();
    case '\\':
        return tryKind(LineContinuation);
    case ']':
        return tryKind(Bar) || tryKind(ChordEnd);
    case '`':
        return tryKind(BackQuote);
    case '{':
        return tryKind(GraceStart);
    case '}':
        return tryKind(GraceEnd);
    case '~':
        return tryKind(Symbol);
    default:
        return false;
    }
}

bool ABCTokenizer::tryDot()
{
    const QChar following = lookAhead(1);
    const bool isMark = following == QLatin1Char('(') ? tryKind(SlurStart)
        : following == QLatin1Char(')')               ? tryKind(SlurEnd)
        : following == QLatin1Char('-')               ? tryKind(Tie)
                                                      : false;
    return isMark || tryKind(Bar) || tryKind(Note);
}

bool ABCTokenizer::tryOpeningBracket()
{
    const QChar following = lookAhead(1);
    if (following.isDigit() && tryKind(VariantEnding))
        return true;
    if (following.isLetter() && lookAhead(2) == QLatin1Char(':') && tryKind(InlineField))
        return true;
    return tryKind(Bar) || tryKind(ChordStart);
}

bool ABCTokenizer::tryKind(Kind kind)
{
    const TokenKind &entry = m_table[kind];
    if (!entry.expression.match(window(entry.maxLength), m_match))
        return false;
    accept(kind, m_match.length());
    return true;
}

void ABCTokenizer::accept(Kind kind, int length)
{
    m_kind = kind;
    m_column += length;
    if (m_column >= m_lineText.size()) {
        m_column = 0;
        ++m_line;
        m_atEnd = m_nextLine < 0;
        if (!m_atEnd)
            startLine(m_nextLine);
    }
    if (isField() && group(Field) == QLatin1String("I"))
        readSwitches();
}

void ABCTokenizer::readSwitches()
{
    const QString text = value();
    const bool namesBang = text.contains(QLatin1Char('!'));
    if (text.startsWith(QLatin1String("linebreak"), Qt::CaseInsensitive)) {
        m_bangIsLineBreak = namesBang;
        m_dollarIsLineBreak = text.contains(QLatin1Char('$'));
    } else if (text.startsWith(QLatin1String("decoration"), Qt::CaseInsensitive)) {
        m_bangDecorations = namesBang;
    }
}

/// Empty for a group that the current kind's expression does not have.
QStringView ABCTokenizer::group(int name) const
{
    return m_match.captured(m_table[m_kind].groups[static_cast<size_t>(name)]);
}

bool ABCTokenizer::isField() const
{
    return m_kind == HeaderField || m_kind == InlineField;
}

QString ABCTokenizer::field() const
{
    return group(Field).toString();
}

QString ABCTokenizer::value() const
{
    return group(Value).toString();
}

QString ABCTokenizer::instruction() const
{
    return group(InstructionName).toString();
}

QString ABCTokenizer::parameters() const
{
    return group(Parameters).toString();
}

QString ABCTokenizer::comment() const
{
    return group(CommentText).toString();
}

int ABCTokenizer::noteIndex() const
{
    const QStringView letter = group(NoteLetter);
    return letter.isEmpty() ? 0 : (letter.front().toUpper().unicode() - 'C' + 7) % 7;
}

int ABCTokenizer::octave() const
{
    const QStringView letter = group(NoteLetter);
    if (letter.isEmpty())
        return 0;
    const QStringView marks = group(Octave);
    const int shift = static_cast<int>(marks.size());
    return (letter.front().isLower() ? 1 : 0)
        + (marks.startsWith(QLatin1Char(',')) ? -shift : shift);
}

int ABCTokenizer::accidental() const
{
    const QStringView marks = group(Accidental);
    if (marks.isEmpty() || isNatural())
        return 0;
    const int count = static_cast<int>(marks.size());
    return marks.front() == QLatin1Char('_') ? -count : count;
}

bool ABCTokenizer::isNatural() const
{
    return group(Accidental).startsWith(QLatin1Char('='));
}

bool ABCTokenizer::staccato() const
{
    return !group(Staccato).isEmpty();
}

bool ABCTokenizer::tie() const
{
    return !group(TieGroup).isEmpty();
}

bool ABCTokenizer::dotted() const
{
    return !group(Dot).isEmpty();
}

ABCTokenizer::Length ABCTokenizer::length() const
{
    if (m_kind != Note && m_kind != Rest && m_kind != ChordEnd)
        return {0, 0};
    const QStringView num = group(LengthNum);
    const QStringView den = group(LengthDen);
    const auto slashes = group(LengthSlash).size();
    Length length;
    if (!num.isEmpty())
        length.num = FieldValues::number(num);
    if (slashes > 0)
        length.den = slashes > 1 || den.isEmpty() ? 2 : FieldValues::number(den);
    return length;
}

double ABCTokenizer::lengthValue() const
{
    const Length fraction = length();
    return fraction.den == 0 ? 0.0 : double{1} * fraction.num / fraction.den;
}

bool ABCTokenizer::isMeasureRest() const
{
    const QStringView letter = group(RestLetter);
    return !letter.isEmpty() && letter.front().isUpper();
}

quint32 ABCTokenizer::tupletP() const
{
    return FieldValues::number(group(TupletFirst));
}

quint32 ABCTokenizer::tupletQ() const
{
    return FieldValues::number(group(TupletSecond));
}

quint32 ABCTokenizer::tupletR() const
{
    return FieldValues::number(group(TupletThird));
}
