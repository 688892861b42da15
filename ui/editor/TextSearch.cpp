#include "ui/editor/TextSearch.h"

#include "ui/editor/LineEnds.h"

#include <QTextBlock>
#include <QVector>

#include <algorithm>
#include <utility>

namespace {

bool isWordCharacter(const QString &text, int position)
{
    return position >= 0 && position < text.size() && text.at(position).isLetterOrNumber();
}

// Behind the character, of which the text may have two halves.
int stepped(const QString &text, int position)
{
    const bool isPair = position + 1 < text.size() && text.at(position).isHighSurrogate()
        && text.at(position + 1).isLowSurrogate();
    return position + (isPair ? 2 : 1);
}

/// Where a position of the text is when matches have been replaced.
class MovedPosition {
public:
    explicit MovedPosition(int position)
        : m_original(position)
    {
    }

    // Within a match it goes to the end of what takes its place.
    void onReplaced(int start, int end, int newLength)
    {
        if (end <= m_original)
            m_shift += newLength - (end - start);
        else if (start < m_original)
            m_shift += start + newLength - m_original;
    }

    int position() const { return m_original + m_shift; }

private:
    int m_original;
    int m_shift = 0;
};

/// What takes the place of a match.
struct Piece {
    int start;
    int end;
    QString text;
};

} // namespace

// Gathers the new texts first, so that nothing has been changed when something is thrown, and so
// that the matches are those of the text as it was.
class TextSearch::Replacing {
public:
    Replacing(const QTextDocument &document, const QTextCursor &cursor)
        : m_length(document.characterCount())
        , m_anchor(cursor.anchor())
        , m_position(cursor.position())
    {
    }

    void add(const Stretch &stretch, const QVector<Piece> &pieces);
    void apply(QTextDocument *document);
    void place(QTextCursor &cursor) const;
    int count() const { return m_count; }

private:
    struct Edit {
        int start;
        int end;
        QString text;
    };

    void note(const Piece &piece, int offset);

    QVector<Edit> m_edits;
    int m_count = 0;
    qint64 m_length;
    MovedPosition m_anchor;
    MovedPosition m_position;
};

// One edit for each line, from its first match to its last. Edits of single matches make a line
// with many of them slow: each costs time that grows with the number of those before it, so that
// 150,000 in one line took 44 s instead of 0.1. A single edit of all the text would take as long as
// these, but would lose what is known of each line, as which of them are laid out.
void TextSearch::Replacing::add(const Stretch &stretch, const QVector<Piece> &pieces)
{
    if (pieces.isEmpty())
        return;
    QString text;
    int position = pieces.first().start;
    for (const Piece &piece : pieces) {
        note(piece, stretch.position);
        text += stretch.original.midRef(position, piece.start - position);
        text += piece.text;
        position = piece.end;
    }
    m_edits.append({stretch.position + pieces.first().start, stretch.position + position, text});
}

void TextSearch::Replacing::note(const Piece &piece, int offset)
{
    m_length += piece.text.size() - (piece.end - piece.start);
    if (m_length > TextPattern::LongestText)
        throw QStringLiteral("The text would become too long.");
    m_anchor.onReplaced(offset + piece.start, offset + piece.end, piece.text.size());
    m_position.onReplaced(offset + piece.start, offset + piece.end, piece.text.size());
    ++m_count;
}

// From the end, so that the places of those that are still to be made stay right.
void TextSearch::Replacing::apply(QTextDocument *document)
{
    std::sort(m_edits.begin(), m_edits.end(),
              [](const Edit &a, const Edit &b) { return a.start > b.start; });
    QTextCursor cursor(document);
    cursor.beginEditBlock();
    for (const Edit &edit : std::as_const(m_edits)) {
        cursor.setPosition(edit.start);
        cursor.setPosition(edit.end, QTextCursor::KeepAnchor);
        cursor.insertText(edit.text);
    }
    cursor.endEditBlock();
}

void TextSearch::Replacing::place(QTextCursor &cursor) const
{
    cursor.setPosition(m_anchor.position());
    cursor.setPosition(m_position.position(), QTextCursor::KeepAnchor);
}

TextSearch::TextSearch(QTextDocument *document, const TextPattern &pattern, Direction direction,
                       Words words, SearchWatch watch)
    : m_document(document)
    , m_pattern(pattern)
    , m_direction(direction)
    , m_words(words)
    , m_watch(std::move(watch))
{
}

// Every character stays at its place.
QString TextSearch::asGivenAway(QString text)
{
    return text.replace(QChar::Nbsp, QLatin1Char(' '))
        .replace(QChar::LineSeparator, QLatin1Char('\n'))
        .replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

TextSearch::Scope TextSearch::wholeDocument(const QTextDocument &document)
{
    return {0, document.characterCount()};
}

TextSearch::Scope TextSearch::selection(const QTextCursor &cursor)
{
    return {cursor.position(), cursor.selectionEnd()};
}

QTextCursor TextSearch::next(const QTextCursor &cursor) const
{
    if (m_pattern.isEmpty())
        return {};
    return m_direction == Direction::Up ? above(cursor.selectionStart())
                                        : below(cursor.selectionEnd(), false);
}

QTextCursor TextSearch::nextFromEdge() const
{
    if (m_pattern.isEmpty())
        return {};
    return m_direction == Direction::Up ? above(m_document->characterCount()) : below(0, true);
}

bool TextSearch::replace(QTextCursor &cursor, const QString &after) const
{
    const std::optional<TextMatch> match = matchOf(cursor);
    if (!match)
        return false;
    const int start = cursor.selectionStart();
    cursor.insertText(newText(*match, after));
    if (m_direction == Direction::Up)
        cursor.setPosition(start);
    return true;
}

int TextSearch::replaceAll(Scope scope, const QString &after, QTextCursor &cursor) const
{
    if (m_pattern.isEmpty())
        return 0;
    Replacing replacing(*m_document, cursor);
    if (m_direction == Direction::Up)
        collectUp(scope, after, replacing);
    else
        collectDown(scope, after, replacing);
    if (replacing.count() > 0) {
        replacing.apply(m_document);
        replacing.place(cursor);
    }
    return replacing.count();
}

TextSearch::Stretch TextSearch::stretchAt(int position) const
{
    const bool isAll = m_pattern.spansLines();
    const QTextBlock block = m_document->findBlock(isAll ? 0 : position);
    const QString original = isAll ? m_document->toRawText() : block.text();
    return {block.position(), original, asGivenAway(original)};
}

int TextSearch::documentEnd() const
{
    return m_document->characterCount() - 1;
}

QTextCursor TextSearch::below(int position, bool mayBeEmptyThere) const
{
    for (int from = position; from <= documentEnd();) {
        const Stretch stretch = stretchAt(from);
        const int offset = from - stretch.position;
        const auto match = mayBeEmptyThere || from != position ? firstFrom(stretch.text, offset)
                                                               : firstAfter(stretch.text, offset);
        if (match)
            return selected(stretch, *match);
        from = stretch.end() + 1;
    }
    return {};
}

QTextCursor TextSearch::above(int position) const
{
    for (int from = position - 1; from >= 0;) {
        const Stretch stretch = stretchAt(from);
        if (const auto match = lastFrom(stretch.text, from - stretch.position))
            return selected(stretch, *match);
        from = stretch.position - 1;
    }
    return {};
}

std::optional<TextMatch> TextSearch::firstFrom(const QString &text, int from) const
{
    auto match = m_pattern.firstFrom(text, from, m_watch);
    while (match && !isWanted(text, *match))
        match = m_pattern.firstFrom(text, match->start + 1, m_watch);
    return match;
}

// An empty match right behind the match before it belongs to that one.
std::optional<TextMatch> TextSearch::firstAfter(const QString &text, int end) const
{
    auto match = firstFrom(text, end);
    if (match && match->length == 0 && match->start == end)
        match = firstFrom(text, stepped(text, end));
    return match;
}

std::optional<TextMatch> TextSearch::lastFrom(const QString &text, int from) const
{
    std::optional<TextMatch> match;
    for (int start = from; start >= 0; start = match->start - 1) {
        match = m_pattern.lastFrom(text, start, m_watch);
        if (!match || isWanted(text, *match))
            return match;
    }
    return std::nullopt;
}

// One that ends where the match below it starts, or before. Going up, that match is not there any
// more when this one is looked for, so that "a+" finds every "a" in "aaa".
std::optional<TextMatch> TextSearch::lastBefore(const QString &text, int end) const
{
    const auto rest = QString::fromRawData(text.constData(), end);
    std::optional<TextMatch> match;
    for (int start = end - 1; start >= 0; start = match->start - 1) {
        match = lastFrom(text, start);
        if (!match || match->end() <= end)
            return match;
        auto shorter = m_pattern.at(rest, match->start);
        if (shorter && shorter->length > 0 && isWanted(text, *shorter))
            return shorter;
    }
    return std::nullopt;
}

bool TextSearch::isWanted(const QString &text, const TextMatch &match) const
{
    return m_words == Words::Any
        || (!isWordCharacter(text, match.start - 1) && !isWordCharacter(text, match.end()));
}

QTextCursor TextSearch::selected(const Stretch &stretch, const TextMatch &match) const
{
    QTextCursor cursor(m_document);
    cursor.setPosition(stretch.position + match.start);
    cursor.setPosition(stretch.position + match.end(), QTextCursor::KeepAnchor);
    return cursor;
}

// What is selected counts by itself, and also as it stands in its line: that is where an empty
// match, or one with a look-ahead, can be told.
std::optional<TextMatch> TextSearch::matchOf(const QTextCursor &cursor) const
{
    if (m_pattern.isEmpty())
        return std::nullopt;
    const QString text = asGivenAway(cursor.selectedText());
    if (auto match = text.isEmpty() ? std::nullopt : m_pattern.whole(text))
        return match;
    const Stretch stretch = stretchAt(cursor.selectionStart());
    auto match = m_pattern.at(stretch.text, cursor.selectionStart() - stretch.position);
    if (!match || match->length != text.size())
        return std::nullopt;
    return match;
}

QString TextSearch::newText(const TextMatch &match, const QString &after) const
{
    return withSimpleLineEnds(m_pattern.replacement(match, after));
}

void TextSearch::collectDown(Scope scope, const QString &after, Replacing &replacing) const
{
    for (int from = scope.position; from <= std::min(scope.last, documentEnd());) {
        const Stretch stretch = stretchAt(from);
        QVector<Piece> pieces;
        auto match = firstFrom(stretch.text, from - stretch.position);
        while (match && stretch.position + match->start <= scope.last) {
            pieces.append({match->start, match->end(), newText(*match, after)});
            match = firstAfter(stretch.text, match->end());
        }
        replacing.add(stretch, pieces);
        from = stretch.end() + 1;
    }
}

void TextSearch::collectUp(Scope scope, const QString &after, Replacing &replacing) const
{
    for (int from = scope.position - 1; from >= 0;) {
        const Stretch stretch = stretchAt(from);
        QVector<Piece> pieces;
        auto match = lastFrom(stretch.text, from - stretch.position);
        while (match) {
            pieces.append({match->start, match->end(), newText(*match, after)});
            match = lastBefore(stretch.text, match->start);
        }
        std::reverse(pieces.begin(), pieces.end());
        replacing.add(stretch, pieces);
        from = stretch.position - 1;
    }
}
