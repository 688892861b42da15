#include "SettingsChild.h"

#include <QJsonDocument>
#include <QProcessEnvironment>

SettingsChild::SettingsChild(const QString &configuration, const QString &option)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), configuration);
    environment.insert(QStringLiteral("HOME"), configuration);
    environment.insert(QStringLiteral("QT_MESSAGE_PATTERN"), QStringLiteral("%{file}: %{message}"));
    m_process.setProcessEnvironment(environment);
    const QStringList options = option.isEmpty() ? QStringList() : QStringList(option);
    m_process.start(QStringLiteral(SETTINGS_PROGRAM), options);
    m_process.waitForStarted();
}

SettingsChild::~SettingsChild()
{
    finish();
}

QString SettingsChild::value(Settings::Setting setting)
{
    return ask({QStringLiteral("value"), setting});
}

QString SettingsChild::value(Settings::Setting setting, const QJsonValue &fallback)
{
    return ask({QStringLiteral("value"), setting, fallback});
}

bool SettingsChild::contains(Settings::Setting setting)
{
    return ask({QStringLiteral("contains"), setting}) == QStringLiteral("true");
}

void SettingsChild::set(Settings::Setting setting, const QJsonValue &value)
{
    ask({QStringLiteral("set"), setting, value});
}

void SettingsChild::setColor(Settings::Setting setting, const QString &name)
{
    ask({QStringLiteral("setColor"), setting, name});
}

void SettingsChild::sync()
{
    ask({QStringLiteral("sync")});
}

void SettingsChild::runEvents()
{
    ask({QStringLiteral("runEvents")});
}

void SettingsChild::limitFiles(int bytes)
{
    ask({QStringLiteral("limitFiles"), bytes});
}

void SettingsChild::unlimitFiles()
{
    ask({QStringLiteral("limitFiles")});
}

void SettingsChild::tell(const QJsonArray &command)
{
    m_process.write(QJsonDocument(command).toJson(QJsonDocument::Compact) + '\n');
    m_process.waitForBytesWritten();
}

bool SettingsChild::hasAnswer() const
{
    return m_process.canReadLine() || m_process.state() == QProcess::NotRunning;
}

QString SettingsChild::answer()
{
    while (!hasAnswer())
        m_process.waitForReadyRead(-1);
    QByteArray line = m_process.readLine();
    line.chop(1);
    return QString::fromUtf8(line);
}

QString SettingsChild::ask(const QJsonArray &command)
{
    tell(command);
    return answer();
}

int SettingsChild::finish()
{
    m_process.closeWriteChannel();
    return status();
}

int SettingsChild::exit()
{
    tell({QStringLiteral("exit")});
    return status();
}

QStringList SettingsChild::log()
{
    const QString text = QString::fromUtf8(m_process.readAllStandardError());
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

int SettingsChild::status()
{
    if (m_process.state() != QProcess::NotRunning)
        m_process.waitForFinished(-1);
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}
