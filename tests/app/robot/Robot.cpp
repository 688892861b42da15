#include "support/DialogAnswers.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QElapsedTimer>
#include <QGenericPlugin>
#include <QLabel>
#include <QMainWindow>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

// The user of the window program in tests: a plugin that Qt loads into it. The environment
// variable ROBOT holds what it does, a line for each step, and what it sees goes to standard
// output.
//
//   box BUTTON     waits for a message box and presses the button of that text
//   choose PATH    waits for a file dialog and answers it
//   cancel         waits for a file dialog and cancels it
//   window ROWS    waits until the main window has that many rows and no dialog before it
//   dialog         waits for a dialog and leaves it open
//   trigger NAME   triggers an action of the main window
//   print TEXT     prints it, to say how far it is
//   throw TEXT     throws a QString
//   throw          throws a number
//   close          closes the main window

namespace {

constexpr int PollMs = 5;
constexpr int PatienceMs = 60000;

void print(const QString &line)
{
    std::fputs((line + QLatin1Char('\n')).toUtf8().constData(), stdout);
    std::fflush(stdout);
}

QMainWindow *mainWindow()
{
    for (QWidget *const widget : QApplication::topLevelWidgets()) {
        auto *const window = qobject_cast<QMainWindow *>(widget);
        if (window != nullptr && window->isVisible())
            return window;
    }
    return nullptr;
}

/// Of its rows, from the top.
QStringList titles(const QMainWindow &window)
{
    const auto *const list = window.findChild<QBoxLayout *>(QStringLiteral("verticalLayout"));
    QStringList titles;
    for (int i = 0; i < list->count() - 1; ++i) // the last is a spacer
        titles.append(
            list->itemAt(i)->widget()->findChild<QLabel *>(QStringLiteral("lblTitle"))->text());
    return titles;
}

bool hasSeen(const QString &dialog)
{
    if (!dialog.isEmpty())
        print(dialog);
    return !dialog.isEmpty();
}

bool seeWindow(int rows)
{
    const QMainWindow *const window = mainWindow();
    if (window == nullptr || QApplication::activeModalWidget() != nullptr)
        return false;
    const QStringList tracks = titles(*window);
    if (tracks.size() != rows)
        return false;
    print(QStringLiteral("window [%1] %2x%3")
              .arg(window->windowTitle())
              .arg(window->width())
              .arg(window->height()));
    for (const QString &track : tracks)
        print(track);
    return true;
}

/// Later, because a dialog may be opened by it, in which the robot goes on.
bool trigger(const QString &name)
{
    auto *const action = mainWindow()->findChild<QAction *>(name);
    return QMetaObject::invokeMethod(action, "trigger", Qt::QueuedConnection);
}

class Robot : public QObject {
public:
    Robot()
        : m_steps(qEnvironmentVariable("ROBOT").split(QLatin1Char('\n'), Qt::SkipEmptyParts))
    {
        connect(&m_timer, &QTimer::timeout, this, &Robot::onTimeout);
        m_patience.start();
        m_timer.start(PollMs);
    }

private:
    void onTimeout();
    void doNext();
    bool isDone(const QString &verb, const QString &object);
    void throwThing(const QString &text);

    QTimer m_timer;
    QElapsedTimer m_patience;
    QStringList m_steps;
};

void Robot::onTimeout()
{
    if (!m_steps.isEmpty()) {
        doNext();
    } else if (QApplication::activeModalWidget() != nullptr && m_patience.hasExpired(PatienceMs)) {
        print(QStringLiteral("robot: a dialog that was not expected"));
        std::_Exit(99);
    }
}

void Robot::doNext()
{
    const QString step = m_steps.first();
    const QString verb = step.section(QLatin1Char(' '), 0, 0);
    const QString object = step.section(QLatin1Char(' '), 1);
    if (verb == QLatin1String("throw")) {
        m_steps.removeFirst();
        throwThing(object);
    }
    if (isDone(verb, object)) {
        m_steps.removeFirst();
        m_patience.restart();
    } else if (m_patience.hasExpired(PatienceMs)) {
        print(QStringLiteral("robot: cannot do: ") + step);
        std::_Exit(99);
    }
}

bool Robot::isDone(const QString &verb, const QString &object)
{
    if (verb == QLatin1String("box"))
        return hasSeen(Dialogs::press(object));
    if (verb == QLatin1String("choose"))
        return hasSeen(Dialogs::choose(object));
    if (verb == QLatin1String("cancel"))
        return hasSeen(Dialogs::cancel());
    if (verb == QLatin1String("print"))
        return hasSeen(object);
    if (verb == QLatin1String("dialog"))
        return QApplication::activeModalWidget() != nullptr;
    if (verb == QLatin1String("window"))
        return seeWindow(object.toInt());
    if (verb == QLatin1String("trigger"))
        return trigger(object);
    return QMetaObject::invokeMethod(mainWindow(), "close", Qt::QueuedConnection);
}

void Robot::throwThing(const QString &text)
{
    if (text.isEmpty())
        throw 1;
    throw text;
}

class RobotPlugin : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "robot.json")

public:
    QObject *create(const QString &, const QString &) override { return new Robot; }
};

} // namespace

#include "Robot.moc"
