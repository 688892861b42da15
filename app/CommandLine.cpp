#include "app/CommandLine.h"

#include <algorithm>
#include <array>

namespace {

/// Qt accepts its options with one dash or two.
struct QtOption {
    const char *name;
    bool hasValue;
};

constexpr std::array<QtOption, 22> QtOptions = {{
    {"-display", true},       {"-dograb", false},
    {"-geometry", true},      {"-icon", true},
    {"-name", true},          {"-nograb", false},
    {"-platform", true},      {"-platformpluginpath", true},
    {"-platformtheme", true}, {"-plugin", true},
    {"-qmljsdebugger", true}, {"-qwindowgeometry", true},
    {"-qwindowicon", true},   {"-qwindowtitle", true},
    {"-reverse", false},      {"-session", true},
    {"-style", true},         {"-stylesheet", true},
    {"-testability", false},  {"-title", true},
    {"-visual", true},        {"-widgetcount", false},
}};

const QtOption *findQtOption(const QString &name)
{
    const QString withOneDash = name.mid(name.startsWith(QLatin1String("--")) ? 1 : 0);
    const auto *const it =
        std::find_if(QtOptions.begin(), QtOptions.end(), [&](const QtOption &option) {
            return withOneDash == QLatin1String(option.name);
        });
    return it == QtOptions.end() ? nullptr : it;
}

bool looksLikeOption(const QString &argument)
{
    return argument.size() > 1 && argument.startsWith(QLatin1Char('-'));
}

/// Walks over the arguments.
class Parser {
public:
    explicit Parser(const QStringList &arguments)
        : m_arguments(arguments)
    {
    }

    CommandLine run();

private:
    void takeOption(const QString &argument);
    void takeQtOption(const QtOption &option);
    QString takeValue();
    void refuseValue() const;

    const QStringList &m_arguments;
    int m_next = 0;
    QString m_name;                    // of the current option
    std::optional<QString> m_attached; // what follows it after "="
    CommandLine m_result;
};

CommandLine Parser::run()
{
    bool optionsEnded = false;
    while (m_next < m_arguments.size() && m_result.task == CommandLine::OpenWindow) {
        const QString &argument = m_arguments.at(m_next++);
        if (optionsEnded || !looksLikeOption(argument))
            m_result.files.append(argument);
        else if (argument == QLatin1String("--"))
            optionsEnded = true;
        else
            takeOption(argument);
    }
    return m_result;
}

void Parser::takeOption(const QString &argument)
{
    const int equals = argument.indexOf(QLatin1Char('='));
    m_name = argument.left(equals);
    m_attached = equals < 0 ? std::nullopt : std::optional(argument.mid(equals + 1));
    if (m_name == QLatin1String("--game"))
        m_result.game = takeValue();
    else if (argument == QLatin1String("--help") || argument == QLatin1String("-h"))
        m_result.task = CommandLine::ShowHelp;
    else if (argument == QLatin1String("--version"))
        m_result.task = CommandLine::ShowVersion;
    else if (const QtOption *const option = findQtOption(m_name))
        takeQtOption(*option);
    else
        throw QStringLiteral("Unknown option '%1'.").arg(argument);
}

/// As two arguments, because Qt understands "=" after some of its options only.
void Parser::takeQtOption(const QtOption &option)
{
    const QString name = QLatin1String(option.name);
    m_result.qtArguments.append(name);
    if (option.hasValue)
        m_result.qtArguments.append(takeValue());
    else
        refuseValue();
    m_result.choosesPlatform |= name == QLatin1String("-platform");
}

QString Parser::takeValue()
{
    if (m_attached)
        return *m_attached;
    if (m_next == m_arguments.size())
        throw QStringLiteral("%1 needs a value.").arg(m_name);
    return m_arguments.at(m_next++);
}

void Parser::refuseValue() const
{
    if (m_attached)
        throw QStringLiteral("%1 takes no value.").arg(m_name);
}

} // namespace

CommandLine CommandLine::parse(const QStringList &arguments)
{
    return Parser(arguments).run();
}

QString CommandLine::help()
{
    return QStringLiteral(
        "Usage: quillmoor-composer [OPTION]... [FILE]...\n"
        "\n"
        "Writes and auditions music for the instruments of the game Quillmoor. Each FILE, ABC or\n"
        "MIDI, is opened in the window.\n"
        "\n"
        "Options:\n"
        "  --game DIR  Use the game in this directory, for this run only (else $QUILLMOOR_GAME, "
        "else\n"
        "              the one that was found or chosen before).\n"
        "  -h, --help  Show this text and exit.\n"
        "  --version   Show the version and exit.\n"
        "\n"
        "Qt's own options, such as -platform, -style and -geometry, work as usual.\n"
        "The exit status is 0, 1 after a failure, 2 for bad usage.\n");
}
