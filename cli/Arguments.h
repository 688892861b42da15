#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// A command line that cannot be carried out as it is written; ends the program with status 2.
struct UsageError {
    QString message;
};

/// One option of a command, declared as data.
struct Option {
    enum Scope {
        WholeCommand, ///< wherever it stands; given twice, the last one counts
        FilesAfter,   ///< applies to the operands after it, until it is given again
    };
    /// Answers why `value` cannot be taken, or an empty text.
    using Check = QString (*)(const QString &value);

    const char *name;      ///< with its dashes: "--output-dir", "-o"
    const char *valueName; ///< what the help calls its value; null for a switch
    const char *help;
    Scope scope = WholeCommand;
    Check check = nullptr;
};

/// Options with their values in the order given.
class OptionValues {
public:
    struct Given {
        QString name;
        QString value; ///< empty for a switch
    };

    void add(const QString &name, const QString &value) { m_given.append({name, value}); }

    bool has(const char *name) const;
    /// The value given last, or `fallback`.
    QString value(const char *name, const QString &fallback = QString()) const;
    /// The same as a number, for an option whose check lets only numbers through.
    double number(const char *name, double fallback) const;

    const QVector<Given> &given() const { return m_given; }

private:
    QVector<Given> m_given;
};

/// An argument that is no option, with the options in force for it.
struct Operand {
    QString text;
    OptionValues options; ///< those of scope FilesAfter
};

/// What the operands are, without their options.
QStringList texts(const QVector<Operand> &operands);

/// A command's arguments, taken apart.
///
/// Options and operands may be mixed. A value follows its option as the next argument, whatever
/// that looks like, or after "=". "--" makes operands of all that follows, "-" is an operand.
/// "--help" and "-h" are options of every command.
class Arguments {
public:
    /// Throws a UsageError for an unknown option, a missing, superfluous or refused value, and an
    /// option of scope FilesAfter with no operand after it.
    static Arguments parse(const QStringList &arguments, const QVector<Option> &options);

    bool wantsHelp() const { return m_wantsHelp; }
    const OptionValues &options() const { return m_options; }
    const QVector<Operand> &operands() const { return m_operands; }
    const QString &operand(int index) const { return m_operands.at(index).text; }

private:
    bool m_wantsHelp = false;
    OptionValues m_options;
    QVector<Operand> m_operands;
};

/// For checks of options that take a number, or a whole number, from `low` to `high`.
QString checkNumber(const QString &value, double low, double high);
QString checkInteger(const QString &value, int low, int high);
