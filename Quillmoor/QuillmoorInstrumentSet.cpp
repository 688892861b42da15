#include "Quillmoor/QuillmoorInstrumentSet.h"

#include "Quillmoor/IconFile.h"
#include "Quillmoor/JsonFile.h"
#include "Quillmoor/PakPath.h"
#include "Quillmoor/PakReader.h"
#include "model/MessageLog.h"

#include <QFileInfo>
#include <QJsonObject>

#include <algorithm>
#include <optional>

namespace {

constexpr char Source[] = "Quillmoor/QuillmoorInstrumentSet";
constexpr char InDirectory[] = "bool QuillmoorInstrumentSet::loadDirectory(const QDir&, bool)";
constexpr char InPackage[] = "bool QuillmoorInstrumentSet::loadPakFile(const QString&)";

/// An instrument's description, the content of an `.instrument` file.
struct Description {
    QString displayName;
    QString kind;
    QString icon;
};

/// Nothing, with a warning, for a document that describes no instrument.
std::optional<Description> describe(const QJsonDocument &document, const QString &file,
                                    const char *function)
{
    if (document.isNull()) {
        MessageLog::warning(Source, function,
                            QStringLiteral("Could not read instrument file %1.").arg(file));
        return {};
    }
    if (!document.isObject()) {
        MessageLog::warning(
            Source, function,
            QStringLiteral("Could not read instrument file %1. Root node is not an object.")
                .arg(file));
        return {};
    }
    const QJsonObject root = document.object();
    return Description{root.value(QLatin1String("shortdescription")).toString(),
                       root.value(QLatin1String("kind")).toString(),
                       root.value(QLatin1String("inventoryIcon")).toString()};
}

void reportNoTuning(const char *function, const QString &displayName)
{
    MessageLog::critical(
        Source, function,
        QStringLiteral("No tuning file found for instrument %1!").arg(displayName));
}

void reportNoIcon(const char *function, const QString &displayName)
{
    MessageLog::warning(Source, function,
                        QStringLiteral("No icon file found for instrument %1!").arg(displayName));
}

QStringList filesMatching(const QDir &directory, const QString &pattern)
{
    return directory.entryList({pattern}, QDir::Files, QDir::Unsorted);
}

bool isInstrumentPath(const QString &path)
{
    return path.startsWith(QLatin1String("/items/instruments/"))
        && path.endsWith(QLatin1String(".instrument"));
}

QIcon looseIcon(const QString &path, const QString &displayName)
{
    if (const std::optional<QIcon> icon = IconFile::load(path))
        return *icon;
    reportNoIcon(InDirectory, displayName);
    return {};
}

QIcon packedIcon(PakReader &package, const Description &description)
{
    QByteArray bytes;
    if (package.tryGetFile(QStringLiteral("/items/instruments/%1").arg(description.icon), bytes)) {
        if (const std::optional<QIcon> icon = IconFile::decode(bytes))
            return *icon;
    }
    reportNoIcon(InPackage, description.displayName);
    return {};
}

void loadPackedInstrument(QuillmoorInstrumentSet &set, PakReader &package, const QString &path)
{
    const QJsonDocument document = JsonFile::parse(package.getFile(path));
    const std::optional<Description> description = describe(document, path, InPackage);
    if (!description || set.contains(description->displayName))
        return;
    QByteArray tuning;
    const QString tuningPath =
        QStringLiteral("/sfx/instruments/%1/tuning.config").arg(description->kind);
    if (!package.tryGetFile(tuningPath, tuning)) {
        reportNoTuning(InPackage, description->displayName);
        return;
    }
    const QIcon icon = packedIcon(package, *description);
    const QString prefix = PakPath::prefix(package.fileName());
    set.add(description->displayName, Instrument::fromBytes(description->kind, tuning, prefix),
            icon);
}

QString notFound(const QString &displayName)
{
    return QStringLiteral("Instrument '%1' not found.").arg(displayName);
}

} // namespace

QuillmoorInstrumentSet::QuillmoorInstrumentSet(const QDir &root, bool loadMods)
{
    QDir directory(root);
    if (directory.cd(QStringLiteral("assets")))
        loadDirectory(directory, true);
    // From where that led: "user" lies inside "assets" unless there is none.
    if (directory.cd(QStringLiteral("user")))
        loadDirectory(directory, false);
    if (loadMods)
        this->loadMods(root);
    if (m_names.isEmpty())
        add(QStringLiteral("None"), Instrument(), QIcon());
}

void QuillmoorInstrumentSet::loadMods(const QDir &root)
{
    QDir mods(root);
    if (!mods.cd(QStringLiteral("mods")))
        return;
    const QStringList directories =
        mods.entryList(QStringList(), QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted);
    for (const QString &name : directories)
        loadDirectory(QDir(mods.absoluteFilePath(name)), false);
    const QStringList packages = filesMatching(mods, QStringLiteral("*.modpak"));
    for (const QString &name : packages)
        loadPakFile(mods.absoluteFilePath(name));
}

bool QuillmoorInstrumentSet::contains(const QString &displayName) const
{
    return m_instruments.contains(displayName);
}

Instrument QuillmoorInstrumentSet::instrument(const QString &displayName) const
{
    const auto entry = m_instruments.constFind(displayName);
    if (entry == m_instruments.constEnd())
        throw notFound(displayName);
    return entry->instrument;
}

QIcon QuillmoorInstrumentSet::icon(const QString &displayName) const
{
    const auto entry = m_instruments.constFind(displayName);
    if (entry == m_instruments.constEnd())
        throw notFound(displayName);
    return entry->icon;
}

void QuillmoorInstrumentSet::add(const QString &displayName, const Instrument &instrument,
                                 const QIcon &icon)
{
    m_instruments.insert(displayName, {instrument, icon});
    m_names.insert(std::upper_bound(m_names.begin(), m_names.end(), displayName), displayName);
}

bool QuillmoorInstrumentSet::loadDirectory(const QDir &directory, bool packagesOnly)
{
    if (!packagesOnly)
        loadLooseInstruments(directory);
    loadPackages(directory);
    return true;
}

void QuillmoorInstrumentSet::loadPackages(const QDir &directory)
{
    const QStringList packages = filesMatching(directory, QStringLiteral("*.pak"));
    for (const QString &name : packages)
        loadPakFile(directory.absoluteFilePath(name));
}

void QuillmoorInstrumentSet::loadLooseInstruments(const QDir &directory)
{
    QDir items(directory);
    QDir sounds(directory);
    if (!items.cd(QStringLiteral("items/instruments"))
        || !sounds.cd(QStringLiteral("sfx/instruments")))
        return;
    const QStringList files = filesMatching(items, QStringLiteral("*.instrument"));
    for (const QString &name : files)
        loadLooseInstrument(directory, items, sounds, name);
}

void QuillmoorInstrumentSet::loadLooseInstrument(const QDir &directory, const QDir &items,
                                                 const QDir &sounds, const QString &fileName)
{
    const QJsonDocument document = JsonFile::read(items.absoluteFilePath(fileName));
    const std::optional<Description> description = describe(document, fileName, InDirectory);
    if (!description || contains(description->displayName))
        return;
    const QString tuningPath =
        QStringLiteral("%1/%2/tuning.config").arg(sounds.absolutePath(), description->kind);
    if (!QFileInfo(tuningPath).isFile()) {
        reportNoTuning(InDirectory, description->displayName);
        return;
    }
    const QString iconPath = QStringLiteral("%1/%2").arg(items.absolutePath(), description->icon);
    const QIcon icon = looseIcon(iconPath, description->displayName);
    add(description->displayName,
        Instrument::fromFile(description->kind, tuningPath, directory.absolutePath()), icon);
}

bool QuillmoorInstrumentSet::loadPakFile(const QString &path)
{
    try {
        PakReader package(path);
        package.open();
        const QStringList files = package.fileList();
        for (const QString &file : files) {
            if (isInstrumentPath(file))
                loadPackedInstrument(*this, package, file);
        }
        return true;
    } catch (const QString &message) {
        MessageLog::warning(Source, InPackage,
                            QStringLiteral("Failed to load pak file: %1").arg(message));
        return false;
    }
}
