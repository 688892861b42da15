#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// Called again and again while a search goes on, at least every few thousand comparisons of a
/// line. What it throws ends the search.
using SearchWatch = std::function<void()>;

/// A place where a pattern matches. It may be empty.
struct TextMatch {
    int start = 0;
    int length = 0;
    /// What the groups of a regular expression have caught, the whole match first.
    QStringList captures;

    int end() const { return start + length; }
};

/// What is looked for in a line of text.
class TextPattern {
public:
    /// The longest text that replacing may make.
    static constexpr int LongestText = 50'000'000;

    TextPattern() = default;
    virtual ~TextPattern() = default;
    Q_DISABLE_COPY(TextPattern)

    /// Nothing matches an empty pattern.
    virtual bool isEmpty() const = 0;

    /// Whether a match may go over the end of a line; the pattern is then to be given all lines as
    /// one text.
    virtual bool spansLines() const = 0;

    /// The first match that starts at `from` or after it.
    virtual std::optional<TextMatch> firstFrom(const QString &line, int from,
                                               const SearchWatch &watch) const = 0;
    /// The last match that starts at `from` or before it.
    virtual std::optional<TextMatch> lastFrom(const QString &line, int from,
                                              const SearchWatch &watch) const = 0;
    /// The match that starts just there.
    virtual std::optional<TextMatch> at(const QString &line, int start) const = 0;
    /// The match that is all of the text, which may have several lines.
    virtual std::optional<TextMatch> whole(const QString &text) const = 0;

    /// What a match becomes when it is replaced by `after`. Throws a QString when that is longer
    /// than LongestText.
    virtual QString replacement(const TextMatch &match, const QString &after) const = 0;
};

/// A text that is looked for as it is.
class PlainTextPattern : public TextPattern {
public:
    PlainTextPattern(const QString &text, Qt::CaseSensitivity sensitivity);

    bool isEmpty() const override;
    bool spansLines() const override;
    std::optional<TextMatch> firstFrom(const QString &line, int from,
                                       const SearchWatch &watch) const override;
    std::optional<TextMatch> lastFrom(const QString &line, int from,
                                      const SearchWatch &watch) const override;
    std::optional<TextMatch> at(const QString &line, int start) const override;
    std::optional<TextMatch> whole(const QString &text) const override;
    QString replacement(const TextMatch &match, const QString &after) const override;

private:
    int stride() const;
    TextMatch matchAt(int start) const;

    QString m_text;
    Qt::CaseSensitivity m_sensitivity;
};
