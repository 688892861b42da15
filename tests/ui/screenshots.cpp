// Takes the pictures of the dialogs that the documents show: screenshots FOLDER.
#include "icons/Icons.h"
#include "support/SettingsSandbox.h"
#include "ui/dialogs/KeyDialog.h"
#include "ui/dialogs/PreferencesDialog.h"
#include "ui/dialogs/RealignNotesDialog.h"
#include "ui/dialogs/TransposeDialog.h"
#include "ui/dialogs/UnitLengthDialog.h"

#include <QApplication>
#include <QDir>
#include <QListWidget>
#include <QPalette>

#include <iostream>

namespace {

QPalette dark()
{
    QPalette palette(QColor(53, 53, 53), QColor(42, 42, 42));
    palette.setColor(QPalette::Highlight, QColor(42, 130, 218));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Base, QColor(35, 35, 35));
    return palette;
}

class Camera {
public:
    explicit Camera(const QDir &folder)
        : m_folder(folder)
    {
    }

    bool hasFailed() const { return m_hasFailed; }

    void take(QWidget &window, const char *name)
    {
        window.show();
        QApplication::processEvents();
        const QString path = m_folder.filePath(QStringLiteral("%1.png").arg(QLatin1String(name)));
        if (!window.grab().save(path)) {
            std::cerr << "Could not write " << qPrintable(path) << '\n';
            m_hasFailed = true;
        }
    }

private:
    QDir m_folder;
    bool m_hasFailed = false;
};

void takePreferences(Camera &camera, int page, const char *name)
{
    PreferencesDialog preferences;
    preferences.findChild<QListWidget *>()->setCurrentRow(page);
    camera.take(preferences, name);
}

void takeLight(Camera &camera)
{
    takePreferences(camera, 0, "preferences-instruments");
    takePreferences(camera, 1, "preferences-preview");
    takePreferences(camera, 2, "preferences-midi");
    RealignNotesDialog realign;
    camera.take(realign, "realign-notes");
    TransposeDialog transpose;
    camera.take(transpose, "transpose");
    UnitLengthDialog unitLength;
    camera.take(unitLength, "unit-length");
    KeyDialog key;
    key.setKey(QStringLiteral("D dor"));
    camera.take(key, "change-key");
}

void takeDark(Camera &camera)
{
    QApplication::setPalette(dark());
    takePreferences(camera, 1, "preferences-preview-dark");
    RealignNotesDialog realign;
    camera.take(realign, "realign-notes-dark");
    TransposeDialog transpose;
    camera.take(transpose, "transpose-dark");
    UnitLengthDialog unitLength;
    camera.take(unitLength, "unit-length-dark");
    KeyDialog key;
    camera.take(key, "change-key-dark");
}

} // namespace

int main(int argc, char **argv)
{
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const QApplication application(argc, argv);
    if (argc != 2) {
        std::cerr << "usage: screenshots FOLDER\n";
        return 2;
    }
    QApplication::setStyle(QStringLiteral("fusion"));
    Icons::load();
    const SettingsSandbox sandbox;
    Camera camera(QDir(QString::fromLocal8Bit(argv[1])));
    takeLight(camera);
    takeDark(camera);
    return camera.hasFailed() ? 1 : 0;
}
