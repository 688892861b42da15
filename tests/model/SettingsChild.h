#pragma once

#include "model/Settings.h"

#include <QByteArray>
#include <QJsonArray>
#include <QProcess>
#include <QString>
#include <QStringList>

/// One process of a program with settings (SettingsProgram.cpp), as a user would start it several
/// times. The settings lie below a configuration directory of the test.
class SettingsChild {
public:
    explicit SettingsChild(const QString &configuration, const QString &option = {});
    /// Lets it end as by finish().
    ~SettingsChild();
    Q_DISABLE_COPY(SettingsChild)

    /// Type and value: "int 7", "QString ", "QColor #ff2060ff".
    QString value(Settings::Setting setting);
    QString value(Settings::Setting setting, const QJsonValue &fallback);
    bool contains(Settings::Setting setting);
    void set(Settings::Setting setting, const QJsonValue &value);
    void setColor(Settings::Setting setting, const QString &name);
    void sync();
    void runEvents();
    /// Files may not become longer; without a size they may again.
    void limitFiles(int bytes);
    void unlimitFiles();

    /// As ask(), for several children at once: the answer is left for answer().
    void tell(const QJsonArray &command);
    bool hasAnswer() const;
    QString answer();
    QString ask(const QJsonArray &command);

    qint64 processId() const { return m_process.processId(); }
    /// Returns from main() and answers the exit status, or -1 when it did not end by itself.
    int finish();
    /// Calls exit() with its application object alive.
    int exit();
    /// All that it has logged, "source: text" each. After its end.
    QStringList log();

private:
    int status();

    QProcess m_process;
};
