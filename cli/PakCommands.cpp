#include "Quillmoor/PakReader.h"
#include "Quillmoor/PakWriter.h"
#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Files.h"
#include "model/Signals.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

namespace {

constexpr const char *OutputFile = "-o";

const char *const ListDescription =
    "Prints the paths of all files in an asset package, in stored order, each as {\"path\":...}.\n";

const char *const GetDescription =
    "Writes the contents of the file PATH of an asset package to standard output.\n";

const char *const HasDescription =
    "Prints true or false, and ends with status 0 or 1 accordingly.\n";

const char *const PackDescription =
    "Makes the asset package OUT of all files below DIR. The file DIR/items/a.png gets the path\n"
    "/items/a.png, so DIR is laid out like a mod directory. Links to directories are not "
    "followed;\n"
    "OUT itself, devices and pipes are left out. Prints "
    "{\"file\":...,\"files\":...,\"bytes\":...}.\n";

void printPath(const QString &path, Console &console)
{
    JsonWriter json;
    console.line(json.beginObject().member("path", path).endObject());
}

int list(const Arguments &arguments, Console &console)
{
    PakReader reader(arguments.operand(0));
    for (const QString &path : reader.fileList())
        printPath(path, console);
    return Status::Success;
}

int get(const Arguments &arguments, Console &console)
{
    PakReader reader(arguments.operand(0));
    const QByteArray contents = reader.getFile(arguments.operand(1));
    const QString output = arguments.options().value(OutputFile, QStringLiteral("-"));
    if (output == QLatin1String("-")) {
        console.write(contents);
        return Status::Success;
    }
    if (Files::areSame(output, arguments.operand(0)))
        throw QStringLiteral("%1 is the package itself.").arg(output);
    Files::write(output, contents);
    return Status::Success;
}

int has(const Arguments &arguments, Console &console)
{
    PakReader reader(arguments.operand(0));
    const bool found = reader.hasFile(arguments.operand(1));
    console.line(JsonWriter().value(found));
    return found ? Status::Success : Status::Failure;
}

/// In the order of their names, so that the first one that cannot be read is always the same.
QStringList filesBelow(const QString &directory)
{
    QStringList files;
    QDirIterator walk(directory, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString file = walk.next();
        if (!Files::isSpecial(file)) // what a link leads to may be a pipe
            files.append(file);
    }
    std::sort(files.begin(), files.end());
    return files;
}

QString assetPath(const QDir &directory, const QString &file)
{
    QString path =
        QLatin1Char('/') + directory.relativeFilePath(QFileInfo(file).absoluteFilePath());
    if (QString::fromUtf8(path.toUtf8()) != path)
        throw QStringLiteral("The name of %1 is not valid UTF-8.").arg(file);
    return path;
}

QByteArray contentsOf(const QString &file)
{
    try {
        return Files::read(file);
    } catch (const QString &error) {
        throw QStringLiteral("%1: %2").arg(file, error);
    }
}

QDir existingDirectory(const QString &path)
{
    if (!QFileInfo(path).isDir())
        throw QStringLiteral("%1 is not a directory.").arg(path);
    return QDir(path);
}

void save(const PakWriter &writer, const QString &output)
{
    if (Files::isSpecial(output))
        throw QStringLiteral("%1 is not a regular file.").arg(output);
    const SignalHold hold;
    writer.save(output);
}

int pack(const Arguments &arguments, Console &console)
{
    const QString &output = arguments.operand(0);
    const QDir directory = existingDirectory(arguments.operand(1));
    PakWriter writer;
    int count = 0;
    for (const QString &file : filesBelow(directory.path())) {
        if (Files::areSame(file, output))
            continue;
        console.progress(QStringLiteral("Packing %1").arg(file));
        writer.add(assetPath(directory, file), contentsOf(file));
        ++count;
    }
    save(writer, output);
    JsonWriter json;
    json.beginObject().member("file", output).member("files", count);
    console.line(json.member("bytes", QFileInfo(output).size()).endObject());
    return Status::Success;
}

} // namespace

Command pakListCommand()
{
    return {"pak list", "FILE", "List the files of an asset package.", ListDescription, 1, 1, false,
            {},         list};
}

Command pakGetCommand()
{
    return {"pak get",
            "FILE PATH",
            "Take a file out of an asset package.",
            GetDescription,
            2,
            2,
            false,
            {{OutputFile, "OUT", "Write to the file OUT; - is standard output."}},
            get};
}

Command pakHasCommand()
{
    return {"pak has",      "FILE PATH", "Tell whether an asset package has a file.",
            HasDescription, 2,           2,
            false,          {},          has};
}

Command pakPackCommand()
{
    return {"pak pack",      "OUT DIR", "Make an asset package of a directory.",
            PackDescription, 2,         2,
            false,           {},        pack};
}
