#include "SmallGame.h"

#include "ProgramRun.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QtEndian>

#include <cmath>

namespace {

constexpr int Rate = 48000;
constexpr int Frames = Rate * 2;

void makeFileBelow(const QString &directory, const char *path, const QByteArray &contents)
{
    const QString file = directory + QString::fromUtf8(path);
    QDir().mkpath(QFileInfo(file).path());
    makeFile(file, contents);
}

template <typename Integer> QByteArray littleEndian(Integer value)
{
    QByteArray bytes(sizeof(Integer), '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray waveFile(const QByteArray &samples)
{
    return "RIFF" + littleEndian<quint32>(36 + samples.size()) + "WAVEfmt "
        + littleEndian<quint32>(16) + littleEndian<quint16>(1) + littleEndian<quint16>(1)
        + littleEndian<quint32>(Rate) + littleEndian<quint32>(Rate * 2) + littleEndian<quint16>(2)
        + littleEndian<quint16>(16) + "data" + littleEndian<quint32>(samples.size()) + samples;
}

/// 440 Hz, half of full scale.
QByteArray tone()
{
    QByteArray samples;
    for (int i = 0; i < Frames; ++i)
        samples +=
            littleEndian(static_cast<qint16>(16384 * std::sin(i * 440 * 6.283185307179586 / Rate)));
    return waveFile(samples);
}

QByteArray icon()
{
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(0xFF804020U);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

void makeDrum(const QString &directory, const char *name)
{
    makeFileBelow(directory, "/items/instruments/drum.instrument",
                  QByteArray("{\"shortdescription\":\"") + name
                      + "\",\"kind\":\"drum\",\"inventoryIcon\":\"none.png\"}");
    makeFileBelow(
        directory, "/sfx/instruments/drum/tuning.config",
        "{\"mapping\":{\"60\":{\"file\":\"/sfx/instruments/$instrument$/a.wav\",\"f\":261.63}}}");
    makeFileBelow(directory, "/sfx/instruments/drum/a.wav", tone());
}

} // namespace

const QByteArray SmallGameLog =
    "quillmoor-cli: tryGetFile failed on /items/instruments/none.png: File not found\n"
    "quillmoor-cli: No icon file found for instrument Drum!\n";

const QByteArray EndlessTune =
    "X:1\nT:Long\nM:4/4\nL:4/1\nQ:1/4=1\nK:C\n" + QByteArray("C ").repeated(75) + "\n";

void makeInstrumentTree(const QString &directory)
{
    makeDrum(directory, "Drum");
    makeFileBelow(
        directory, "/items/instruments/lute.instrument",
        "{\"shortdescription\":\"Lute\",\"kind\":\"lute\",\"inventoryIcon\":\"lute.png\"}");
    makeFileBelow(directory, "/items/instruments/lute.png", icon());
    makeFileBelow(directory, "/sfx/instruments/lute/tuning.config",
                  "// two seconds of a sine\n"
                  "{\"fadeout\":0.25,\"mapping\":{"
                  "\"60\":{\"files\":[\"/sfx/instruments/lute/a.wav\"],\"f\":261.625},"
                  "\"61\":{\"f\":277.18}}}");
    makeFileBelow(directory, "/sfx/instruments/lute/a.wav", tone());
}

void makeSmallGame(const QString &directory)
{
    makeFileBelow(directory, "/win32/quillmoor.exe", "a text");
    QDir(directory).mkpath(QStringLiteral("assets"));
    makeDrum(directory + QStringLiteral("/mods/more"), "Whistle");
    const QTemporaryDir tree;
    makeInstrumentTree(tree.path());
    const ProgramRun::Outcome outcome =
        runProgram({QStringLiteral("pak"), QStringLiteral("pack"),
                    directory + QStringLiteral("/assets/packed.pak"), tree.path()});
    if (outcome.status != 0)
        qFatal("Could not make a game for the test: %s", outcome.errors.constData());
}
