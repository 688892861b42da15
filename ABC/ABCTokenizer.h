#pragma once

#include "ABC/Expression.h"

#include <QString>
#include <QStringView>

struct TokenKind;

/// Cuts ABC text into tokens, line by line.
///
/// At each step the character under the cursor and the two after it choose a few kinds of
/// token; the first whose expression matches makes the token. The expressions are compiled once
/// and shared by all tokenizers; each looks at a bounded stretch of the line, so that a line of
/// any length is read in time proportional to it. Any text is accepted: what fits no kind is an
/// Unknown token of one UTF-16 unit.
class ABCTokenizer {
public:
    enum Kind : quint32 {
        Unknown,
        EndOfInput,
        HeaderField,
        InlineField,
        Instruction,
        Whitespace,
        Note,
        Rest,
        Annotation,
        VariantEnding,
        Bar,
        ChordSymbol,
        Tuplet,
        SlurStart,
        SlurEnd,
        ChordStart,
        ChordEnd,
        GraceStart,
        GraceEnd,
        BrokenRhythm,
        BangDecoration,
        PlusDecoration,
        LineContinuation,
        LineBreakSymbol,
        VoiceOverlay,
        BackQuote,
        Comment,
        Symbol,
        Tie
    };
    static constexpr int KindCount = Tie + 1;

    /// A length in units; `den` may be 0 ("A/0").
    struct Length {
        quint32 num = 1;
        quint32 den = 1;
    };

    explicit ABCTokenizer(const QString &text);

    /// Reads one token and answers its kind; EndOfInput for ever after the last line. Throws a
    /// QString should the matching itself fail.
    Kind next();

    Kind kind() const { return m_kind; }
    /// Where the current token starts, from 0.
    int tokenLine() const { return m_tokenLine; }
    int tokenColumn() const { return m_tokenColumn; }

    // Accessors on the current token. Each answers an empty text, 0 or false when the token is
    // none of the kinds named. Numbers that do not fit in 32 bits are read as 0.

    /// HeaderField, InlineField.
    QString field() const;
    QString value() const;

    /// Instruction.
    QString instruction() const;
    QString parameters() const;

    /// Comment.
    QString comment() const;

    /// Note: the letter as 0..6 for C, D, E, F, G, A, B.
    int noteIndex() const;
    /// Note: 0 for an upper-case letter, 1 for a lower-case one, plus apostrophes, minus commas.
    int octave() const;
    /// Note: the number of carets, or minus that of underscores; 0 for "=" or none.
    int accidental() const;
    bool isNatural() const;
    bool staccato() const;

    /// Note, ChordEnd.
    bool tie() const;
    /// Note, Bar, SlurStart, SlurEnd, ChordEnd, Tie.
    bool dotted() const;

    /// Note, Rest, ChordEnd; (0, 0) for other kinds. Two or more slashes count as "/2".
    Length length() const;
    /// `num` / `den` of length(); 0 when `den` is 0.
    double lengthValue() const;

    /// Rest: "Z" or "X".
    bool isMeasureRest() const;

    /// Tuplet: its three numbers, 0 for one that is absent.
    quint32 tupletP() const;
    quint32 tupletQ() const;
    quint32 tupletR() const;

private:
    void startLine(int position);
    QChar lookAhead(int distance) const;
    QStringView window(int maxLength) const;

    bool tryCandidates(QChar c);
    bool tryLetter(QChar c);
    bool tryPunctuation(QChar c);
    bool tryDot();
    bool tryOpeningBracket();
    bool tryKind(Kind kind);
    void accept(Kind kind, int length);
    void readSwitches();

    QStringView group(int name) const;
    bool isField() const;

    const TokenKind *m_table;
    QString m_text;
    QStringView m_lineText;
    int m_nextLine = -1; // position in m_text, -1 when there is none
    bool m_atEnd = false;
    int m_line = 0;
    int m_column = 0;

    int m_tokenLine = 0;
    int m_tokenColumn = 0;
    Kind m_kind = Unknown;
    Expression::Match m_match;

    bool m_bangIsLineBreak = false;
    bool m_dollarIsLineBreak = false;
    bool m_bangDecorations = true;
};
