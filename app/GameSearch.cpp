#include "app/GameSearch.h"

#include "Quillmoor/GameDirectory.h"
#include "model/Settings.h"
#include "ui/dialogs/FileDialogs.h"
#include "ui/dialogs/MessageBoxes.h"

#include <QCoreApplication>

namespace {

QString storedDirectory()
{
    const Settings &settings = Settings::instance();
    if (!settings.contains(Settings::RootPath))
        return {};
    const QString directory = settings.value(Settings::RootPath).toString();
    return isGameDirectory(directory) ? directory : QString();
}

QString store(const QString &directory)
{
    QString canonical = QDir(directory).canonicalPath();
    Settings &settings = Settings::instance();
    settings.setValue(Settings::RootPath, canonical);
    settings.sync();
    return canonical;
}

void explain()
{
    MessageBoxes::information(
        nullptr, QCoreApplication::applicationName(),
        QStringLiteral("Quillmoor Composer requires Quillmoor to be installed in order to work.\n"
                       "Please specify where Quillmoor is installed."));
}

void rejectChoice()
{
    MessageBoxes::warning(
        nullptr, QCoreApplication::applicationName(),
        QStringLiteral("No Quillmoor installation was found at the specified directory."));
}

/// Opens at the home directory, and after a wrong choice there, as the right one may be near.
QString chosenDirectory()
{
    QString directory = QDir::homePath();
    for (;;) {
        directory = FileDialogs::directory(
            nullptr, QStringLiteral("Please locate the Quillmoor directory."), directory);
        if (directory.isEmpty() || isGameDirectory(directory))
            return directory;
        rejectChoice();
    }
}

QString askedDirectory()
{
    explain();
    return chosenDirectory();
}

} // namespace

QString GameSearch::findGame()
{
    QString stored = storedDirectory();
    if (!stored.isEmpty())
        return stored;
    const QString usual = usualGameDirectory();
    const QString found = usual.isEmpty() ? askedDirectory() : usual;
    return found.isEmpty() ? QString() : store(found);
}
