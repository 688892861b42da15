#include "model/FileNameCodec.h"
#include "model/Settings.h"
#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"
#include "ui/MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QDragEnterEvent>
#include <QLabel>
#include <QLayout>
#include <QMenuBar>
#include <QMimeData>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QToolBar>
#include <QTreeView>
#include <QtTest>

#include <memory>

/// Qt passes a drop on only after a drag that was accepted; the tests do without.
class Window : public MainWindow {
public:
    using MainWindow::dropEvent;
    using MainWindow::MainWindow;
};

class tst_MainWindow : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theWindowIsAsDrawn();
    void actionsHaveTextTipShortcutAndSlot_data();
    void actionsHaveTextTipShortcutAndSlot();
    void menusAndToolBarAreInOrder();
    void anEmptyWindowSaysHowToBegin();
    void instrumentsThatCannotBeReadAreThrown();

    void chosenAbcFilesAreAdded();
    void theDirectoryOfAbcFilesIsKept();
    void cancelledDialogsChangeNothing();
    void eachFailingAbcFileHasItsBox();
    void aNameIsNoMarkup();

    void aMidiFileBecomesTracks();
    void theMidiDialogIsAsDescribed();
    void importAsksWhetherToKeepTracks_data();
    void importAsksWhetherToKeepTracks();
    void loadingShowsAMessage();
    void aBrokenMidiFileHasItsBox();
    void aMidiFileWithoutNotesAddsNothing();

    void filesAreOpenedByTheirKind();

    void dragsOfSuitableFilesAreAccepted_data();
    void dragsOfSuitableFilesAreAccepted();
    void droppedFilesAreOpened();
    void aDropAsksWhetherToKeepTracks_data();
    void aDropAsksWhetherToKeepTracks();
    void aDropIsACopy();
    void aDroppedNameMayBeAnyBytes();

private:
    QString made(const QByteArray &name, const QByteArray &contents);
    QString tune(const char *title);
    QString midi(const char *name);
    QStringList titles() const;
    QAction *action(const char *name) const;
    void drop(const QStringList &paths);

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Window> m_window;
    std::unique_ptr<DialogAnswers> m_answers;
};

namespace {

QString text(const char *text)
{
    return QString::fromUtf8(text);
}

/// One chunk with one note of a quarter.
QByteArray midiBytes(const QByteArray &note = QByteArray::fromHex("00903c406080"
                                                                  "3c00"))
{
    const QByteArray events = note + QByteArray::fromHex("00ff2f00");
    return QByteArray::fromHex("4d546864000000060000000100604d54726b000000")
        + static_cast<char>(events.size()) + events;
}

QString question(const char *title)
{
    return text("question [%1] Would you like to remove the existing tracks first? (Yes,No)")
        .arg(text(title));
}

QStringList texts(const QList<QAction *> &actions)
{
    QStringList result;
    for (const QAction *const action : actions)
        result.append(action->isSeparator() ? text("|") : action->text());
    return result;
}

bool isAccepted(MainWindow &window, const QList<QUrl> &urls)
{
    QMimeData data;
    data.setUrls(urls);
    QDragEnterEvent event(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    event.ignore();
    QApplication::sendEvent(&window, &event);
    return event.isAccepted();
}

} // namespace

void tst_MainWindow::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    Settings::instance().setValue(Settings::DirAbcOpen, QString());
    Settings::instance().setValue(Settings::DirMidiOpen, QString());
    m_window = std::make_unique<Window>(QDir(m_dir->path()));
    m_window->show();
    m_answers = std::make_unique<DialogAnswers>();
}

void tst_MainWindow::cleanup()
{
    QVERIFY(m_answers->isDone());
    m_answers.reset();
    m_window.reset();
}

QString tst_MainWindow::made(const QByteArray &name, const QByteArray &contents)
{
    const QString path = m_dir->filePath(FileNameCodec::decode(name));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("Could not make a file for the test.");
    return path;
}

QString tst_MainWindow::tune(const char *title)
{
    return made(QByteArray(title) + ".abc",
                QByteArray("X:1\nT:") + title + "\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nCDEF|\n");
}

QString tst_MainWindow::midi(const char *name)
{
    return made(name, midiBytes());
}

QStringList tst_MainWindow::titles() const
{
    const QAbstractItemModel *const model = m_window->findChild<QTreeView *>()->model();
    QStringList titles;
    for (int i = 0; i < model->rowCount(); ++i)
        titles.append(model->index(i, 0).data().toString());
    return titles;
}

QAction *tst_MainWindow::action(const char *name) const
{
    return m_window->findChild<QAction *>(text(name));
}

void tst_MainWindow::drop(const QStringList &paths)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data.setUrls(urls);
    QDropEvent event(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    m_window->dropEvent(&event);
    QCoreApplication::processEvents();
}

void tst_MainWindow::theWindowIsAsDrawn()
{
    QCOMPARE(m_window->windowTitle(), text("Quillmoor Composer"));
    QCOMPARE(m_window->size(), QSize(710, 470));
    QVERIFY(m_window->acceptDrops());
    QVERIFY(m_window->testAttribute(Qt::WA_QuitOnClose));
    QCOMPARE(m_window->centralWidget()->objectName(), text("centralWidget"));
    const QLayout *const layout = m_window->centralWidget()->layout();
    QCOMPARE(layout->objectName(), text("verticalLayout_2"));
    QCOMPARE(layout->spacing(), 6);
    QCOMPARE(layout->contentsMargins(), QMargins(11, 11, 11, 11));
}

void tst_MainWindow::actionsHaveTextTipShortcutAndSlot_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("tip");
    QTest::addColumn<QString>("shortcut");
    QTest::newRow("actionOpen") << text("Open") << text("Open ABC file") << text("Ctrl+O");
    QTest::newRow("actionImport_MIDI")
        << text("Import MIDI") << text("Import MIDI file into the editor") << text("Ctrl+Shift+M");
    QTest::newRow("actionExit") << text("Exit") << text("Exit Quillmoor Composer")
                                << text("Alt+F4");
}

void tst_MainWindow::actionsHaveTextTipShortcutAndSlot()
{
    const QAction *const tested = action(QTest::currentDataTag());
    QTEST(tested->text(), "label");
    QTEST(tested->statusTip(), "tip");
    QTEST(tested->shortcut().toString(), "shortcut");
}

void tst_MainWindow::menusAndToolBarAreInOrder()
{
    const auto *const file = m_window->findChild<QMenu *>(text("menuFile"));
    const auto *const import = m_window->findChild<QMenu *>(text("menuImport"));
    const auto *const bar = m_window->findChild<QToolBar *>(text("tbTracks"));
    QCOMPARE(texts(m_window->menuBar()->actions()), QStringList{text("&File")});
    QCOMPARE(texts(file->actions()).join(QLatin1Char(',')), text("Open,|,Import,|,Exit"));
    QCOMPARE(texts(import->actions()), QStringList{text("Import MIDI")});
    QCOMPARE(texts(bar->actions()).join(QLatin1Char(',')), text("Open,Import MIDI"));
    QCOMPARE(bar->windowTitle(), text("Track Toolbar"));
    QCOMPARE(bar->iconSize(), QSize(16, 16));
    QCOMPARE(bar->toolButtonStyle(), Qt::ToolButtonFollowStyle);
}

void tst_MainWindow::anEmptyWindowSaysHowToBegin()
{
    const auto *const hint = m_window->findChild<QLabel *>(text("lblHint"));
    const auto *const list = m_window->findChild<QTreeView *>();
    QVERIFY(hint->isVisible());
    QVERIFY(!list->isVisible());
    m_window->openFiles({tune("Something")});
    QVERIFY(!hint->isVisible());
    QVERIFY(list->isVisible());
    m_window->onClearTracks();
    QVERIFY(hint->isVisible());
}

void tst_MainWindow::instrumentsThatCannotBeReadAreThrown()
{
    QDir dir(m_dir->path());
    QVERIFY(dir.mkpath(text("user/items/instruments")));
    QVERIFY(dir.mkpath(text("user/sfx/instruments/lute")));
    made("user/items/instruments/lute.instrument",
         R"({"shortdescription":"Lute","kind":"lute","inventoryIcon":"x"})");
    made("user/sfx/instruments/lute/tuning.config", "[]");
    QVERIFY_EXCEPTION_THROWN(MainWindow{dir}, QString);
}

void tst_MainWindow::chosenAbcFilesAreAdded()
{
    tune("Zwei");
    m_window->openFiles({tune("Eins")});
    tune("Drei");
    const QString names = text(R"("%1" "%2")");
    m_answers->choose(
        names.arg(m_dir->filePath(text("Zwei.abc")), m_dir->filePath(text("Drei.abc"))));
    action("actionOpen")->trigger();
    QCOMPARE(titles().join(QLatin1Char(' ')), text("Eins Zwei Drei"));
    QCOMPARE(m_answers->seen(),
             QStringList{text("chooser [Choose ABC file(s) to open] ABC files "
                              "(*.abc); in %1")
                             .arg(QDir::currentPath())});
}

void tst_MainWindow::theDirectoryOfAbcFilesIsKept()
{
    m_answers->choose(tune("Kept")).cancel();
    action("actionOpen")->trigger();
    QCOMPARE(Settings::instance().value(Settings::DirAbcOpen).toString(), m_dir->path());
    action("actionOpen")->trigger();
    QVERIFY2(m_answers->seen().last().endsWith(text("; in ") + m_dir->path()),
             qPrintable(m_answers->seen().last()));
}

void tst_MainWindow::cancelledDialogsChangeNothing()
{
    m_answers->cancel().cancel();
    Settings::instance().setValue(Settings::DirAbcOpen, text("/abc"));
    Settings::instance().setValue(Settings::DirMidiOpen, text("/midi"));
    action("actionOpen")->trigger();
    action("actionImport_MIDI")->trigger();
    QCOMPARE(m_answers->seen().size(), 2);
    QVERIFY(titles().isEmpty());
    QCOMPARE(Settings::instance().value(Settings::DirAbcOpen).toString(), text("/abc"));
    QCOMPARE(Settings::instance().value(Settings::DirMidiOpen).toString(), text("/midi"));
}

void tst_MainWindow::eachFailingAbcFileHasItsBox()
{
    const QString broken = made("broken.abc", "X:1\nK:C\nC [D$] E\n");
    m_answers->press("OK").press("OK").press("OK");
    m_window->openFiles(
        {text("/nowhere/at/all.abc"), tune("Good"), broken, m_dir->path(), tune("Better")});
    const QString box = text("critical [Error while reading ABC file] %1 (OK)");
    QCOMPARE(m_answers->seen(),
             QStringList({box.arg(text("Could not open file.")),
                          box.arg(text("Unexpected token found in chord at line 3, column 5.")),
                          box.arg(text("Could not open file."))}));
    QCOMPARE(titles().join(QLatin1Char(' ')), text("Good Better"));
}

void tst_MainWindow::aNameIsNoMarkup()
{
    m_window->openFiles({tune("<b>bold<b>")});
    QCOMPARE(titles(), QStringList{text("<b>bold<b>")});
    QCOMPARE(m_window->findChild<QLabel *>(text("lblHint"))->textFormat(), Qt::PlainText);
}

void tst_MainWindow::aMidiFileBecomesTracks()
{
    m_answers->choose(midi("song.mid"));
    action("actionImport_MIDI")->trigger();
    QCOMPARE(titles().size(), 1);
    const QAbstractItemModel *const model = m_window->findChild<QTreeView *>()->model();
    QCOMPARE(model->index(0, 1).data().toString(), text("1"));
}

void tst_MainWindow::theMidiDialogIsAsDescribed()
{
    m_answers->choose(midi("song.mid")).cancel();
    action("actionImport_MIDI")->trigger();
    QCOMPARE(Settings::instance().value(Settings::DirMidiOpen).toString(), m_dir->path());
    action("actionImport_MIDI")->trigger();
    QCOMPARE(m_answers->seen().last(),
             text("chooser [Choose MIDI file to import...] MIDI files (*.mid); in ")
                 + m_dir->path());
}

void tst_MainWindow::importAsksWhetherToKeepTracks_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<int>("rows");
    QTest::newRow("keep them") << text("No") << 2;
    QTest::newRow("remove them") << text("Yes") << 1;
}

void tst_MainWindow::importAsksWhetherToKeepTracks()
{
    QFETCH(QString, answer);
    m_window->openFiles({tune("There")});
    m_answers->choose(midi("song.mid")).press(answer.toUtf8());
    action("actionImport_MIDI")->trigger();
    QCOMPARE(m_answers->seen().value(1), question("Import MIDI"));
    QTEST(titles().size(), "rows");
}

void tst_MainWindow::loadingShowsAMessage()
{
    const QSignalSpy messages(m_window->statusBar(), &QStatusBar::messageChanged);
    m_window->openFiles({midi("song.mid")});
    QCOMPARE(messages.size(), 2);
    QCOMPARE(messages.at(0).at(0).toString(), text("Loading MIDI file..."));
    QCOMPARE(messages.at(1).at(0).toString(), QString());
}

void tst_MainWindow::aBrokenMidiFileHasItsBox()
{
    m_answers->press("OK").press("OK");
    m_window->openFiles({made("broken.mid", "no MIDI"), text("/nowhere.mid"), tune("After")});
    const QString box = text("critical [Error while reading MIDI file] %1 (OK)");
    QCOMPARE(
        m_answers->seen(),
        QStringList({box.arg(text("Invalid MIDI file.")), box.arg(text("Could not open file."))}));
    QCOMPARE(titles(), QStringList{text("After")});
    QCOMPARE(m_window->statusBar()->currentMessage(), QString());
}

void tst_MainWindow::aMidiFileWithoutNotesAddsNothing()
{
    m_window->openFiles({made("silent.mid", midiBytes(QByteArray()))});
    QVERIFY(titles().isEmpty());
    QVERIFY(m_answers->seen().isEmpty());
}

void tst_MainWindow::filesAreOpenedByTheirKind()
{
    made("tune", "X:1\nT:By content\nK:C\nC\n");
    m_window->openFiles({midi("a.MID"), midi("b"), tune("c"), m_dir->filePath(text("tune"))});
    QCOMPARE(titles().size(), 4);
    QCOMPARE(titles().mid(2).join(QLatin1Char(',')), text("c,By content"));
}

void tst_MainWindow::dragsOfSuitableFilesAreAccepted_data()
{
    QTest::addColumn<QString>("urls");
    QTest::addColumn<bool>("isAccepted");
    QTest::newRow("ABC and MIDI") << text("file:///a.abc file:///b.mid") << true;
    QTest::newRow("upper case") << text("file:///a.ABC file:///b.MID") << true;
    QTest::newRow("ABC and text") << text("file:///a.abc file:///b.txt") << false;
    QTest::newRow("not local") << text("https://a.example/a.abc") << false;
    QTest::newRow("nothing") << QString() << false;
}

void tst_MainWindow::dragsOfSuitableFilesAreAccepted()
{
    QFETCH(QString, urls);
    QList<QUrl> list;
    for (const QString &url : urls.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        list.append(QUrl(url));
    QTEST(isAccepted(*m_window, list), "isAccepted");
}

void tst_MainWindow::droppedFilesAreOpened()
{
    drop({tune("First"), made("other.txt", "X:1\nK:C\nC\n"), midi("song.mid"), tune("Last")});
    QCOMPARE(titles().size(), 3);
    QCOMPARE(titles().first(), text("First"));
    QCOMPARE(titles().last(), text("Last"));
    QVERIFY(m_answers->seen().isEmpty());
}

void tst_MainWindow::aDropAsksWhetherToKeepTracks_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("expected");
    QTest::newRow("keep them") << text("No") << text("There Dropped");
    QTest::newRow("remove them") << text("Yes") << text("Dropped");
}

void tst_MainWindow::aDropAsksWhetherToKeepTracks()
{
    QFETCH(QString, answer);
    m_window->openFiles({tune("There")});
    m_answers->press(answer.toUtf8());
    drop({tune("Dropped")});
    QCOMPARE(m_answers->seen(), QStringList{question("Import Files")});
    QTEST(titles().join(QLatin1Char(' ')), "expected");
}

/// Whoever offers the files to be moved must not be told that they were.
void tst_MainWindow::aDropIsACopy()
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(tune("Moved"))});
    QDropEvent event(QPointF(20, 20), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                     Qt::NoModifier);
    event.setDropAction(Qt::MoveAction);
    m_window->dropEvent(&event);
    QVERIFY(event.isAccepted());
    QCOMPARE(event.dropAction(), Qt::CopyAction);
    QCoreApplication::processEvents();
    QCOMPARE(titles(), QStringList{text("Moved")});
}

void tst_MainWindow::aDroppedNameMayBeAnyBytes()
{
    made("\xFF 100%.abc", "X:1\nT:Odd\nK:C\nC\n");
    QMimeData data;
    data.setUrls(
        {QUrl::fromEncoded("file://" + QFile::encodeName(m_dir->path()) + "/%FF%20100%25.abc")});
    QDropEvent event(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    m_window->dropEvent(&event);
    QCoreApplication::processEvents();
    QCOMPARE(titles(), QStringList{text("Odd")});
}

int main(int argc, char **argv)
{
    FileNameCodec::install();
    const SettingsSandbox sandbox;
    QApplication application(argc, argv);
    tst_MainWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_MainWindow.moc"
