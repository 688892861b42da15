#include "Screen.h"

#include <QThread>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include <xcb/xcb.h>

namespace {

constexpr int PatienceMs = 30000;

template <typename Reply> std::unique_ptr<Reply, decltype(&std::free)> owned(Reply *reply)
{
    return {reply, &std::free};
}

quint32 atom(xcb_connection_t *connection, const char *name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<quint16>(qstrlen(name)), name);
    const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : 0;
}

/// Of 32 bits each; none when the window has gone.
std::vector<quint32> property(xcb_connection_t *connection, quint32 window, quint32 name)
{
    const auto cookie =
        xcb_get_property(connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, 1024);
    const auto reply = owned(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto *const values = static_cast<quint32 *>(xcb_get_property_value(reply.get()));
    return {values, values + reply->value_len};
}

bool isViewable(xcb_connection_t *connection, quint32 window)
{
    const auto cookie = xcb_get_window_attributes(connection, window);
    const auto reply = owned(xcb_get_window_attributes_reply(connection, cookie, nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

} // namespace

void Screen::Disconnect::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}

Screen::Screen()
{
    connectToServer();
    waitForWindowManager();
}

void Screen::connectToServer()
{
    m_connection.reset(xcb_connect(m_screen.display().constData(), nullptr));
    if (xcb_connection_has_error(m_connection.get()) != 0)
        throw QStringLiteral("Xvfb takes no connection.");
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
    m_clientList = atom(m_connection.get(), "_NET_CLIENT_LIST");
    m_processId = atom(m_connection.get(), "_NET_WM_PID");
}

/// It is at work once the root window has its list of windows.
void Screen::waitForWindowManager() const
{
    const quint32 mark = atom(m_connection.get(), "_NET_SUPPORTING_WM_CHECK");
    for (int waited = 0; property(m_connection.get(), m_root, mark).empty(); ++waited) {
        if (waited == PatienceMs)
            throw QStringLiteral("openbox does not begin to work.");
        QThread::msleep(1);
    }
}

QProcessEnvironment Screen::environment(const QString &home) const
{
    QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
    result.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(m_screen.display()));
    result.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    for (const char *const name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        result.insert(QLatin1String(name), home);
    return result;
}

bool Screen::shows(qint64 process) const
{
    const std::vector<quint32> windows = property(m_connection.get(), m_root, m_clientList);
    return std::any_of(windows.begin(), windows.end(), [&](quint32 window) {
        const std::vector<quint32> owner = property(m_connection.get(), window, m_processId);
        return owner.size() == 1 && owner[0] == process && isViewable(m_connection.get(), window);
    });
}

bool Screen::isEmpty() const
{
    return property(m_connection.get(), m_root, m_clientList).empty();
}
