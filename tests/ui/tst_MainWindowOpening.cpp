#include "MainWindowStage.h"

#include "model/FileNameCodec.h"
#include "model/Settings.h"
#include "support/MidiBuilder.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QStatusBar>

#include <sys/stat.h>

/// What brings tracks into the main window: dialogs, the command line, the clipboard and drops.
class tst_MainWindowOpening : public QObject {
    Q_OBJECT

private slots:
    void init() { m_stage = std::make_unique<MainWindowStage>(); }
    void cleanup();

    void chosenAbcFilesAreAdded();
    void theDirectoryOfAbcFilesIsKept();
    void cancelledDialogsChangeNothing();
    void anAbcFileKeepsItsNameAndText();
    void anAbcFileEndsAtItsFirstNul();
    void eachFailingAbcFileHasItsBox();
    void pipesAndDevicesAreRefused_data();
    void pipesAndDevicesAreRefused();
    void aNameIsNoMarkup();

    void aMidiFileBecomesTracks();
    void theMidiDialogIsAsDescribed();
    void importAsksWhetherToKeepTracks_data();
    void importAsksWhetherToKeepTracks();
    void loadingShowsAMessage();
    void aBrokenMidiFileHasItsBox();
    void aMidiFileWithoutNotesAddsNothing();
    void partsOfAMidiFileWithoutNotesAreLeftOut();

    void filesAreOpenedByTheirKind();

    void copiedTextBecomesATrack();
    void copiedTextThatIsNoTuneHasItsBox();
    void anEmptyClipboardHasItsBox();
    void copiedFilesAreOpened();
    void copiedFilesAskWhetherToKeepTracks_data();
    void copiedFilesAskWhetherToKeepTracks();
    void copiedTextKeepsTracksWithoutAsking();

    void dragsOfSuitableFilesAreAccepted_data();
    void dragsOfSuitableFilesAreAccepted();
    void droppedFilesAreOpened();
    void aDropAsksWhetherToKeepTracks_data();
    void aDropAsksWhetherToKeepTracks();
    void aDropWaitsForTheDialogInFront();
    void aDropWaitsForTheMenuOfARow();
    void aDropOfOtherThingsAsksNothing();
    void aDropIsACopy();
    void aDroppedNameMayBeAnyBytes();

private:
    QString titles() const { return m_stage->titles().join(QLatin1Char(' ')); }
    const QStringList &seen() const { return m_stage->answers().seen(); }

    std::unique_ptr<MainWindowStage> m_stage;
};

namespace {

const char *const AbcBox = "critical [Error while reading ABC file] %1 (OK)";
const char *const MidiBox = "critical [Error while reading MIDI file] %1 (OK)";

QString question(const char *title)
{
    return text("question [%1] Would you like to remove the existing tracks first? (Yes,No)")
        .arg(text(title));
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

/// What is dropped waits until the event loop comes to it.
void dropUnopened(MainWindow &window, const QString &path)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    QDropEvent event(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    static_cast<QObject &>(window).event(&event);
}

void copy(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromUserInput(path));
    auto *const data = new QMimeData; // the clipboard's
    data->setUrls(urls);
    QApplication::clipboard()->setMimeData(data);
}

void addAnswerRows()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("expected");
    QTest::newRow("keep them") << text("No") << text("There New");
    QTest::newRow("remove them") << text("Yes") << text("New");
}

} // namespace

void tst_MainWindowOpening::cleanup()
{
    QVERIFY(m_stage->answers().isDone());
    m_stage.reset();
}

void tst_MainWindowOpening::chosenAbcFilesAreAdded()
{
    m_stage->window().openFiles({m_stage->tune("Eins")});
    const QString names = text(R"("%1" "%2")");
    m_stage->answers().choose(names.arg(m_stage->tune("Zwei"), m_stage->tune("Drei")));
    m_stage->trigger("actionOpen");
    QCOMPARE(titles(), text("Eins Zwei Drei"));
    QCOMPARE(seen(),
             QStringList{text("chooser [Choose ABC file(s) to open] ABC files (*.abc); in %1")
                             .arg(QDir::currentPath())});
}

void tst_MainWindowOpening::theDirectoryOfAbcFilesIsKept()
{
    m_stage->answers().choose(m_stage->tune("Kept")).cancel();
    m_stage->trigger("actionOpen");
    QCOMPARE(Settings::instance().value(Settings::DirAbcOpen).toString(), m_stage->dir());
    m_stage->trigger("actionOpen");
    QVERIFY2(seen().last().endsWith(text("; in ") + m_stage->dir()), qPrintable(seen().last()));
}

void tst_MainWindowOpening::cancelledDialogsChangeNothing()
{
    m_stage->answers().cancel().cancel();
    Settings::instance().setValue(Settings::DirAbcOpen, text("/abc"));
    Settings::instance().setValue(Settings::DirMidiOpen, text("/midi"));
    m_stage->trigger("actionOpen");
    m_stage->trigger("actionImport_MIDI");
    QCOMPARE(seen().size(), 2);
    QVERIFY(m_stage->rows().isEmpty());
    QCOMPARE(Settings::instance().value(Settings::DirAbcOpen).toString(), text("/abc"));
    QCOMPARE(Settings::instance().value(Settings::DirMidiOpen).toString(), text("/midi"));
}

void tst_MainWindowOpening::anAbcFileKeepsItsNameAndText()
{
    const QString path = m_stage->made("odd.abc", "X:1\nT:Odd\nK:C\nC    D % why\n");
    m_stage->window().openFiles({path});
    QCOMPARE(m_stage->row("T1")->track().fileName(), path);
    QCOMPARE(m_stage->row("T1")->track().abc(), text("X:1\nT:Odd\nK:C\nC    D % why\n"));
}

void tst_MainWindowOpening::anAbcFileEndsAtItsFirstNul()
{
    m_stage->window().openFiles(
        {m_stage->made("nul.abc", QByteArray("X:1\nT:\xC3\x9C\nK:C\nC\n\0$$ [", 20))});
    QCOMPARE(titles(), text("\xC3\x9C"));
    QCOMPARE(m_stage->row("T1")->track().noteCount(), 1);
}

void tst_MainWindowOpening::eachFailingAbcFileHasItsBox()
{
    const QString broken = m_stage->made("broken.abc", "X:1\nK:C\nC [D$] E\n");
    m_stage->answers().press("OK").press("OK").press("OK");
    m_stage->window().openFiles({text("/nowhere/at/all.abc"), m_stage->tune("Good"), broken,
                                 m_stage->dir(), m_stage->tune("Better")});
    QCOMPARE(
        seen(),
        QStringList({text(AbcBox).arg(text("Could not open file.")),
                     text(AbcBox).arg(text("Unexpected token found in chord at line 3, column 5.")),
                     text(AbcBox).arg(text("Could not open file."))}));
    QCOMPARE(titles(), text("Good Better"));
}

void tst_MainWindowOpening::pipesAndDevicesAreRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("box");
    QTest::newRow("ABC") << text("song.abc") << text(AbcBox);
    QTest::newRow("MIDI") << text("song.mid") << text(MidiBox);
}

/// Nobody writes to the pipe: who reads from it waits for ever.
void tst_MainWindowOpening::pipesAndDevicesAreRefused()
{
    QFETCH(QString, name);
    QFETCH(QString, box);
    const QString pipe = m_stage->dir() + QLatin1Char('/') + name;
    const QString device = m_stage->dir() + text("/endless-") + name;
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QVERIFY(QFile::link(text("/dev/zero"), device));
    m_stage->answers().press("OK").press("OK");
    m_stage->window().openFiles({pipe, device});
    const QString expected = box.arg(text("Could not open file."));
    QCOMPARE(seen(), QStringList({expected, expected}));
    QVERIFY(m_stage->rows().isEmpty());
}

void tst_MainWindowOpening::aNameIsNoMarkup()
{
    m_stage->window().openFiles({m_stage->tune("<b>bold<b>")});
    QCOMPARE(titles(), text("<b>bold<b>"));
}

void tst_MainWindowOpening::aMidiFileBecomesTracks()
{
    m_stage->answers().choose(m_stage->midi("song.mid"));
    m_stage->trigger("actionImport_MIDI");
    QCOMPARE(m_stage->ids(), QStringList{text("T1")});
    QCOMPARE(m_stage->row("T1")->track().noteCount(), 1);
}

void tst_MainWindowOpening::theMidiDialogIsAsDescribed()
{
    m_stage->answers().choose(m_stage->midi("song.mid")).cancel();
    m_stage->trigger("actionImport_MIDI");
    QCOMPARE(Settings::instance().value(Settings::DirMidiOpen).toString(), m_stage->dir());
    m_stage->trigger("actionImport_MIDI");
    QCOMPARE(seen().last(),
             text("chooser [Choose MIDI file to import...] MIDI files (*.mid); in ")
                 + m_stage->dir());
}

void tst_MainWindowOpening::importAsksWhetherToKeepTracks_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("ids");
    QTest::newRow("keep them") << text("No") << text("T1 T2");
    QTest::newRow("remove them") << text("Yes") << text("T1");
}

void tst_MainWindowOpening::importAsksWhetherToKeepTracks()
{
    QFETCH(QString, answer);
    m_stage->window().openFiles({m_stage->tune("There")});
    m_stage->answers().choose(m_stage->midi("song.mid")).press(answer.toUtf8().constData());
    m_stage->trigger("actionImport_MIDI");
    QCOMPARE(seen().value(1), question("Import MIDI"));
    QTEST(m_stage->ids().join(QLatin1Char(' ')), "ids");
}

void tst_MainWindowOpening::loadingShowsAMessage()
{
    const QSignalSpy messages(m_stage->window().statusBar(), &QStatusBar::messageChanged);
    m_stage->window().openFiles({m_stage->midi("song.mid")});
    QCOMPARE(messages.size(), 2);
    QCOMPARE(messages.at(0).at(0).toString(), text("Loading MIDI file..."));
    QCOMPARE(messages.at(1).at(0).toString(), QString());
}

void tst_MainWindowOpening::aBrokenMidiFileHasItsBox()
{
    m_stage->answers().press("OK").press("OK");
    m_stage->window().openFiles(
        {m_stage->made("broken.mid", "no MIDI"), text("/nowhere.mid"), m_stage->tune("After")});
    QCOMPARE(seen(),
             QStringList({text(MidiBox).arg(text("Invalid MIDI file.")),
                          text(MidiBox).arg(text("Could not open file."))}));
    QCOMPARE(titles(), text("After"));
    QCOMPARE(m_stage->window().statusBar()->currentMessage(), QString());
}

void tst_MainWindowOpening::aMidiFileWithoutNotesAddsNothing()
{
    m_stage->window().openFiles(
        {m_stage->made("silent.mid", MidiBuilder::file({QByteArray(), QByteArray()}))});
    QVERIFY(m_stage->rows().isEmpty());
    QVERIFY(seen().isEmpty());
}

void tst_MainWindowOpening::partsOfAMidiFileWithoutNotesAreLeftOut()
{
    using namespace MidiBuilder;
    const QByteArray first = noteOn(0, 0, 60) + noteOff(480, 0, 60);
    const QByteArray silent = program(0, 1, 20);
    const QByteArray last = noteOn(0, 2, 62) + noteOff(960, 2, 62);
    m_stage->window().openFiles({m_stage->made("song.mid", file({first, silent, last}))});
    QCOMPARE(m_stage->rows().size(), 2);
    QCOMPARE(m_stage->row("T1")->track().event(0).note(), 60U);
    QCOMPARE(m_stage->row("T2")->track().length(), quint64{60480});
}

void tst_MainWindowOpening::filesAreOpenedByTheirKind()
{
    const QString unnamed = m_stage->made("tune", "X:1\nT:By-content\nK:C\nC\n");
    m_stage->window().openFiles(
        {m_stage->midi("a.MID"), m_stage->midi("b"), m_stage->tune("c"), unnamed});
    QCOMPARE(m_stage->rows().size(), 4);
    QCOMPARE(m_stage->titles().mid(2).join(QLatin1Char(' ')), text("c By-content"));
}

void tst_MainWindowOpening::copiedTextBecomesATrack()
{
    m_stage->paste(abc("Copied", "K:C\nCDE|"));
    QCOMPARE(titles(), text("Copied"));
    QCOMPARE(m_stage->row("T1")->track().noteCount(), 3);
    QCOMPARE(m_stage->row("T1")->track().fileName(), QString());
}

void tst_MainWindowOpening::copiedTextThatIsNoTuneHasItsBox()
{
    m_stage->answers().press("OK");
    m_stage->paste("X:1\nK:C\nC [D$] E\n");
    QCOMPARE(seen(),
             QStringList{
                 text(AbcBox).arg(text("Unexpected token found in chord at line 3, column 5."))});
    QVERIFY(m_stage->rows().isEmpty());
}

void tst_MainWindowOpening::anEmptyClipboardHasItsBox()
{
    QApplication::clipboard()->setMimeData(new QMimeData);
    m_stage->answers().press("OK");
    m_stage->trigger("actionImport_from_Clipboard");
    QCOMPARE(seen(),
             QStringList{text("information [Import from clipboard] The clipboard does not contain "
                              "anything to import. (OK)")});
}

void tst_MainWindowOpening::copiedFilesAreOpened()
{
    const QString upper = m_stage->made("B.ABC", abc("Upper", "K:C\nC"));
    copy({m_stage->tune("First"), m_stage->made("other.txt", abc("No", "K:C\nC")),
          text("https://a.example/a.abc"), m_stage->midi("song.MID"), upper});
    m_stage->trigger("actionImport_from_Clipboard");
    QCOMPARE(m_stage->ids().size(), 3);
    QCOMPARE(m_stage->titles().first(), text("First"));
    QCOMPARE(m_stage->titles().last(), text("Upper"));
}

void tst_MainWindowOpening::copiedFilesAskWhetherToKeepTracks_data()
{
    addAnswerRows();
}

void tst_MainWindowOpening::copiedFilesAskWhetherToKeepTracks()
{
    QFETCH(QString, answer);
    m_stage->window().openFiles({m_stage->tune("There")});
    copy({m_stage->tune("New")});
    m_stage->answers().press(answer.toUtf8().constData());
    m_stage->trigger("actionImport_from_Clipboard");
    QCOMPARE(seen(), QStringList{question("Import from clipboard")});
    QTEST(titles(), "expected");
}

void tst_MainWindowOpening::copiedTextKeepsTracksWithoutAsking()
{
    m_stage->pasteTunes(2);
    QCOMPARE(titles(), text("1 2"));
    QVERIFY(seen().isEmpty());
}

void tst_MainWindowOpening::dragsOfSuitableFilesAreAccepted_data()
{
    QTest::addColumn<QString>("urls");
    QTest::addColumn<bool>("isAccepted");
    QTest::newRow("ABC and MIDI") << text("file:///a.abc file:///b.mid") << true;
    QTest::newRow("upper case") << text("file:///a.ABC file:///b.MID") << true;
    QTest::newRow("encoded") << text("file:///a%2Eabc") << true;
    QTest::newRow("ABC and text") << text("file:///a.abc file:///b.txt") << false;
    QTest::newRow("not local") << text("https://a.example/a.abc") << false;
    QTest::newRow("nothing") << QString() << false;
}

void tst_MainWindowOpening::dragsOfSuitableFilesAreAccepted()
{
    QFETCH(QString, urls);
    QList<QUrl> list;
    for (const QString &url : urls.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        list.append(QUrl(url));
    QTEST(isAccepted(m_stage->window(), list), "isAccepted");
}

void tst_MainWindowOpening::droppedFilesAreOpened()
{
    m_stage->drop({m_stage->tune("First"), m_stage->made("other.txt", "X:1\nK:C\nC\n"),
                   m_stage->midi("song.mid"), m_stage->tune("Last")});
    QCOMPARE(m_stage->titles().size(), 3);
    QCOMPARE(m_stage->titles().first(), text("First"));
    QCOMPARE(m_stage->titles().last(), text("Last"));
    QVERIFY(seen().isEmpty());
}

void tst_MainWindowOpening::aDropAsksWhetherToKeepTracks_data()
{
    addAnswerRows();
}

void tst_MainWindowOpening::aDropAsksWhetherToKeepTracks()
{
    QFETCH(QString, answer);
    m_stage->window().openFiles({m_stage->tune("There")});
    m_stage->answers().press(answer.toUtf8().constData());
    m_stage->drop({m_stage->tune("New")});
    QCOMPARE(seen(), QStringList{question("Import Files")});
    QTEST(titles(), "expected");
}

/// Both may have waited for a busy window. The dialog belongs to a row that the answer removes.
void tst_MainWindowOpening::aDropWaitsForTheDialogInFront()
{
    m_stage->paste(abc("There", "K:C\nC"));
    dropUnopened(m_stage->window(), m_stage->tune("New"));
    m_stage->answers().choose(m_stage->path("saved.abc")).press("Yes");
    m_stage->trigger("actionSave_All");
    QTRY_VERIFY(m_stage->answers().isDone());
    QVERIFY(seen().first().startsWith(text("chooser [Save track 'There' as..]")));
    QCOMPARE(seen().last(), question("Import Files"));
    QVERIFY(QFile::exists(m_stage->path("saved.abc")));
    QTRY_COMPARE(titles(), text("New"));
}

void tst_MainWindowOpening::aDropWaitsForTheMenuOfARow()
{
    m_stage->paste(abc("There", "K:C\nC"));
    dropUnopened(m_stage->window(), m_stage->tune("New"));
    QTimer::singleShot(100, [] { QApplication::activePopupWidget()->close(); });
    m_stage->answers().press("Yes");
    auto *const button = m_stage->control<QWidget>("T1", "btnEdit");
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(3, 3), button->mapToGlobal({3, 3}));
    QApplication::sendEvent(button, &event);
    QVERIFY(seen().isEmpty());
    QTRY_VERIFY(m_stage->answers().isDone());
    QTRY_COMPARE(titles(), text("New"));
}

void tst_MainWindowOpening::aDropOfOtherThingsAsksNothing()
{
    m_stage->paste(abc("There", "K:C\nC"));
    QMimeData data;
    data.setText(text("X:1\nK:C\nC\n"));
    QDropEvent event(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    event.ignore();
    m_stage->drop(event);
    QVERIFY(!event.isAccepted());
    QVERIFY(seen().isEmpty());
    QCOMPARE(titles(), text("There"));
}

/// Whoever offers the files to be moved must not be told that they were.
void tst_MainWindowOpening::aDropIsACopy()
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(m_stage->tune("Moved"))});
    QDropEvent event(QPointF(20, 20), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                     Qt::NoModifier);
    event.setDropAction(Qt::MoveAction);
    m_stage->drop(event);
    QVERIFY(event.isAccepted());
    QCOMPARE(event.dropAction(), Qt::CopyAction);
    QCOMPARE(titles(), text("Moved"));
}

void tst_MainWindowOpening::aDroppedNameMayBeAnyBytes()
{
    m_stage->made("\xFF 100%.abc", "X:1\nT:Odd\nK:C\nC\n");
    QMimeData data;
    data.setUrls(
        {QUrl::fromEncoded("file://" + QFile::encodeName(m_stage->dir()) + "/%FF%20100%25.abc")});
    QDropEvent event(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    m_stage->drop(event);
    QCOMPARE(titles(), text("Odd"));
}

MAIN_WINDOW_TEST_MAIN(tst_MainWindowOpening)
#include "tst_MainWindowOpening.moc"
