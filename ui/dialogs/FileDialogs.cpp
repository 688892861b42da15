#include "ui/dialogs/FileDialogs.h"

#include <QFileDialog>
#include <QFileInfo>

namespace {

QString startDirectory(Settings::Setting setting)
{
    return Settings::instance().value(setting).toString();
}

void remember(const QString &path, Settings::Setting setting)
{
    if (!path.isEmpty())
        Settings::instance().setValue(setting, QFileInfo(path).absolutePath());
}

} // namespace

QStringList FileDialogs::openFiles(QWidget *parent, const QString &caption, const QString &filter,
                                   Settings::Setting directory)
{
    QStringList paths =
        QFileDialog::getOpenFileNames(parent, caption, startDirectory(directory), filter);
    remember(paths.value(0), directory);
    return paths;
}

QString FileDialogs::openFile(QWidget *parent, const QString &caption, const QString &filter,
                              Settings::Setting directory)
{
    QString path = QFileDialog::getOpenFileName(parent, caption, startDirectory(directory), filter);
    remember(path, directory);
    return path;
}

QString FileDialogs::directory(QWidget *parent, const QString &caption, const QString &start)
{
    return QFileDialog::getExistingDirectory(parent, caption, start, QFileDialog::ShowDirsOnly);
}
