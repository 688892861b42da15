#include "support/SettingsSandbox.h"

#include "model/Settings.h"

#include <QCoreApplication>
#include <QFile>

SettingsSandbox::SettingsSandbox()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(QStringLiteral("config"))));
    QCoreApplication::setOrganizationName(QStringLiteral("Quillmoor tests"));
    QCoreApplication::setApplicationName(QStringLiteral("Settings sandbox"));
    Settings::registerFormat();
}

// What is still to be written would come back after the folder has been removed.
SettingsSandbox::~SettingsSandbox()
{
    Settings::instance().sync();
}
