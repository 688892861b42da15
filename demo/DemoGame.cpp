#include "demo/DemoGame.h"

#include "demo/GeneratedFiles.h"
#include "demo/Instruments.h"

#include "Quillmoor/PakWriter.h"

namespace {

using Demo::Assets;

/// Small, so that the demo game's package is as deep a tree as the game's own.
constexpr int BlockSize = 1024;

QByteArray package(const std::vector<Assets> &parts)
{
    PakWriter writer(BlockSize);
    for (const Assets &assets : parts) {
        for (auto file = assets.cbegin(); file != assets.cend(); ++file)
            writer.add(file.key(), file.value());
    }
    return writer.toBytes();
}

Assets takeLast(std::vector<Assets> &assets)
{
    const Assets last = assets.back();
    assets.pop_back();
    return last;
}

QByteArray placeholder()
{
    return QByteArrayLiteral(
        "This is not a program. It stands where the game has its own, so that Quillmoor "
        "Composer\naccepts this directory as a game directory. The instruments are in "
        "assets/packed.pak\nand in mods.\n");
}

} // namespace

void writeDemoGame(const QString &dir)
{
    std::vector<Demo::InstrumentPlan> plans = Demo::gameInstruments();
    plans.push_back(Demo::looseModInstrument());
    plans.push_back(Demo::packagedModInstrument());
    std::vector<Assets> assets = Demo::makeAssets(plans);

    Demo::GeneratedFiles files(dir);
    files.add(QStringLiteral("mods/Music Box.modpak"), package({takeLast(assets)}));
    const Assets looseMod = takeLast(assets);
    for (auto file = looseMod.cbegin(); file != looseMod.cend(); ++file)
        files.add(QStringLiteral("mods/Street Music") + file.key(), file.value());
    files.add(QStringLiteral("assets/packed.pak"), package(assets));
    files.add(QStringLiteral("win32/quillmoor.exe"), placeholder());
    files.writeOrRefuse();
}
