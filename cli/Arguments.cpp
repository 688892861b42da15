#include "cli/Arguments.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

/// Walks over the arguments of one command.
class Parser {
public:
    Parser(const QStringList &arguments, const QVector<Option> &table)
        : m_arguments(arguments)
        , m_table(table)
    {
    }

    void run();

    bool wantsHelp = false;
    OptionValues options;
    QVector<Operand> operands;

private:
    void takeOption(const QString &argument);
    const Option &lookUp(const QString &name) const;
    QString takeValue(const Option &option, const std::optional<QString> &attached);
    void store(const Option &option, const QString &value);
    void takeOperand(const QString &text);

    const QStringList &m_arguments;
    const QVector<Option> &m_table;
    int m_next = 0;
    OptionValues m_filesAfter;
    QString m_unused; // the last option of scope FilesAfter since the last operand
};

bool looksLikeOption(const QString &argument)
{
    return argument.size() > 1 && argument.startsWith(QLatin1Char('-'));
}

bool isHelp(const QString &argument)
{
    return argument == QLatin1String("--help") || argument == QLatin1String("-h");
}

void Parser::run()
{
    bool optionsEnded = false;
    while (m_next < m_arguments.size()) {
        const QString &argument = m_arguments.at(m_next++);
        if (optionsEnded || !looksLikeOption(argument))
            takeOperand(argument);
        else if (argument == QLatin1String("--"))
            optionsEnded = true;
        else if (isHelp(argument))
            wantsHelp = true;
        else
            takeOption(argument);
    }
    if (!m_unused.isEmpty() && !wantsHelp)
        throw UsageError{
            QStringLiteral("%1 applies to the files after it, but none follows.").arg(m_unused)};
}

void Parser::takeOption(const QString &argument)
{
    const int equals =
        argument.startsWith(QLatin1String("--")) ? argument.indexOf(QLatin1Char('=')) : -1;
    const Option &option = lookUp(argument.left(equals));
    const auto attached =
        equals < 0 ? std::nullopt : std::optional<QString>(argument.mid(equals + 1));
    store(option, takeValue(option, attached));
}

const Option &Parser::lookUp(const QString &name) const
{
    const auto it = std::find_if(m_table.begin(), m_table.end(), [&](const Option &option) {
        return name == QLatin1String(option.name);
    });
    if (it == m_table.end())
        throw UsageError{QStringLiteral("Unknown option '%1'.").arg(name)};
    return *it;
}

QString Parser::takeValue(const Option &option, const std::optional<QString> &attached)
{
    const QString name = QLatin1String(option.name);
    if (option.valueName == nullptr) {
        if (attached)
            throw UsageError{QStringLiteral("%1 takes no value.").arg(name)};
        return {};
    }
    if (!attached && m_next == m_arguments.size())
        throw UsageError{
            QStringLiteral("%1 needs a value (%2).").arg(name, QLatin1String(option.valueName))};
    return attached ? *attached : m_arguments.at(m_next++);
}

void Parser::store(const Option &option, const QString &value)
{
    const QString name = QLatin1String(option.name);
    const QString problem = option.check != nullptr ? option.check(value) : QString();
    if (!problem.isEmpty())
        throw UsageError{QStringLiteral("%1: %2").arg(name, problem)};
    if (option.scope == Option::FilesAfter) {
        m_filesAfter.add(name, value);
        m_unused = name;
    } else {
        options.add(name, value);
    }
}

void Parser::takeOperand(const QString &text)
{
    operands.append({text, m_filesAfter});
    m_unused.clear();
}

} // namespace

bool OptionValues::has(const char *name) const
{
    return std::any_of(m_given.begin(), m_given.end(),
                       [&](const Given &given) { return given.name == QLatin1String(name); });
}

QString OptionValues::value(const char *name, const QString &fallback) const
{
    const auto it = std::find_if(m_given.rbegin(), m_given.rend(), [&](const Given &given) {
        return given.name == QLatin1String(name);
    });
    return it == m_given.rend() ? fallback : it->value;
}

double OptionValues::number(const char *name, double fallback) const
{
    return has(name) ? value(name).toDouble() : fallback;
}

QStringList texts(const QVector<Operand> &operands)
{
    QStringList result;
    for (const Operand &operand : operands)
        result.append(operand.text);
    return result;
}

Arguments Arguments::parse(const QStringList &arguments, const QVector<Option> &options)
{
    Parser parser(arguments, options);
    parser.run();
    Arguments result;
    result.m_wantsHelp = parser.wantsHelp;
    result.m_options = parser.options;
    result.m_operands = parser.operands;
    return result;
}

QString checkNumber(const QString &value, double low, double high)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (isNumber && number >= low && number <= high) // false for NaN
        return {};
    return QStringLiteral("'%1' is not a number from %2 to %3.")
        .arg(value, QString::number(low), QString::number(high));
}

QString checkInteger(const QString &value, int low, int high)
{
    bool isInteger = false;
    const int number = value.toInt(&isInteger);
    if (isInteger && number >= low && number <= high)
        return {};
    return QStringLiteral("'%1' is not a whole number from %2 to %3.")
        .arg(value, QString::number(low), QString::number(high));
}
