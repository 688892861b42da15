#include "DragSource.h"
#include "MainWindowView.h"

#include "support/Desktop.h"
#include "support/ProcessRun.h"
#include "support/Sanitizer.h"
#include "support/TestHttpServer.h"

#include <QApplication>
#include <QClipboard>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <sndfile.h>

#include <functional>
#include <memory>

namespace {

constexpr int Patience = SanitizerFactor == 1 ? 30000 : 100000;

const QByteArray Pasted = "X:1\nT:Pasted\nL:1/4\nK:C\nc d e f | g a b c' |]\n";

QString text(const char *text)
{
    return QString::fromUtf8(text);
}

/// False where no whole wave file is (yet).
bool readWave(const QString &path, SF_INFO &info, double &peak)
{
    SNDFILE *const wave = sf_open(QFile::encodeName(path).constData(), SFM_READ, &info);
    if (wave == nullptr)
        return false;
    sf_command(wave, SFC_CALC_SIGNAL_MAX, &peak, sizeof peak);
    sf_close(wave);
    return true;
}

QStringList downs(int count)
{
    return QVector<QString>(count, text("Down")).toList();
}

} // namespace

/// Waits until it is so, as a person does who looks at the screen.
#define SEE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, Patience)
#define SEE_THAT(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, Patience)

/// The first hour with the program, from the start to the end. The tests are stages of one run:
/// each goes on where the one before it came to.
class tst_Newcomer : public QObject {
    Q_OBJECT

public:
    explicit tst_Newcomer(Desktop &desktop)
        : m_desktop(desktop)
    {
    }

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void theWindowOpens();
    void noDriversForThreeDimensionsAreLoaded();
    void aSongIsOpened();
    void theSongPlaysAndStops();
    void aRowIsMutedAndSoloed();
    void rowsAreSelected();
    void aNoteIsEditedAndApplied();
    void theTextIsSavedUnderAName();
    void aTransformIsUndone();
    void whatAPatternFindsIsReplacedAndSaved();
    void theEditorIsReopened();
    void midiIsImportedBesideTheSong();
    void theSongIsExportedAsAWave();
    void droppedFilesReplaceTheSong();
    void textIsPasted();
    void rowsAreMergedDuplicatedAndMoved();
    void allIsSaved();
    void aPreferenceIsForTheNextStart();
    void anUpdateIsOffered();
    void theProgramIsLeft();

private:
    void makeDemo() const;
    void start();
    QString path(const char *name) const
    {
        return m_desktop.home() + QLatin1Char('/') + text(name);
    }
    QString song(const char *name) const { return path("songs/") + text(name); }
    QJsonObject settings() const;

    /// Goes down to an entry of the menu that comes up.
    void choose(const std::function<void()> &openMenu, int entry);
    void choose(const char *menuKeys, int entry);
    /// Types names into the file dialog in front.
    void chooseFiles(const char *title, const QStringList &paths);
    void toMainWindow();
    bool isBoxInFront(const char *title) const;

    Desktop &m_desktop;
    TestHttpServer m_server;
    QProcess m_program;
    Desktop::Window m_window = 0;
    Desktop::Window m_editor = 0;
    std::unique_ptr<MainWindowView> m_view;
    QImage m_firstStrip;
    bool m_hasFailed = false;
};

namespace {

const QByteArray Latest = R"({"version":[0,0,0,1],"versionString":"0.0.0.1","url":""})";
const QByteArray Newer = R"({"version":[99,0,0,0],"versionString":"99.0 \"Lute\"",)"
                         R"("url":"https://a.example/get"})";

} // namespace

void tst_Newcomer::initTestCase()
{
    SEE_THAT(m_desktop.isManaged());
    makeDemo();
    m_server.setAnswer(HttpAnswers::body(Latest));
}

void tst_Newcomer::makeDemo() const
{
    ProcessRun run(text(QUILLMOOR_CLI),
                   {text("demo-game"), path("game"), text("--songs"), path("songs")});
    QCOMPARE(run.outcome().status, 0);
}

/// What comes after a stage that failed would only fail late.
void tst_Newcomer::init()
{
    QVERIFY2(!m_hasFailed, "an earlier stage failed");
}

void tst_Newcomer::cleanup()
{
    if (!QTest::currentTestFailed() || m_hasFailed)
        return;
    m_hasFailed = true;
    const QString picture = QDir::current().filePath(text("flow.Newcomer.png"));
    Desktop::screen().save(picture);
    qWarning("In front: \"%s\". The screen is in %s.\n%s", qPrintable(Desktop::frontTitle()),
             qPrintable(picture), m_program.readAllStandardError().constData());
}

void tst_Newcomer::cleanupTestCase()
{
    m_program.kill();
    m_program.waitForFinished();
}

void tst_Newcomer::start()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(text("QUILLMOOR_UPDATE_HOST"), m_server.host());
    environment.remove(text("QT_XCB_GL_INTEGRATION")); // which goes before the program's own choice
    m_program.setProcessEnvironment(environment);
    m_program.setWorkingDirectory(m_desktop.home());
    m_program.start(text(QUILLMOOR_COMPOSER), {text("--game"), path("game")});
}

QJsonObject tst_Newcomer::settings() const
{
    const QString file = path("config/example.quillmoor-composer/Quillmoor Composer.cfg");
    return QJsonDocument::fromJson(fileContents(file)).object();
}

void tst_Newcomer::choose(const std::function<void()> &openMenu, int entry)
{
    const int before = Desktop::windowCount(m_program.processId());
    openMenu();
    SEE(Desktop::windowCount(m_program.processId()), before + 1);
    Desktop::press(downs(entry) << text("Return"));
}

void tst_Newcomer::choose(const char *menuKeys, int entry)
{
    choose([menuKeys] { Desktop::press(text(menuKeys)); }, entry);
}

void tst_Newcomer::chooseFiles(const char *title, const QStringList &paths)
{
    SEE(Desktop::frontTitle(), text(title));
    Desktop::type(QLatin1Char('"') + paths.join(QLatin1String("\" \"")) + QLatin1Char('"'));
    Desktop::press(text("Return"));
}

void tst_Newcomer::toMainWindow()
{
    Desktop::activate(m_window);
    SEE(Desktop::front(), m_window);
}

/// Many a box has the title of the window.
bool tst_Newcomer::isBoxInFront(const char *title) const
{
    const Desktop::Window front = Desktop::front();
    return front != m_window && Desktop::title(front) == text(title);
}

void tst_Newcomer::theWindowOpens()
{
    start();
    SEE_THAT((m_window = Desktop::window(text("Quillmoor Composer"))) != 0);
    SEE(Desktop::front(), m_window);
    Desktop::place(m_window, QRect(10, 40, 710, 1000));
    m_view = std::make_unique<MainWindowView>(m_window);
    SEE(Desktop::image(m_window).size(), QSize(710, 1000));
    SEE(m_view->rows(), QString());
    SEE(m_server.requests().size(), 1);
}

/// Nothing is drawn by them, and they would take a third of the start.
void tst_Newcomer::noDriversForThreeDimensionsAreLoaded()
{
    QFile maps(text("/proc/%1/maps").arg(m_program.processId()));
    QVERIFY(maps.open(QIODevice::ReadOnly));
    const QByteArray loaded = maps.readAll();
    QVERIFY(loaded.contains("libqxcb.so"));
    QVERIFY(!loaded.contains("libqxcb-glx-integration"));
}

void tst_Newcomer::aSongIsOpened()
{
    Desktop::press(text("ctrl+o"));
    chooseFiles("Choose ABC file(s) to open",
                {song("Frere Jacques/01 Flute.abc"), song("Frere Jacques/02 Clarinet.abc"),
                 song("Frere Jacques/06 Bass.abc")});
    SEE(m_view->rows(), text("plain plain plain"));
    SEE(Desktop::front(), m_window);
}

void tst_Newcomer::theSongPlaysAndStops()
{
    QCOMPARE(m_view->position(0), -1);
    Desktop::press(text("F5"));
    SEE_THAT(m_view->position(0) >= 0);
    const int begun = m_view->position(0);
    SEE_THAT(m_view->position(0) > begun);
    SEE_THAT(m_view->position(2) > begun);
    Desktop::press(text("F8"));
    SEE(m_view->position(0), -1);
    QCOMPARE(m_view->position(2), -1);
}

void tst_Newcomer::aRowIsMutedAndSoloed()
{
    m_view->click(1, MainWindowView::Mute);
    SEE(m_view->rows(), text("plain muted plain"));
    m_view->click(1, MainWindowView::Mute);
    SEE(m_view->rows(), text("plain plain plain"));

    const auto openMenu = [this] { m_view->click(1, MainWindowView::Mute, Desktop::Right); };
    choose(openMenu, 2);
    SEE(m_view->rows(), text("muted plain muted"));
    choose(openMenu, 2);
    SEE(m_view->rows(), text("plain plain plain"));
}

void tst_Newcomer::rowsAreSelected()
{
    m_view->click(0, MainWindowView::Select);
    SEE(m_view->rows(), text("selected plain plain"));
    Desktop::press(text("ctrl+i"));
    SEE(m_view->rows(), text("plain selected selected"));
    Desktop::press(text("ctrl+m"));
    SEE(m_view->rows(), text("plain selected,muted selected,muted"));
    Desktop::press(text("ctrl+m"));
    SEE(m_view->rows(), text("plain selected selected"));
    Desktop::press(text("ctrl+shift+a"));
    SEE(m_view->rows(), text("plain plain plain"));
}

void tst_Newcomer::aNoteIsEditedAndApplied()
{
    const QImage before = m_view->strip(0);
    m_view->click(0, MainWindowView::Edit);
    SEE(Desktop::frontTitle(), text("ABC Editor (01 Flute.abc) - Quillmoor Composer"));
    m_editor = Desktop::front();
    Desktop::place(m_editor, QRect(740, 40, 900, 650));

    Desktop::press(QStringList{text("ctrl+Home")} + downs(10));
    Desktop::press({text("Delete"), text("c"), text("F6")});
    SEE_THAT(m_view->strip(0) != before);
    m_firstStrip = m_view->strip(0);
}

void tst_Newcomer::theTextIsSavedUnderAName()
{
    QByteArray expected = fileContents(song("Frere Jacques/01 Flute.abc"));
    const int note = expected.indexOf("\nf g a f") + 1;
    expected[note] = 'c';

    Desktop::press(text("ctrl+shift+s"));
    chooseFiles("Save ABC as..", {path("Mine")});
    SEE(Desktop::frontTitle(), text("ABC Editor (Mine.abc) - Quillmoor Composer"));
    SEE(fileContents(path("Mine.abc")), expected);
}

void tst_Newcomer::aTransformIsUndone()
{
    choose("alt+t", 0);
    SEE(Desktop::frontTitle(), text("Transpose"));
    Desktop::type(text("7"));
    Desktop::press(text("Return"));
    SEE_THAT(m_view->strip(0) != m_firstStrip);
    SEE(Desktop::front(), m_editor);
    Desktop::press({text("ctrl+z"), text("F6")});
    SEE_THAT(m_view->strip(0) == m_firstStrip);
}

void tst_Newcomer::whatAPatternFindsIsReplacedAndSaved()
{
    QByteArray expected = fileContents(path("Mine.abc"));
    QVERIFY(expected.contains("\nC:Traditional\n"));
    expected.replace("\nC:Traditional\n", "\nC:ional, Tradit\n");

    Desktop::press(text("ctrl+f"));
    SEE(Desktop::frontTitle(), text("Find / Replace"));
    const Desktop::Window dialog = Desktop::front();
    Desktop::type(text("C:(T.*it)(.*)$"));
    Desktop::press(text("Tab"));
    Desktop::type(text("C:\\2, \\1"));
    Desktop::press({text("alt+e"), text("alt+a")});
    SEE_THAT(Desktop::front() != dialog);
    Desktop::press(text("Return"));
    SEE(Desktop::front(), dialog);
    Desktop::press(text("Escape"));
    SEE(Desktop::front(), m_editor);
    Desktop::press(text("ctrl+s"));
    SEE(fileContents(path("Mine.abc")), expected);
}

void tst_Newcomer::theEditorIsReopened()
{
    Desktop::press(text("alt+F4"));
    SEE(Desktop::windowCount(m_program.processId()), 1);
    toMainWindow();
    m_view->click(0, MainWindowView::Edit);
    SEE(Desktop::frontTitle(), text("ABC Editor (Mine.abc) - Quillmoor Composer"));
    QVERIFY(m_view->strip(0) == m_firstStrip);
    Desktop::press(text("alt+F4"));
    SEE(Desktop::windowCount(m_program.processId()), 1);
    toMainWindow();
}

void tst_Newcomer::midiIsImportedBesideTheSong()
{
    Desktop::press(text("ctrl+shift+m"));
    chooseFiles("Choose MIDI file to import...", {song("The Irish Washerwoman.mid")});
    SEE(Desktop::frontTitle(), text("Import MIDI"));
    Desktop::press(text("alt+n"));
    SEE(m_view->rowCount(), 9);
    SEE(Desktop::front(), m_window);
}

void tst_Newcomer::theSongIsExportedAsAWave()
{
    Desktop::press(text("ctrl+shift+w"));
    chooseFiles("Export tracks as wav...", {path("song")});

    SF_INFO info = {};
    double peak = 0;
    SEE_THAT(readWave(path("song.wav"), info, peak));
    QCOMPARE(info.format & SF_FORMAT_TYPEMASK, SF_FORMAT_WAV);
    QVERIFY(info.frames / info.samplerate >= 60);
    QVERIFY(peak > 0.1);
    SEE(Desktop::front(), m_window);
}

void tst_Newcomer::droppedFilesReplaceTheSong()
{
    DragSource icons(
        QRect(1700, 1000, 100, 100),
        {song("Minuet in G/01 Piano right hand.abc"), song("Minuet in G/03 Flute.abc")});
    icons.show();
    QVERIFY(QTest::qWaitForWindowExposed(&icons));
    const QPoint target(300, 300);
    int moves = 0;
    icons.setHand([&] {
        if (icons.isWelcome())
            Desktop::releaseButton();
        else
            Desktop::movePointer(target + QPoint(moves++ % 50, 0));
    });
    Desktop::movePointer({1750, 1050});
    Desktop::holdButton();
    Desktop::movePointer({1770, 1070});
    SEE_THAT(icons.isDone());
    QCOMPARE(icons.result(), Qt::CopyAction);

    SEE(Desktop::frontTitle(), text("Import Files"));
    Desktop::press(text("alt+y"));
    SEE(m_view->rows(), text("plain plain"));
    SEE(Desktop::front(), m_window);
}

void tst_Newcomer::textIsPasted()
{
    QGuiApplication::clipboard()->setText(QString::fromUtf8(Pasted));
    Desktop::press(text("ctrl+v"));
    SEE(m_view->rows(), text("plain plain plain"));
}

void tst_Newcomer::rowsAreMergedDuplicatedAndMoved()
{
    m_view->click(0, MainWindowView::Select);
    m_view->click(1, MainWindowView::Select);
    SEE(m_view->rows(), text("selected selected plain"));
    Desktop::press(text("ctrl+j"));
    SEE(m_view->rows(), text("selected selected plain plain"));
    m_view->click(0, MainWindowView::Select);
    SEE(m_view->rows(), text("plain selected plain plain"));
    Desktop::press(text("ctrl+d"));
    SEE(m_view->rows(), text("plain selected plain plain plain"));
    QVERIFY(m_view->strip(4) == m_view->strip(1));

    const QImage first = m_view->strip(0);
    const QImage second = m_view->strip(1);
    m_view->click(0, MainWindowView::Down);
    SEE(m_view->rows(), text("selected plain plain plain plain"));
    QVERIFY(m_view->strip(0) == second);
    QVERIFY(m_view->strip(1) == first);
    m_view->click(1, MainWindowView::Up);
    SEE(m_view->rows(), text("plain selected plain plain plain"));
}

/// The rows without a file ask for a name.
void tst_Newcomer::allIsSaved()
{
    Desktop::press(text("ctrl+shift+s"));
    chooseFiles("Save track 'Pasted' as..", {path("Pasted.abc")});
    chooseFiles("Save track 'Piano right hand' as..", {path("Merged.abc")});
    SEE_THAT(fileContents(path("Merged.abc")).startsWith("X: 1\nT: Piano right hand\n"));
    QCOMPARE(fileContents(path("Pasted.abc")), Pasted);
    SEE(Desktop::front(), m_window);
}

void tst_Newcomer::aPreferenceIsForTheNextStart()
{
    choose("alt+o", 0);
    SEE(Desktop::frontTitle(), text("Preferences"));
    Desktop::press(text("alt+m"));
    SEE_THAT(isBoxInFront("Quillmoor Composer"));
    Desktop::press(text("Return"));
    SEE(Desktop::frontTitle(), text("Preferences"));
    Desktop::press(text("Return"));
    SEE(Desktop::front(), m_window);
    SEE(settings().value(text("instruments/loadMods")).toBool(), true);
}

void tst_Newcomer::anUpdateIsOffered()
{
    m_server.setAnswer(HttpAnswers::body(Newer));
    choose("alt+h", 3);
    SEE(Desktop::frontTitle(), text("Update available"));
    Desktop::press(text("alt+n"));
    SEE(Desktop::front(), m_window);
    QCOMPARE(m_server.requests().size(), 2);
}

void tst_Newcomer::theProgramIsLeft()
{
    Desktop::press(text("alt+F4"));
    SEE(m_program.state(), QProcess::NotRunning);
    QCOMPARE(m_program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program.exitCode(), 0);
    QCOMPARE(settings().value(text("dirs/abc/open")).toString(), song("Frere Jacques"));
}

int main(int argc, char **argv)
{
    Desktop desktop;
    QApplication application(argc, argv);
    tst_Newcomer test(desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Newcomer.moc"
