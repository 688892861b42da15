#include "cli/Game.h"

#include "Quillmoor/GameDirectory.h"

namespace {

constexpr const char *GameOption = "--game";
constexpr const char *ModsOption = "--mods";

std::optional<QString> valueOf(const char *option, const OptionValues &options)
{
    return options.has(option) ? std::optional(options.value(option)) : std::nullopt;
}

QDir foundDirectory()
{
    const QString directory = usualGameDirectory();
    if (directory.isEmpty())
        throw QStringLiteral("No Quillmoor installation was found. Name its directory with --game "
                             "DIR, or make a demo game with 'quillmoor-cli demo-game DIR'.");
    return QDir(directory);
}

} // namespace

QVector<Option> Game::options()
{
    return {
        {GameOption, "DIR", "The game's directory (else $QUILLMOOR_GAME, else the usual place)."},
        {ModsOption, nullptr, "Take the instruments of mods, too."},
    };
}

QDir Game::directory(const OptionValues &options)
{
    const auto directory = namedGameDirectory(valueOf(GameOption, options));
    if (!directory)
        return foundDirectory();
    if (!isGameDirectory(*directory))
        throw QStringLiteral("No Quillmoor installation was found at the specified directory.");
    return QDir(*directory);
}

QuillmoorInstrumentSet Game::instruments(const OptionValues &options)
{
    return QuillmoorInstrumentSet(directory(options), options.has(ModsOption));
}
