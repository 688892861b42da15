#include "app/Application.h"

#include "model/MessageLog.h"
#include "ui/dialogs/MessageBoxes.h"

#include <QWidget>

#include <exception>

namespace {

/// For the one who starts the program from a terminal; the box says no more than it must.
void logDetails(const char *details)
{
    MessageLog::critical("app/Application", "void Application::fail()",
                         QString::fromLocal8Bit(details));
}

/// Of the exception that is being handled.
QString failureText()
{
    QString unknown = QStringLiteral("An unknown fatal error ocurred");
    try {
        throw;
    } catch (const QString &message) {
        return QStringLiteral("A fatal error occured:\n%1").arg(message);
    } catch (const std::exception &error) {
        logDetails(error.what());
        return unknown;
    } catch (...) {
        return unknown;
    }
}

/// A grabbed mouse would keep the user from the box. (An open menu would, too, but closes by itself
/// when the box is shown.)
void releaseInput()
{
    if (QWidget *const grabber = QWidget::mouseGrabber())
        grabber->releaseMouse();
    if (QWidget *const grabber = QWidget::keyboardGrabber())
        grabber->releaseKeyboard();
}

} // namespace

Application::Application(int &argc, char **argv)
    : QApplication(argc, argv)
{
}

bool Application::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        fail();
        return false;
    }
}

void Application::fail()
{
    const QString text = failureText();
    {
        const std::lock_guard lock(m_mutex);
        if (!m_failure.isEmpty())
            return;
        m_failure = text;
    }
    // Not here: this may be another thread, or the middle of painting.
    QMetaObject::invokeMethod(this, &Application::showFailure, Qt::QueuedConnection);
}

bool Application::hasFailed() const
{
    const std::lock_guard lock(m_mutex);
    return !m_failure.isEmpty();
}

int Application::finish(int status)
{
    if (!hasFailed())
        return status;
    showFailure();
    return FailureStatus;
}

void Application::showFailure()
{
    if (m_isShown)
        return;
    m_isShown = true;
    releaseInput();
    MessageBoxes::critical(nullptr, applicationName(), m_failure);
    exit(FailureStatus); // the loops of dialogs, too
}
