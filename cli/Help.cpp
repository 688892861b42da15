#include "cli/Help.h"

#include <algorithm>

namespace {

constexpr int Indent = 2;
constexpr int Gap = 2;

struct Row {
    QString term;
    QString text;
};

QString row(const Row &row, int width)
{
    return QString(Indent, QLatin1Char(' ')) + row.term.leftJustified(width + Gap) + row.text
        + QLatin1Char('\n');
}

QString table(const QVector<Row> &rows)
{
    int width = 0;
    for (const Row &each : rows)
        width = std::max(width, each.term.size());
    QString text;
    for (const Row &each : rows)
        text += row(each, width);
    return text;
}

QString term(const Option &option)
{
    const QString name = QLatin1String(option.name);
    return option.valueName == nullptr ? name
                                       : name + QLatin1Char(' ') + QLatin1String(option.valueName);
}

QVector<Row> optionRows(const Command &command, Option::Scope scope)
{
    QVector<Row> rows;
    for (const Option &option : command.options) {
        if (option.scope == scope)
            rows.append({term(option), QLatin1String(option.help)});
    }
    return rows;
}

QString section(const char *title, const QVector<Row> &rows)
{
    return rows.isEmpty()
        ? QString()
        : QLatin1Char('\n') + QLatin1String(title) + QLatin1Char('\n') + table(rows);
}

const char *const OverviewHead =
    "Usage: quillmoor-cli COMMAND [ARGUMENT]...\n"
    "\n"
    "Works on music in ABC notation, MIDI files and the instruments of the game Quillmoor.\n"
    "Results are JSON Lines on standard output, messages go to standard error.\n";

const char *const OverviewTail = "\n"
                                 "'quillmoor-cli COMMAND --help' explains a command.\n"
                                 "The exit status is 0, 1 after a failure, 2 for bad usage.\n";

} // namespace

QString Help::usage(const Command &command)
{
    QString text = QStringLiteral("quillmoor-cli ") + QLatin1String(command.name);
    if (!command.options.isEmpty())
        text += QStringLiteral(" [OPTION]...");
    if (*command.operands != '\0')
        text += QLatin1Char(' ') + QLatin1String(command.operands);
    return text;
}

QString Help::overview(const QVector<Command> &commands)
{
    QVector<Row> rows;
    for (const Command &command : commands)
        rows.append({QLatin1String(command.name), QLatin1String(command.summary)});
    const QVector<Row> options = {
        {QStringLiteral("-h, --help"), QStringLiteral("Show this text and exit.")},
        {QStringLiteral("--version"), QStringLiteral("Show the version and exit.")},
    };
    return QLatin1String(OverviewHead) + section("Commands:", rows) + section("Options:", options)
        + QLatin1String(OverviewTail);
}

QString Help::forCommand(const Command &command)
{
    QVector<Row> options = optionRows(command, Option::WholeCommand);
    options.append({QStringLiteral("-h, --help"), QStringLiteral("Show this text and exit.")});
    return QStringLiteral("Usage: ") + usage(command) + QStringLiteral("\n\n")
        + QLatin1String(command.description)
        + section("Options for the files after them:", optionRows(command, Option::FilesAfter))
        + section("Options:", options);
}
