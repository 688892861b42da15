#include "ABC/ABCGenerator.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Destinations.h"
#include "cli/Files.h"
#include "cli/TrackChanges.h"
#include "cli/Tunes.h"

#include <QDir>
#include <QFileInfo>

#include <utility>
#include <vector>

namespace {

constexpr const char *OutputFile = "-o";
constexpr const char *OutputDirectory = "--output-dir";

const char *const Description =
    "Writes each tune, or each track of a MIDI file, as ABC text of one voice without bar lines,\n"
    "to standard output (the tunes separated by empty lines) or into files; each file written is\n"
    "reported as {\"file\":...,\"output\":...}. A file that cannot be read makes the exit status "
    "1;\n"
    "the others are still written. FILE may be - for standard input, or a directory, which stands\n"
    "for all MIDI files below it. No input file is ever overwritten, and no two files are written\n"
    "to one place.\n"
    "\n"
    "The options that change notes, lengths or keys are applied in the order given, each to what\n"
    "the one before has made.\n";

/// What a file has become.
struct Converted {
    QStringList texts;
    bool isMidi = false;
};

/// After a change the track has the text that its last step has made.
QString textOf(const Track &track, const OptionValues &options)
{
    Track changed = TrackChanges::applied(track, options);
    return TrackChanges::areGiven(options) ? changed.abc() : ABCGenerator().generate(changed);
}

Converted converted(const Tunes::Music &music, const OptionValues &options)
{
    Converted result;
    result.isMidi = music.isMidi;
    for (const Track &track : music.tracks)
        result.texts.append(textOf(track, options));
    return result;
}

bool isDirectory(const QString &path)
{
    return QFileInfo(path).isDir();
}

void checkUsage(const Arguments &arguments)
{
    const OptionValues &options = arguments.options();
    if (options.has(OutputFile) && options.has(OutputDirectory))
        throw UsageError{QStringLiteral("-o and --output-dir exclude each other.")};
    if (options.has(OutputFile)
        && (arguments.operands().size() > 1 || isDirectory(arguments.operand(0))))
        throw UsageError{QStringLiteral("-o takes the tune of one file; use --output-dir.")};
}

/// Answers whether everything there could be read, and there was something.
bool addDirectory(const QString &directory, QVector<Source> &sources, Console &console)
{
    const Tunes::Found found = Tunes::midiFilesBelow(directory);
    const QDir base(directory);
    for (const QString &file : found.files) {
        const QString path = base.relativeFilePath(QFileInfo(file).absoluteFilePath());
        const QString folder = QFileInfo(path).path();
        sources.append({file, folder == QLatin1String(".") ? QString() : folder});
    }
    for (const QString &unreadable : found.unreadable)
        console.message(QStringLiteral("Could not read the directory %1.").arg(unreadable));
    if (found.files.isEmpty() && found.unreadable.isEmpty())
        console.message(QStringLiteral("%1: There is no MIDI file in it.").arg(directory));
    return !found.files.isEmpty() && found.unreadable.isEmpty();
}

/// Where the texts go.
class Delivery {
public:
    Delivery(const OptionValues &options, Console &console)
        : m_options(options)
        , m_console(console)
    {
    }

    /// Makes sure that nothing is lost by it. Throws a QString.
    void prepare(const QVector<Source> &sources) const;

    /// False, with a message, if not all got where it should.
    bool deliver(const Source &source, const Converted &converted);

private:
    bool isDirectory() const { return m_options.has(OutputDirectory); }
    bool isFile() const { return !isDirectory() && outputFile() != QLatin1String("-"); }
    QString directory() const { return m_options.value(OutputDirectory); }
    QString outputFile() const { return m_options.value(OutputFile, QStringLiteral("-")); }

    bool toDirectory(const Source &source, const Converted &converted);
    bool toFile(const Source &source, const Converted &converted);
    void print(const QString &text);
    bool write(const QString &file, const QString &output, const QString &text);

    const OptionValues &m_options;
    Console &m_console;
    bool m_isFirst = true;
};

void makeDirectory(const QString &directory)
{
    if (!QDir().mkpath(directory))
        throw QStringLiteral("Could not create the directory %1.").arg(directory);
}

void Delivery::prepare(const QVector<Source> &sources) const
{
    if (isDirectory()) {
        Destinations(directory()).check(sources);
        makeDirectory(directory());
    } else if (isFile()) {
        for (const Source &source : sources) {
            if (Files::areSame(source.file, outputFile()))
                throw QStringLiteral("%1 is an input file.").arg(outputFile());
        }
    }
}

bool Delivery::deliver(const Source &source, const Converted &converted)
{
    if (isDirectory())
        return toDirectory(source, converted);
    if (isFile())
        return toFile(source, converted);
    for (const QString &text : converted.texts)
        print(text);
    return true;
}

bool Delivery::toDirectory(const Source &source, const Converted &converted)
{
    const Destinations destinations(directory());
    const int count = converted.texts.size();
    const QStringList outputs = destinations.files(source, converted.isMidi, count);
    QDir().mkpath(destinations.folder(source)); // writing tells if it failed
    bool isWhole = true;
    for (int i = 0; i < count; ++i)
        isWhole = write(source.file, outputs.at(i), converted.texts.at(i)) && isWhole;
    return isWhole;
}

bool Delivery::toFile(const Source &source, const Converted &converted)
{
    const int count = converted.texts.size();
    if (count == 1)
        return write(source.file, outputFile(), converted.texts.first());
    if (count > 1)
        m_console.message(QStringLiteral("%1: It has %2 tracks, -o takes one; use --output-dir.")
                              .arg(source.file, QString::number(count)));
    return false; // the log says that there are none
}

/// With the empty line between tunes that ABC asks for.
void Delivery::print(const QString &text)
{
    if (!m_isFirst)
        m_console.write(QByteArrayLiteral("\n"));
    m_isFirst = false;
    m_console.write(text.toUtf8());
}

bool Delivery::write(const QString &file, const QString &output, const QString &text)
{
    try {
        Files::write(output, text.toUtf8());
    } catch (const QString &error) {
        m_console.message(error);
        return false;
    }
    JsonWriter json;
    m_console.line(json.beginObject().member("file", file).member("output", output).endObject());
    return true;
}

bool convertAll(const QVector<Source> &sources, const OptionValues &options, Console &console)
{
    QStringList files;
    for (const Source &source : sources)
        files.append(source.file);
    Delivery delivery(options, console);
    delivery.prepare(sources);
    std::vector<Converted> products(static_cast<size_t>(files.size()));
    bool isWhole = true;
    const auto make = [&](int number, const Tunes::Music &music) {
        products.at(static_cast<size_t>(number)) = converted(music, options);
    };
    const auto take = [&](int number, const std::optional<QString> &error) {
        const Converted product = std::exchange(products.at(static_cast<size_t>(number)), {});
        if (error)
            console.message(QStringLiteral("%1: %2").arg(files.at(number), *error));
        isWhole = !error && delivery.deliver(sources.at(number), product) && isWhole;
    };
    Tunes::forEach(files, Tunes::midiOptions(options), QStringLiteral("Converting"), make, take,
                   console);
    return isWhole;
}

int run(const Arguments &arguments, Console &console)
{
    checkUsage(arguments);
    TrackChanges::noteUnsupportedKeys(arguments.options(), console);
    QVector<Source> sources;
    bool isWhole = true;
    for (const Operand &operand : arguments.operands()) {
        if (isDirectory(operand.text))
            isWhole = addDirectory(operand.text, sources, console) && isWhole;
        else
            sources.append({operand.text, {}});
    }
    isWhole = convertAll(sources, arguments.options(), console) && isWhole;
    return isWhole ? Status::Success : Status::Failure;
}

QVector<Option> options()
{
    return QVector<Option>{
               {OutputFile, "FILE", "Write the tune to FILE; - is standard output."},
               {OutputDirectory, "DIR",
                "Write into DIR: x.abc to x.abc, x.mid to x-1.abc, x-2.abc ..."},
           }
    + TrackChanges::options() + Tunes::options();
}

} // namespace

Command abcCommand()
{
    return {"abc",       "FILE...", "Write tunes and MIDI files as ABC text.",
            Description, 1,         -1,
            false,       options(), run};
}
