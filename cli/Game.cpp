#include "cli/Game.h"

#include "Quillmoor/GameDirectory.h"

#include <QFileInfo>

namespace {

constexpr const char *GameOption = "--game";
constexpr const char *ModsOption = "--mods";

bool isGame(const QString &path)
{
    return QFileInfo(path).isDir() && isGameDirectory(QDir(path));
}

QString specifiedDirectory(const OptionValues &options)
{
    return options.value(GameOption, qEnvironmentVariable("QUILLMOOR_GAME"));
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
    const QString directory = specifiedDirectory(options);
    if (directory.isEmpty() && !options.has(GameOption))
        return foundDirectory();
    if (!isGame(directory))
        throw QStringLiteral("No Quillmoor installation was found at the specified directory.");
    return QDir(directory);
}

QuillmoorInstrumentSet Game::instruments(const OptionValues &options)
{
    return QuillmoorInstrumentSet(directory(options), options.has(ModsOption));
}
