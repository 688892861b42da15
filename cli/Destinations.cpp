#include "cli/Destinations.h"

#include "cli/Files.h"
#include "cli/Tunes.h"

#include <QDir>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <set>

namespace {

const QString Suffix = QStringLiteral(".abc");

QString numbered(const QString &base, int number)
{
    return base + QLatin1Char('-') + QString::number(number) + Suffix;
}

/// "x" of "x-12"; null for a name without such a number.
QString baseOfNumbered(const QString &name)
{
    static const QRegularExpression pattern(QStringLiteral("^(.*)-[1-9][0-9]*$"),
                                            QRegularExpression::DotMatchesEverythingOption);
    return pattern.match(name).captured(1);
}

[[noreturn]] void refuse(const QString &first, const QString &second, const QString &output,
                         const char *certainty)
{
    throw QStringLiteral("%1 and %2 %3 both be written to %4.")
        .arg(first, second, QLatin1String(certainty), output);
}

[[noreturn]] void refuseInput(const QString &output)
{
    throw QStringLiteral("%1 is an input file.").arg(output);
}

/// What each source may write, by the paths without number and suffix.
class Claims {
public:
    void add(const Source &source, const QString &base, const QString &folder);
    void requireDistinct() const;
    void requireNoInput() const;

private:
    void addTune(const QString &file, const QString &base);
    void addSeries(const QString &file, const QString &base);
    void requireNoInputIn(const QString &folder) const;
    bool isInput(const QString &path) const { return m_inputs.count(Files::identity(path)) > 0; }

    std::set<Files::Identity> m_inputs;
    QHash<QString, QString> m_tunes;
    QHash<QString, QString> m_series;
    QStringList m_tuneOrder;
    QSet<QString> m_seriesFolders;
};

void Claims::add(const Source &source, const QString &base, const QString &folder)
{
    const Tunes::Kind kind = Tunes::kind(source.file);
    const Files::Identity identity = Files::identity(source.file);
    if (identity != Files::Identity())
        m_inputs.insert(identity);
    if (kind != Tunes::Kind::Midi)
        addTune(source.file, base);
    if (kind == Tunes::Kind::Abc)
        return;
    addSeries(source.file, base);
    m_seriesFolders.insert(folder);
}

void Claims::addTune(const QString &file, const QString &base)
{
    if (m_tunes.contains(base))
        refuse(m_tunes.value(base), file, base + Suffix, "would");
    m_tunes.insert(base, file);
    m_tuneOrder.append(base);
}

void Claims::addSeries(const QString &file, const QString &base)
{
    if (m_series.contains(base))
        refuse(m_series.value(base), file, numbered(base, 1), "would");
    m_series.insert(base, file);
}

/// Tunes of ABC files against those of MIDI files; the others were compared when added.
void Claims::requireDistinct() const
{
    for (const QString &base : m_tuneOrder) {
        const auto series = m_series.find(baseOfNumbered(base));
        if (series != m_series.end())
            refuse(*series, m_tunes.value(base), base + Suffix, "could");
    }
}

void Claims::requireNoInput() const
{
    for (const QString &base : m_tuneOrder) {
        if (isInput(base + Suffix))
            refuseInput(base + Suffix);
    }
    for (const QString &folder : m_seriesFolders)
        requireNoInputIn(folder);
}

void Claims::requireNoInputIn(const QString &folder) const
{
    for (const QString &name : QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name)) {
        const QString path = folder + QLatin1Char('/') + name;
        if (name.endsWith(Suffix) && m_series.contains(baseOfNumbered(path.chopped(Suffix.size())))
            && isInput(path))
            refuseInput(path);
    }
}

} // namespace

Destinations::Destinations(const QString &directory)
    : m_directory(directory)
{
}

QString Destinations::folder(const Source &source) const
{
    return source.folder.isEmpty() ? m_directory : m_directory + QLatin1Char('/') + source.folder;
}

QString Destinations::base(const Source &source) const
{
    return folder(source) + QLatin1Char('/') + Tunes::stem(source.file);
}

QStringList Destinations::files(const Source &source, bool isMidi, int count) const
{
    if (!isMidi)
        return {base(source) + Suffix};
    QStringList result;
    for (int number = 1; number <= count; ++number)
        result.append(numbered(base(source), number));
    return result;
}

void Destinations::check(const QVector<Source> &sources) const
{
    Claims claims;
    for (const Source &source : sources)
        claims.add(source, base(source), folder(source));
    claims.requireDistinct();
    claims.requireNoInput();
}
