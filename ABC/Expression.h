#pragma once

#include <QStringView>

#include <memory>

struct pcre2_real_code_16;
struct pcre2_real_match_data_16;

/// A regular expression, compiled once (to machine code where the system allows it) and matched
/// in place, without copying the subject and without allocating.
///
/// Patterns are written in the extended syntax, in which white space means nothing, and only
/// named groups capture. A subject is a row of UTF-16 units, each of which is one character to
/// the expression: half a surrogate pair is no error.
///
/// An expression is immutable and may be used from several threads, each with its own Match.
class Expression {
public:
    enum Option : quint32 {
        NoOption = 0,
        CaseInsensitive = 1,
        /// Match at the start of the subject only.
        Anchored = 2,
        /// "\s" also matches the white space beyond ASCII.
        UnicodeSpaces = 4
    };

    /// Where the groups of the last successful match lie. Reuse one for many matches.
    class Match {
    public:
        Match();

        /// Units matched.
        int length() const;
        /// The text of a group by its number (see group()); empty when the group took no part
        /// in the match or `group` is 0. It refers into the matched subject.
        QStringView captured(int group) const;

    private:
        friend class Expression;
        struct Free {
            void operator()(pcre2_real_match_data_16 *data) const;
        };
        std::unique_ptr<pcre2_real_match_data_16, Free> m_data;
        QStringView m_subject;
    };

    /// `pattern` is Latin-1 and must be valid.
    explicit Expression(const char *pattern, quint32 options = NoOption);

    /// The number of a named group, 0 when there is none of that name.
    int group(const char *name) const;

    /// Throws "Internal error, could not match any regex." when the matching itself fails, which
    /// no subject should bring about.
    bool match(QStringView subject, Match &match) const;

private:
    struct Free {
        void operator()(pcre2_real_code_16 *code) const;
    };
    int run(QStringView subject, pcre2_real_match_data_16 *data) const;

    std::unique_ptr<pcre2_real_code_16, Free> m_code;
    bool m_isMachineCode = false;
};
