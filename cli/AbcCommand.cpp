#include "ABC/ABCGenerator.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Files.h"
#include "cli/Tunes.h"

#include <QDir>
#include <QMap>

#include <set>

namespace {

constexpr const char *OutputFile = "-o";
constexpr const char *OutputDirectory = "--output-dir";

const char *const Description =
    "Writes each tune anew, as ABC text of one voice without bar lines, to standard output (the\n"
    "tunes separated by empty lines) or into files; each file written is reported as\n"
    "{\"file\":...,\"output\":...}. A file that cannot be read makes the exit status 1; the "
    "others\n"
    "are still written. FILE may be - for standard input. No input file is ever overwritten, and\n"
    "no two files are written to one place.\n";

QString generated(const QString &file)
{
    Track track = Tunes::read(file);
    return ABCGenerator().generate(track);
}

bool goesToFiles(const OptionValues &options)
{
    return options.has(OutputDirectory)
        || options.value(OutputFile, QStringLiteral("-")) != QLatin1String("-");
}

/// The output file for the tune of a file.
QString destination(const QString &file, const OptionValues &options)
{
    if (options.has(OutputDirectory))
        return options.value(OutputDirectory) + QLatin1Char('/') + Tunes::stem(file)
            + QStringLiteral(".abc");
    return options.value(OutputFile);
}

/// All of them before the first is written: from output to input file.
void checkDestinations(const QVector<Operand> &files, const OptionValues &options)
{
    std::set<Files::Identity> sources;
    for (const Operand &operand : files)
        sources.insert(Files::identity(operand.text));
    sources.erase(Files::Identity());
    QMap<QString, QString> inputs;
    for (const Operand &operand : files) {
        const QString output = destination(operand.text, options);
        if (inputs.contains(output))
            throw QStringLiteral("%1 and %2 would both be written to %3.")
                .arg(inputs.value(output), operand.text, output);
        inputs.insert(output, operand.text);
        if (sources.count(Files::identity(output)) > 0)
            throw QStringLiteral("%1 is an input file.").arg(output);
    }
}

void checkUsage(const Arguments &arguments)
{
    const OptionValues &options = arguments.options();
    if (options.has(OutputFile) && options.has(OutputDirectory))
        throw UsageError{QStringLiteral("-o and --output-dir exclude each other.")};
    if (options.has(OutputFile) && arguments.operands().size() > 1)
        throw UsageError{QStringLiteral("-o takes the tune of one file; use --output-dir.")};
}

void prepareDirectory(const OptionValues &options)
{
    const QString directory = options.value(OutputDirectory);
    if (options.has(OutputDirectory) && !QDir().mkpath(directory))
        throw QStringLiteral("Could not create the directory %1.").arg(directory);
}

void report(const QString &file, const QString &output, Console &console)
{
    JsonWriter json;
    console.line(json.beginObject().member("file", file).member("output", output).endObject());
}

/// Prints tunes one after the other, with the empty line between them that ABC asks for.
class Printer {
public:
    explicit Printer(Console &console)
        : m_console(console)
    {
    }

    void print(const QString &text)
    {
        if (!m_isFirst)
            m_console.write(QByteArrayLiteral("\n"));
        m_isFirst = false;
        m_console.write(text.toUtf8());
    }

private:
    Console &m_console;
    bool m_isFirst = true;
};

int run(const Arguments &arguments, Console &console)
{
    checkUsage(arguments);
    const OptionValues &options = arguments.options();
    const bool toFiles = goesToFiles(options);
    if (toFiles) {
        prepareDirectory(options);
        checkDestinations(arguments.operands(), options);
    }
    Printer printer(console);
    int status = Status::Success;
    for (const Operand &operand : arguments.operands()) {
        console.progress(QStringLiteral("Converting %1").arg(operand.text));
        QString text;
        try {
            const Console::Subject subject(console, operand.text);
            text = generated(operand.text);
        } catch (const QString &error) {
            console.message(QStringLiteral("%1: %2").arg(operand.text, error));
            status = Status::Failure;
            continue;
        }
        if (toFiles) {
            const QString output = destination(operand.text, options);
            Files::write(output, text.toUtf8());
            report(operand.text, output, console);
        } else {
            printer.print(text);
        }
    }
    return status;
}

} // namespace

Command abcCommand()
{
    return {"abc",
            "FILE...",
            "Write tunes anew as ABC text.",
            Description,
            1,
            -1,
            false,
            {
                {OutputFile, "FILE", "Write the tune to FILE; - is standard output."},
                {OutputDirectory, "DIR",
                 "Write the tune of x.abc to DIR/x.abc; DIR is made if need be."},
            },
            run};
}
