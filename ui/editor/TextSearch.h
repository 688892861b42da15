#pragma once

#include "ui/editor/TextPattern.h"

#include <QTextCursor>
#include <QTextDocument>

/// Finds and replaces text in a document. The document must not be changed by others while a call
/// runs; the watch is called again and again, and what it throws leaves the document as it was.
///
/// What a pattern throws (a text too long) comes through all of these, before anything is changed.
class TextSearch {
public:
    enum class Direction { Down, Up };
    enum class Words { Any, Whole };

    /// What "replace all" looks through: from a position on in the direction of the search. Matches
    /// that start after `last` stay as they are.
    struct Scope {
        int position = 0;
        int last = 0;
    };

    /// The pattern must outlive the search.
    TextSearch(QTextDocument *document, const TextPattern &pattern, Direction direction,
               Words words, SearchWatch watch);

    /// A text as what is searched: as the editor gives it away, with plain blanks and line ends.
    static QString asGivenAway(QString text);

    static Scope wholeDocument(const QTextDocument &document);
    /// From the moving end of the selection on, up to the end of the selection.
    static Scope selection(const QTextCursor &cursor);

    /// The next match after the cursor's selection, or before it when searching up; a null cursor
    /// when there is none. A match that is empty is not found where the cursor is already, so that
    /// one gets on from there.
    QTextCursor next(const QTextCursor &cursor) const;
    /// The first match from the start of the document, or from its end when searching up.
    QTextCursor nextFromEdge() const;

    /// Replaces what is selected if all of it is a match. The cursor is then where the search is to
    /// go on: behind the new text, or before it when searching up.
    bool replace(QTextCursor &cursor, const QString &after) const;

    /// Replaces all matches as one step that can be undone, and returns how many they are. They are
    /// looked for in the text as it is at first: what has been put in is never replaced again. The
    /// cursor and its selection stay at their text.
    int replaceAll(Scope scope, const QString &after, QTextCursor &cursor) const;

private:
    /// A line, or all of the text when the pattern may span lines.
    struct Stretch {
        int position = 0;
        QString original;
        /// What is searched.
        QString text;

        int end() const { return position + text.size(); }
    };
    class Replacing;

    Stretch stretchAt(int position) const;
    int documentEnd() const;
    QTextCursor below(int position, bool mayBeEmptyThere) const;
    QTextCursor above(int position) const;
    QTextCursor selected(const Stretch &stretch, const TextMatch &match) const;
    std::optional<TextMatch> matchOf(const QTextCursor &cursor) const;

    std::optional<TextMatch> firstFrom(const QString &text, int from) const;
    std::optional<TextMatch> firstAfter(const QString &text, int end) const;
    std::optional<TextMatch> lastFrom(const QString &text, int from) const;
    std::optional<TextMatch> lastBefore(const QString &text, int end) const;
    bool isWanted(const QString &text, const TextMatch &match) const;

    QString newText(const TextMatch &match, const QString &after) const;
    void collectDown(Scope scope, const QString &after, Replacing &replacing) const;
    void collectUp(Scope scope, const QString &after, Replacing &replacing) const;

    QTextDocument *m_document;
    const TextPattern &m_pattern;
    Direction m_direction;
    Words m_words;
    SearchWatch m_watch;
};
