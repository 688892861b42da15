#include "Render/TrackRenderer.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Files.h"
#include "cli/Parts.h"
#include "model/Signals.h"

#include <QEventLoop>
#include <QFileInfo>

#include <algorithm>

namespace {

const char *const Description =
    "Renders the tunes of all files together into the wave file OUT.wav; each track of a MIDI\n"
    "file is a tune. Each is played by an instrument of the game: the one that --instrument\n"
    "names, else the one that the tune names in a line \"I:instrument NAME\", else the first of\n"
    "the game. Prints {\"file\":...,\"seconds\":...,\"frames\":...,\"notes\":...,\"peak\":...,\n"
    "\"clipped\":...}; peak is the largest sample before clamping, 1.0 being full scale. FILE may\n"
    "be - for standard input.\n"
    "\n"
    "A note that its instrument does not map is an error, found before anything is written.\n"
    "OUT.wav appears when it is complete; Ctrl-C leaves nothing behind.\n";

void checkOutput(const QString &output, const QVector<Operand> &files)
{
    if (output == QLatin1String("-"))
        throw UsageError{QStringLiteral("A wave file cannot go to standard output.")};
    if (QFileInfo(output).isDir() || Files::isSpecial(output))
        throw QStringLiteral("%1 is not a regular file.").arg(output);
    for (const Operand &file : files) {
        if (Files::areSame(file.text, output))
            throw QStringLiteral("%1 is an input file.").arg(output);
    }
}

void showProgress(Console &console, const QString &output, quint64 current, quint64 total)
{
    const double share =
        total == 0 ? 1.0 : static_cast<double>(current) / static_cast<double>(total);
    const int percent = static_cast<int>(std::min(share, 1.0) * 100);
    console.progress(QStringLiteral("Rendering %1: %2%").arg(output, QString::number(percent)));
}

/// Returns when the renderer has finished; throws what made it fail.
void waitFor(TrackRenderer &renderer)
{
    QEventLoop loop;
    QString failure;
    QObject::connect(&renderer, &TrackRenderer::renderFinished, &loop, &QEventLoop::quit);
    QObject::connect(&renderer, &TrackRenderer::renderFailed, &loop, [&](const QString &message) {
        failure = message;
        loop.quit();
    });
    renderer.start();
    loop.exec();
    if (!failure.isEmpty())
        throw QString(failure);
}

RenderResult renderParts(const QString &output, const QVector<Part> &parts, Console &console)
{
    TrackRenderer renderer(output);
    for (const Part &part : parts)
        renderer.addTrack(part.track, part.instrument, part.volume, part.pan);
    QObject::connect(
        &renderer, &TrackRenderer::renderProgress, &renderer,
        [&](quint64 current, quint64 total) { showProgress(console, output, current, total); });
    SignalWatch watch;
    QObject::connect(&watch, &SignalWatch::interrupted, &renderer, &TrackRenderer::cancel);
    try {
        waitFor(renderer);
    } catch (const QString &) {
        if (watch.received() == 0)
            throw;
    }
    if (watch.received() != 0) {
        console.clearProgress();
        SignalWatch::dieBy(watch.received());
    }
    return renderer.result();
}

void printResult(const QString &output, const RenderResult &result, const Parts &parts,
                 Console &console)
{
    JsonWriter json;
    json.beginObject().member("file", output).member("seconds", result.seconds);
    json.member("frames", result.frames).member("notes", result.notes);
    json.member("peak", result.peak).member("clipped", result.clipped);
    parts.addSkipped(json);
    console.line(json.endObject());
}

int run(const Arguments &arguments, Console &console)
{
    const QString &output = arguments.operand(0);
    const QVector<Operand> files = arguments.operands().mid(1);
    checkOutput(output, files);
    const Parts parts(files, arguments.options(), QStringLiteral("rendered"), console);
    printResult(output, renderParts(output, parts.list(), console), parts, console);
    return Status::Success;
}

} // namespace

Command renderCommand()
{
    return {"render",
            "OUT.wav FILE...",
            "Render tunes into a wave file.",
            Description,
            2,
            -1,
            true,
            Parts::options(),
            run};
}
