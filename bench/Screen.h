#pragma once

#include "support/VirtualScreen.h"

#include <QProcessEnvironment>
#include <QString>

#include <memory>

struct xcb_connection_t;

/// A screen of its own with a window manager, on which other programs are watched from outside.
class Screen {
public:
    /// Throws a QString when one of the programs that it takes does not start.
    Screen();
    Q_DISABLE_COPY(Screen)

    /// The environment of a program that is to be shown here; `home` is its home directory.
    QProcessEnvironment environment(const QString &home) const;

    /// Whether a window that the window manager knows to be of this process can be seen.
    bool shows(qint64 process) const;
    bool isEmpty() const;

private:
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const;
    };

    void connectToServer();
    void waitForWindowManager() const;

    VirtualScreen m_screen;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    quint32 m_root = 0;
    quint32 m_clientList = 0; // atoms
    quint32 m_processId = 0;
};
