#include "app/OnceSeen.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace {

constexpr int PatienceMs = 3000;

/// Deletes itself when the action begins.
class Waiter : public QObject {
public:
    Waiter(QWidget &window, std::function<void()> action)
        : QObject(&window)
        , m_action(std::move(action))
    {
        connect(&m_timer, &QTimer::timeout, this, &Waiter::act);
        m_timer.setSingleShot(true);
        m_timer.start(PatienceMs);
        window.windowHandle()->installEventFilter(this);
    }

    /// The window is painted while it takes this event, before the timer's.
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const bool isSeen =
            event->type() == QEvent::Expose && static_cast<QWindow *>(watched)->isExposed();
        if (isSeen && m_action)
            m_timer.start(0);
        return false;
    }

private:
    /// The action may run an event loop, in which the window is seen again.
    void act()
    {
        const std::function<void()> action = std::exchange(m_action, nullptr);
        deleteLater();
        action();
    }

    QTimer m_timer;
    std::function<void()> m_action;
};

} // namespace

void onceSeen(QWidget &window, const std::function<void()> &action)
{
    new Waiter(window, action); // a child of the window
}
