#include "Sound/InstalledLibrary.h"

#include "Sound/InstalledSystem.h"
#include "model/MessageLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLibrary>
#include <QRegularExpression>
#include <QVersionNumber>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

const char *const pathVariable = "QUILLMOOR_FMOD_LIBRARY";

struct NumberedFile {
    QString path;
    bool wide = false; ///< has "64" in its name
    QVersionNumber version;
};

bool comesBefore(const NumberedFile &a, const NumberedFile &b)
{
    return a.wide != b.wide ? a.wide : a.version > b.version;
}

void appendNumberedFiles(std::vector<NumberedFile> &files, const QDir &folder)
{
    static const QRegularExpression pattern(
        QStringLiteral("^libfmodex(64)?(?:-([0-9.]+))?\\.so(?:\\.([0-9.]+))?$"));
    const QStringList names =
        folder.entryList({QStringLiteral("libfmodex*.so*")}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        const QRegularExpressionMatch match = pattern.match(name);
        if (!match.hasMatch())
            continue;
        const QString version = match.captured(match.capturedLength(2) > 0 ? 2 : 3);
        files.push_back({folder.filePath(name), match.capturedLength(1) > 0,
                         QVersionNumber::fromString(version)});
    }
}

QStringList searchFolders()
{
    QStringList folders =
        QFile::decodeName(qgetenv("LD_LIBRARY_PATH")).split(QLatin1Char(':'), Qt::SkipEmptyParts);
    if (QCoreApplication::instance())
        folders.append(QCoreApplication::applicationDirPath());
    folders += {QStringLiteral("/usr/local/lib64"), QStringLiteral("/usr/local/lib"),
                QStringLiteral("/usr/lib64"), QStringLiteral("/usr/lib"),
                QStringLiteral("/usr/lib/x86_64-linux-gnu")};
    return folders;
}

void warn(const QString &text)
{
    MessageLog::warning("Sound/InstalledLibrary",
                        "static std::optional<InstalledLibrary> InstalledLibrary::find()", text);
}

/// Answers whether the library is there and complete.
bool loadFrom(QLibrary &library, FmodEntryPoints &entryPoints)
{
    // Audio libraries run threads of their own: unloading one at exit is asking for trouble.
    library.setLoadHints(QLibrary::PreventUnloadHint);
    if (!library.load())
        return false;
    const QStringList missing = entryPoints.resolve(library);
    if (missing.isEmpty())
        return true;
    warn(QStringLiteral("The sound library \"%1\" is not used: it lacks %2.")
             .arg(library.fileName(), missing.join(QLatin1String(", "))));
    return false;
}

bool loadNamed(const QString &path, FmodEntryPoints &entryPoints)
{
    QLibrary library(path);
    const bool complete = loadFrom(library, entryPoints);
    if (!library.isLoaded())
        warn(QStringLiteral("The sound library that %1 names cannot be loaded: %2")
                 .arg(QLatin1String(pathVariable), library.errorString()));
    return complete;
}

bool loadFirstOf(const QStringList &names, FmodEntryPoints &entryPoints)
{
    return std::any_of(names.begin(), names.end(), [&](const QString &name) {
        QLibrary library(name);
        return loadFrom(library, entryPoints);
    });
}

} // namespace

std::optional<InstalledLibrary> InstalledLibrary::find()
{
    InstalledLibrary result;
    const QString path = QFile::decodeName(qgetenv(pathVariable));
    const bool complete = path.isEmpty() ? loadFirstOf(candidates(), result.m_entryPoints)
                                         : loadNamed(path, result.m_entryPoints);
    return complete ? std::make_optional(result) : std::nullopt;
}

QStringList InstalledLibrary::candidates()
{
    return QStringList{QStringLiteral("fmodex64"), QStringLiteral("fmodex")}
    + numberedFiles(searchFolders());
}

QStringList InstalledLibrary::numberedFiles(const QStringList &folders)
{
    std::vector<NumberedFile> files;
    for (const QString &folder : folders)
        appendNumberedFiles(files, QDir(folder));
    std::stable_sort(files.begin(), files.end(), comesBefore);
    QStringList paths;
    for (const NumberedFile &file : files)
        paths.append(file.path);
    return paths;
}

FMOD_RESULT InstalledLibrary::createSystem(FMOD::System **system) const
{
    RawSystem *raw = nullptr;
    *system = nullptr;
    const FMOD_RESULT result = m_entryPoints.systemCreate(&raw);
    if (result != FMOD_OK)
        return result;
    if (!raw)
        return FMOD_ERR_INTERNAL;
    *system = std::make_unique<InstalledSystem>(m_entryPoints, raw).release();
    return FMOD_OK;
}
