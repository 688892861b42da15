#pragma once

#include <QByteArray>
#include <QProcess>
#include <QSize>

/// A process that ends with its object: when asked to, else by force.
class ScopedProcess : public QProcess {
public:
    ScopedProcess() = default;
    ~ScopedProcess() override;
};

/// A screen that nobody sees, on a display number of its own, with a window manager. Both end with
/// the object.
class VirtualScreen {
public:
    static constexpr QSize Size{1900, 1200};

    /// The server is ready then; the window manager, which has the environment of this process, is
    /// at work a little later. Throws a QString when one of the programs does not start.
    VirtualScreen();
    Q_DISABLE_COPY(VirtualScreen)

    /// What a program on this screen has as DISPLAY: ":7".
    QByteArray display() const { return m_display; }

private:
    void startServer();
    void startWindowManager();

    ScopedProcess m_server;
    ScopedProcess m_windowManager; // ends first
    QByteArray m_display;
};
