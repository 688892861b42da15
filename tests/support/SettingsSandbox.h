#pragma once

#include <QTemporaryDir>

/// A home folder of the test's own, in which Settings::instance() then keeps its file. To be made
/// once, before the first use of the settings.
class SettingsSandbox {
public:
    SettingsSandbox();
    ~SettingsSandbox();
    Q_DISABLE_COPY(SettingsSandbox)

    /// The folder that everything is in.
    QString path() const { return m_home.path(); }

private:
    QTemporaryDir m_home;
};
