#include "ui/dialogs/FileDialogs.h"

#include "ui/dialogs/MessageBoxes.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QRegularExpression>

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

/// The file dialog's own question would read the name as rich text where it looks like that.
bool mayBeWritten(const QString &path, QWidget *parent, const QString &title)
{
    const QFileInfo file(path);
    return !file.exists()
        || MessageBoxes::lossQuestion(
            parent, title,
            QFileDialog::tr("%1 already exists.\nDo you want to replace it?").arg(file.fileName()));
}

/// "abc" of "ABC Files (*.abc)".
QString suffixOf(const QString &filter)
{
    static const QRegularExpression pattern(QStringLiteral("\\*\\.(\\w+)"));
    return pattern.match(filter).captured(1);
}

/// Empty when the dialog is cancelled.
QString chosenForWriting(QFileDialog &dialog)
{
    while (dialog.exec() == QDialog::Accepted) {
        QString path = dialog.selectedFiles().value(0);
        if (mayBeWritten(path, dialog.parentWidget(), dialog.windowTitle()))
            return path;
    }
    return {};
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

QString FileDialogs::saveFile(QWidget *parent, const QString &caption, const QString &filter,
                              const QString &name, Settings::Setting start,
                              Settings::Setting chosen)
{
    QFileDialog dialog(parent, caption, startDirectory(start), filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setDefaultSuffix(suffixOf(filter));
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.selectFile(name);
    QString path = chosenForWriting(dialog);
    remember(path, chosen);
    return path;
}

QString FileDialogs::directory(QWidget *parent, const QString &caption, const QString &start)
{
    return QFileDialog::getExistingDirectory(parent, caption, start, QFileDialog::ShowDirsOnly);
}
