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

DemoGame::DemoGame()
{
    std::vector<Demo::InstrumentPlan> plans = Demo::gameInstruments();
    plans.push_back(Demo::looseModInstrument());
    plans.push_back(Demo::packagedModInstrument());
    std::vector<Assets> assets = Demo::makeAssets(plans);

    m_files.insert(QStringLiteral("mods/Music Box.modpak"), package({takeLast(assets)}));
    const Assets looseMod = takeLast(assets);
    for (auto file = looseMod.cbegin(); file != looseMod.cend(); ++file)
        m_files.insert(QStringLiteral("mods/Street Music") + file.key(), file.value());
    m_files.insert(QStringLiteral("assets/packed.pak"), package(assets));
    m_files.insert(QStringLiteral("win32/quillmoor.exe"), placeholder());
}

void DemoGame::write(const QString &dir) const
{
    Demo::GeneratedFiles files(dir);
    for (auto file = m_files.cbegin(); file != m_files.cend(); ++file)
        files.add(file.key(), file.value());
    files.writeOrRefuse();
}
