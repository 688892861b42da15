#include "support/Desktop.h"

#include "support/VirtualScreen.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>

namespace {

constexpr int Patience = 60000;

/// What a program for the desktop answers, an empty text when it fails: a window may go at any
/// time.
QString answer(const char *program, const QStringList &arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QString::fromLatin1(program), arguments);
    if (!process.waitForFinished(Patience) || process.error() == QProcess::FailedToStart)
        qFatal("%s does not work here; scripts/setup.sh installs it.", program);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QString xdotool(const QStringList &arguments)
{
    return answer("xdotool", arguments);
}

QStringList search(const QStringList &arguments)
{
    const QStringList start{QStringLiteral("search"), QStringLiteral("--onlyvisible")};
    return xdotool(start + arguments).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

Desktop::Desktop()
{
    qputenv("HOME", QFile::encodeName(home()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(QStringLiteral("config"))));
    startScreen();
}

Desktop::~Desktop() = default;

void Desktop::startScreen()
{
    try {
        m_screen = std::make_unique<VirtualScreen>();
    } catch (const QString &message) {
        qFatal("%s", qPrintable(message));
    }
    qputenv("DISPLAY", m_screen->display());
    qputenv("QT_QPA_PLATFORM", "xcb");
}

bool Desktop::isManaged() const
{
    return answer("xprop", {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")})
        .contains(QLatin1Char('#'));
}

Desktop::Window Desktop::window(const QString &title)
{
    const QString pattern = QLatin1Char('^') + title + QLatin1Char('$');
    const QStringList found = search({QStringLiteral("--name"),
                                      QString(pattern)
                                          .replace(QLatin1Char('('), QLatin1String("\\("))
                                          .replace(QLatin1Char(')'), QLatin1String("\\)"))});
    return found.value(0).toUInt();
}

Desktop::Window Desktop::front()
{
    return xdotool({QStringLiteral("getactivewindow")}).toUInt();
}

QString Desktop::title(Window window)
{
    return xdotool({QStringLiteral("getwindowname"), QString::number(window)});
}

int Desktop::windowCount(qint64 processId)
{
    return search({QStringLiteral("--pid"), QString::number(processId)}).size();
}

void Desktop::place(Window window, const QRect &geometry)
{
    const QString id = QString::number(window);
    xdotool({QStringLiteral("windowsize"), id, QString::number(geometry.width()),
             QString::number(geometry.height()), QStringLiteral("windowmove"), id,
             QString::number(geometry.x()), QString::number(geometry.y())});
}

void Desktop::activate(Window window)
{
    xdotool({QStringLiteral("windowactivate"), QString::number(window)});
}

void Desktop::press(const QStringList &keys)
{
    xdotool(QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("2")}
            + keys);
}

void Desktop::type(const QString &text)
{
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("2"),
             QStringLiteral("--"), text});
}

/// The pointer does not stay: a tool tip would come up in front of what is looked at next.
void Desktop::click(Window window, QPoint point, Button button)
{
    xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), QString::number(window),
             QString::number(point.x()), QString::number(point.y()), QStringLiteral("click"),
             QString::number(button), QStringLiteral("mousemove"),
             QString::number(VirtualScreen::Size.width() - 1),
             QString::number(VirtualScreen::Size.height() - 1)});
}

void Desktop::movePointer(QPoint point)
{
    xdotool({QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())});
}

void Desktop::holdButton()
{
    xdotool({QStringLiteral("mousedown"), QString::number(Left)});
}

void Desktop::releaseButton()
{
    xdotool({QStringLiteral("mouseup"), QString::number(Left)});
}

QImage Desktop::image(Window window)
{
    return QGuiApplication::primaryScreen()->grabWindow(window).toImage();
}

QImage Desktop::screen()
{
    return image(0);
}
