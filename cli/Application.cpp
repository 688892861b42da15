#include "cli/Application.h"

#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Help.h"
#include "model/FileNameCodec.h"
#include "model/Signals.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <array>
#include <cstdio>
#include <exception>
#include <memory>

#include <unistd.h>

namespace {

QStringList decoded(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(FileNameCodec::decode(argv[i]));
    return arguments;
}

QStringList words(const Command &command)
{
    return QString(QLatin1String(command.name)).split(QLatin1Char(' '));
}

/// The command's name is one argument or two.
const Command *findCommand(const QStringList &arguments)
{
    for (const Command &command : commands()) {
        const QStringList name = words(command);
        if (arguments.mid(0, name.size()) == name)
            return &command;
    }
    return nullptr;
}

QVector<Command> group(const QString &name)
{
    QVector<Command> result;
    for (const Command &command : commands()) {
        if (words(command).size() == 2 && words(command).first() == name)
            result.append(command);
    }
    return result;
}

bool isHelp(const QString &argument)
{
    return argument == QLatin1String("--help") || argument == QLatin1String("-h");
}

int print(Console &console, const QString &text)
{
    console.write(FileNameCodec::encode(text));
    return Status::Success;
}

int runWithoutCommand(const QStringList &arguments, Console &console)
{
    const QString first = arguments.value(0);
    const QVector<Command> members = group(first);
    if (isHelp(first))
        return print(console, Help::overview(commands()));
    if (first == QLatin1String("--version"))
        return print(console, QStringLiteral("quillmoor-cli " QUILLMOOR_VERSION "\n"));
    if (!members.isEmpty() && isHelp(arguments.value(1)))
        return print(console, Help::overview(members));
    if (first.isEmpty() || (!members.isEmpty() && arguments.size() == 1))
        throw UsageError{QStringLiteral("No command given.")};
    if (first.startsWith(QLatin1Char('-')))
        throw UsageError{QStringLiteral("Unknown option '%1'.").arg(first)};
    const QString name = members.isEmpty() ? first : first + QLatin1Char(' ') + arguments.at(1);
    throw UsageError{QStringLiteral("Unknown command '%1'.").arg(name)};
}

void checkOperands(const Command &command, const Arguments &arguments)
{
    const int count = arguments.operands().size();
    if (count < command.minOperands)
        throw UsageError{QStringLiteral("Too few arguments. Usage: %1").arg(Help::usage(command))};
    if (command.maxOperands >= 0 && count > command.maxOperands)
        throw UsageError{QStringLiteral("Too many arguments. Usage: %1").arg(Help::usage(command))};
}

/// What Qt's platform layer has to say about the user's session at start concerns nobody here.
void keepOnlyFatal(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "quillmoor-cli: %s\n", text.toUtf8().constData());
}

/// Needs neither a display nor the user's choice of a platform: nothing is ever shown.
std::unique_ptr<QCoreApplication> makeGuiApplication()
{
    static std::array<char, 14> program = {"quillmoor-cli"};
    static std::array<char, 10> option = {"-platform"};
    static std::array<char, 8> platform = {"minimal"};
    static std::array<char *, 4> argv = {program.data(), option.data(), platform.data(), nullptr};
    static int argc = 3;
    const QtMessageHandler handler = qInstallMessageHandler(keepOnlyFatal);
    auto application = std::make_unique<QGuiApplication>(argc, argv.data());
    qInstallMessageHandler(handler);
    return application;
}

std::unique_ptr<QCoreApplication> makeApplication(bool needsGui)
{
    static std::array<char, 14> program = {"quillmoor-cli"};
    static std::array<char *, 2> argv = {program.data(), nullptr};
    static int argc = 1;
    return needsGui ? makeGuiApplication() : std::make_unique<QCoreApplication>(argc, argv.data());
}

int runCommand(const Command &command, const QStringList &rest, Console &console)
{
    const Arguments arguments = Arguments::parse(rest, command.options);
    if (arguments.wantsHelp())
        return print(console, Help::forCommand(command));
    checkOperands(command, arguments);
    const auto application = makeApplication(command.needsGui);
    return command.run(arguments, console);
}

int runArguments(const QStringList &arguments, Console &console)
{
    const Command *const command = findCommand(arguments);
    if (command == nullptr)
        return runWithoutCommand(arguments, console);
    return runCommand(*command, arguments.mid(words(*command).size()), console);
}

int reportBadUsage(const UsageError &error, const QStringList &arguments, Console &console)
{
    const Command *const command = findCommand(arguments);
    const QString name =
        command == nullptr ? QString() : QLatin1Char(' ') + QLatin1String(command->name);
    console.message(error.message);
    console.message(QStringLiteral("Try 'quillmoor-cli%1 --help'.").arg(name));
    return Status::BadUsage;
}

int reportFailure(const QString &text, Console &console)
{
    console.message(text);
    return Status::Failure;
}

} // namespace

int Application::run(int argc, char **argv)
{
    prepareStandardStreams();
    FileNameCodec::install();
    Console console(STDOUT_FILENO, STDERR_FILENO);
    console.takeLog();
    const QStringList arguments = decoded(argc, argv);
    try {
        return runArguments(arguments, console);
    } catch (const UsageError &error) {
        return reportBadUsage(error, arguments, console);
    } catch (const QString &message) {
        return reportFailure(message, console);
    } catch (const ClosedOutput &) {
        return Status::Failure;
    } catch (const std::exception &error) {
        return reportFailure(QString::fromLocal8Bit(error.what()), console);
    }
}
