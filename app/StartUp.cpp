#include "app/StartUp.h"

#include "Quillmoor/GameDirectory.h"
#include "Quillmoor/Instrument.h"
#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/GameSearch.h"
#include "app/OnceSeen.h"
#include "icons/Icons.h"
#include "model/FileNameCodec.h"
#include "model/Settings.h"
#include "model/Signals.h"
#include "model/Track.h"
#include "ui/MainWindow.h"
#include "ui/dialogs/MessageBoxes.h"

#include <QFileInfo>
#include <QIcon>

#include <cstdio>
#include <vector>

namespace {

enum Status { Success = 0, Failure = Application::FailureStatus, BadUsage = 2 };

/// Arguments in the form that Qt wants them, which it changes and keeps pointing to.
class ArgumentArray {
public:
    explicit ArgumentArray(const QStringList &arguments)
    {
        for (const QString &argument : arguments)
            m_bytes.push_back(FileNameCodec::encode(argument));
        for (QByteArray &bytes : m_bytes)
            m_pointers.push_back(bytes.data());
        count = static_cast<int>(m_pointers.size());
        m_pointers.push_back(nullptr);
    }

    int count;
    char **pointers() { return m_pointers.data(); }

private:
    std::vector<QByteArray> m_bytes;
    std::vector<char *> m_pointers;
};

QStringList decoded(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(FileNameCodec::decode(argv[i]));
    return arguments;
}

int print(const QString &text)
{
    std::fputs(FileNameCodec::encode(text).constData(), stdout);
    return std::fflush(stdout) == 0 ? Success : Failure;
}

int complain(const QString &message, Status status)
{
    const QByteArray text = FileNameCodec::encode(message);
    std::fprintf(stderr, "quillmoor-composer: %s\n", text.constData());
    return status;
}

int complainOfUsage(const QString &message)
{
    complain(message, BadUsage);
    return complain(QStringLiteral("Try 'quillmoor-composer --help'."), BadUsage);
}

/// Without one, Qt would end the process by a signal.
bool hasDisplay(const CommandLine &line)
{
    return line.choosesPlatform || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")
        || !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

void registerMetaTypes()
{
    qRegisterMetaType<Track>("Track");
    qRegisterMetaType<Instrument>("Instrument");
}

void setAttributes()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // No dialog has any help behind a question mark in its frame.
    QCoreApplication::setAttribute(Qt::AA_DisableWindowContextHelpButton);
}

/// The domain also names the directory of the settings file.
void nameApplication()
{
    QCoreApplication::setOrganizationDomain(QStringLiteral("example.quillmoor-composer"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillmoor Composer"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUILLMOOR_VERSION));
}

void loadIcons()
{
    Icons::load();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/appicon.png")));
}

int refuseGame(const QString &directory)
{
    const QString message =
        QStringLiteral("No Quillmoor installation was found at '%1'.").arg(directory);
    complain(message, Failure);
    MessageBoxes::critical(nullptr, QCoreApplication::applicationName(), message);
    return Failure;
}

QStringList absolutePaths(const QStringList &files)
{
    QStringList paths;
    for (const QString &file : files)
        paths.append(QFileInfo(file).absoluteFilePath());
    return paths;
}

/// While it lives, Qt looks for no OpenGL when it makes the first window. Nothing here is drawn by
/// it, and loading its drivers would take a third of the start and much memory. It does not outlive
/// the first window: what the user opens from there, such as a browser, may well want it.
class WithoutOpenGl {
public:
    WithoutOpenGl()
    {
        if (m_isOurs)
            qputenv(Variable, "none");
    }
    ~WithoutOpenGl()
    {
        if (m_isOurs)
            qunsetenv(Variable);
    }
    Q_DISABLE_COPY(WithoutOpenGl)

private:
    static constexpr const char *Variable = "QT_XCB_GL_INTEGRATION";

    const bool m_isOurs = !qEnvironmentVariableIsSet(Variable);
};

void showFirst(QWidget &window)
{
    const WithoutOpenGl quick;
    window.show();
}

/// The files are opened when the user sees the window, which a box may belong to.
int runWindow(const QString &game, const QStringList &files)
{
    MainWindow window{QDir(game)};
    showFirst(window);
    onceSeen(window, [&window, files] { window.openFiles(files); });
    return QApplication::exec();
}

int openWindow(const CommandLine &line, const Application &application)
{
    Settings::registerFormat();
    Settings::instance();
    const auto named = namedGameDirectory(line.game);
    if (named && !isGameDirectory(*named))
        return refuseGame(*named);
    const QString game = named ? *named : GameSearch::findGame();
    if (game.isEmpty() || application.hasFailed())
        return Failure;
    const int status = runWindow(game, absolutePaths(line.files));
    Settings::instance().sync();
    return status;
}

/// Ended by a signal, too, the program removes what it has not finished writing and stores the
/// settings. Nobody is asked anything then.
int openWindowUntilSignal(const CommandLine &line, const Application &application)
{
    const SignalWatch watch;
    QObject::connect(&watch, &SignalWatch::interrupted, &application,
                     [] { QCoreApplication::exit(Failure); });
    const int status = openWindow(line, application);
    if (watch.received() != 0)
        SignalWatch::dieBy(watch.received());
    return status;
}

int runApplication(const CommandLine &line, const QString &program)
{
    registerMetaTypes();
    setAttributes();
    ArgumentArray arguments(QStringList(program) + line.qtArguments);
    Application application(arguments.count, arguments.pointers());
    nameApplication();
    loadIcons();
    int status = Failure;
    try {
        status = openWindowUntilSignal(line, application);
    } catch (...) {
        application.fail();
    }
    return application.finish(status);
}

int carryOut(const CommandLine &line, const QString &program)
{
    if (line.task == CommandLine::ShowHelp)
        return print(CommandLine::help());
    if (line.task == CommandLine::ShowVersion)
        return print(QStringLiteral("quillmoor-composer " QUILLMOOR_VERSION "\n"));
    if (!hasDisplay(line))
        return complain(
            QStringLiteral("There is no display: DISPLAY and WAYLAND_DISPLAY are not set."),
            Failure);
    return runApplication(line, program);
}

} // namespace

int StartUp::run(int argc, char **argv)
{
    prepareStandardStreams();
    FileNameCodec::install();
    CommandLine line;
    try {
        line = CommandLine::parse(decoded(argc, argv));
    } catch (const QString &message) {
        return complainOfUsage(message);
    }
    const QString program = argc > 0 ? FileNameCodec::decode(argv[0]) : QString();
    return carryOut(line, program);
}
