#include "support/VirtualScreen.h"

#include <QProcessEnvironment>
#include <QStringList>

namespace {

constexpr int PatienceMs = 60000;
constexpr int PatienceAtEndMs = 5000;

QString failure(const char *program)
{
    return QStringLiteral("%1 does not work here; scripts/setup.sh installs it.")
        .arg(QLatin1String(program));
}

} // namespace

ScopedProcess::~ScopedProcess()
{
    terminate();
    if (!waitForFinished(PatienceAtEndMs))
        kill();
    waitForFinished();
}

VirtualScreen::VirtualScreen()
{
    startServer();
    startWindowManager();
}

/// The server looks for a free display and tells its number once it is ready.
void VirtualScreen::startServer()
{
    m_server.setStandardErrorFile(QProcess::nullDevice());
    const QString arguments =
        QStringLiteral("-displayfd 1 -screen 0 %1x%2x24 -nolisten tcp -noreset")
            .arg(Size.width())
            .arg(Size.height());
    m_server.start(QStringLiteral("Xvfb"), arguments.split(QLatin1Char(' ')));
    while (!m_server.canReadLine()) {
        if (!m_server.waitForReadyRead(PatienceMs))
            throw failure("Xvfb");
    }
    m_display = ':' + m_server.readLine().trimmed();
}

void VirtualScreen::startWindowManager()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(m_display));
    m_windowManager.setProcessEnvironment(environment);
    m_windowManager.setStandardErrorFile(QProcess::nullDevice());
    m_windowManager.start(QStringLiteral("openbox"), QStringList());
    if (!m_windowManager.waitForStarted(PatienceMs))
        throw failure("openbox");
}
