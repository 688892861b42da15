#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

class VirtualScreen;

/// A screen of the test's own, with a window manager, seen and used as a person does: by the titles
/// of the windows, what is drawn in them, the mouse and the keys.
///
/// To be made before the QGuiApplication, which then is on that screen.
class Desktop {
public:
    using Window = quint32; ///< 0 for none

    /// Ends the program where there is no X server.
    Desktop();
    ~Desktop();
    Q_DISABLE_COPY(Desktop)

    /// Whether windows are framed and take turns from now on.
    bool isManaged() const;

    /// A folder that is empty at first: home, for who asks the environment.
    QString home() const { return m_home.path(); }

    /// The visible window with just this title.
    static Window window(const QString &title);
    /// The window that the keys go to.
    static Window front();
    static QString title(Window window);
    static QString frontTitle() { return title(front()); }
    /// All that can be seen of a program: windows, boxes and menus.
    static int windowCount(qint64 processId);

    /// Puts a window's contents there; the frame is around it.
    static void place(Window window, const QRect &geometry);
    static void activate(Window window);

    /// Names as xdotool has them: "ctrl+shift+s", "Return".
    static void press(const QStringList &keys);
    static void press(const QString &keys) { press(QStringList{keys}); }
    static void type(const QString &text);

    enum Button { Left = 1, Right = 3 };
    /// At a point of the window's contents.
    static void click(Window window, QPoint point, Button button = Left);
    /// On the screen.
    static void movePointer(QPoint point);
    static void holdButton();
    static void releaseButton();

    static QImage image(Window window);
    static QImage screen();

private:
    void startScreen();

    QTemporaryDir m_home;
    std::unique_ptr<VirtualScreen> m_screen;
};
