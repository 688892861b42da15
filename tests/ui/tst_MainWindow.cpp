#include "MainWindowStage.h"

#include "icons/Icons.h"
#include "model/Settings.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QLabel>
#include <QMenuBar>
#include <QMetaMethod>
#include <QScrollArea>
#include <QSignalSpy>
#include <QStatusBar>
#include <QToolBar>

/// The window as it is drawn and wired; what its flows do is tested in the files beside this one.
class tst_MainWindow : public QObject {
    Q_OBJECT

private slots:
    void init() { m_stage = std::make_unique<MainWindowStage>(); }
    void cleanup() { m_stage.reset(); }

    void theWindowIsAsDrawn();
    void theTrackListIsAsDrawn();
    void slotsAreInOrder();
    void actionsHaveTextTipShortcutAndIcon_data();
    void actionsHaveTextTipShortcutAndIcon();
    void menusAreInOrder_data();
    void menusAreInOrder();
    void toolBarsAreInOrder_data();
    void toolBarsAreInOrder();
    void shortcutsAreUnique();
    void theDefaultInstrumentIsInItsToolBar();

    void anEmptyWindowSaysHowToBegin();
    void theHintCoversTheList();

    void theStoredInstrumentIsTheDefault_data();
    void theStoredInstrumentIsTheDefault();
    void startingStoresNothing();
    void aChosenInstrumentIsStored();
    void modsAreLoadedWhenWanted();
    void instrumentsThatCannotBeReadAreThrown();

private:
    template <typename Widget> Widget *find(const char *name) const
    {
        return m_stage->window().findChild<Widget *>(text(name));
    }

    std::unique_ptr<MainWindowStage> m_stage;
};

namespace {

QString described(const QList<QAction *> &actions)
{
    QStringList result;
    for (const QAction *const action : actions)
        result.append(action->isSeparator() ? text("|") : action->text());
    return result.join(QLatin1Char(','));
}

} // namespace

void tst_MainWindow::theWindowIsAsDrawn()
{
    const MainWindow &window = m_stage->window();
    QCOMPARE(window.windowTitle(), text("Quillmoor Composer"));
    QCOMPARE(window.size(), QSize(710, 470));
    QVERIFY(window.acceptDrops());
    QVERIFY(window.testAttribute(Qt::WA_QuitOnClose));
    QCOMPARE(window.centralWidget()->objectName(), text("centralWidget"));
    const QLayout *const layout = window.centralWidget()->layout();
    QCOMPARE(layout->objectName(), text("verticalLayout_2"));
    QCOMPARE(layout->spacing(), 6);
    QCOMPARE(layout->contentsMargins(), QMargins(11, 11, 11, 11));
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->widget()->objectName(), text("scrTrackArea"));
}

void tst_MainWindow::theTrackListIsAsDrawn()
{
    const auto *const area = find<QScrollArea>("scrTrackArea");
    QVERIFY(area->widgetResizable());
    QCOMPARE(area->widget()->objectName(), text("scrollAreaWidgetContents"));
    QCOMPARE(area->widget()->styleSheet(),
             text("QWidget#scrollAreaWidgetContents\n{\n\t\tbackground: qlineargradient(x1: 0, y1: "
                  "0, x2: 0, y2: 1,\n                                  stop: 0 #666666, stop: 1.0 "
                  "#555555);\n}"));
    const auto *const layout = qobject_cast<QVBoxLayout *>(area->widget()->layout());
    QCOMPARE(layout->objectName(), text("verticalLayout"));
    QCOMPARE(layout->spacing(), 1);
    QCOMPARE(layout->contentsMargins(), QMargins(1, 1, 1, 1));
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->spacerItem()->sizeHint(), QSize(20, 40));
    QCOMPARE(layout->itemAt(0)->expandingDirections(), Qt::Vertical);
}

void tst_MainWindow::slotsAreInOrder()
{
    QStringList slotNames;
    const QMetaObject &meta = MainWindow::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        slotNames.append(QString::fromLatin1(meta.method(i).methodSignature()));
    QCOMPARE(slotNames,
             text("onLoadABC() onPlay() onStopAll() onImportMidi() onImportClipboard() "
                  "onExportWav() onSaveSelected() onSaveAll() onNewTrack() onMergeTracks() "
                  "onDuplicateTracks() onRemoveSelectedTracks() onMuteSelected() onSelectAll() "
                  "onDeselectAll() onInvertSelection() onClearTracks() onPreferences() "
                  "onGoToForum() onGoToTracker() onAbout() onDefaultInstrumentChanged(QString) "
                  "onApplyInstrument() onTrackStarted(QString) onTrackStopped(QString) "
                  "onAllTracksStopped() onTrackPositionChanged(QString,qulonglong) "
                  "onNotePressed(QString,uint) onNoteReleased(QString,uint) onTrackMuteChanged() "
                  "onTrackSolo() onTrackInstrumentChanged() onTrackVolumeChanged() "
                  "onTrackPanChanged() onTrackRemoved() onTrackChanged() onTrackSeek(qulonglong) "
                  "onMoveTrackUp() onMoveTrackDown() onTrackSelectionChanged() onRenderStarted() "
                  "onRenderProgress(qulonglong,qulonglong) onRenderFinished() "
                  "onUpdateAvailable(bool,QString,QString) onUpdateFailed(QString) "
                  "onCheckUpdates() onDonate()")
                 .split(QLatin1Char(' ')));
}

void tst_MainWindow::actionsHaveTextTipShortcutAndIcon_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("tip");
    QTest::addColumn<QString>("shortcut");
    QTest::addColumn<QString>("icon");
    const auto row = [](const char *name, const char *label, const char *tip, const char *shortcut,
                        const char *icon) {
        QTest::newRow(name) << text(label) << text(tip) << text(shortcut) << text(icon);
    };
    row("actionOpen", "Open", "Open ABC file", "Ctrl+O", "open");
    row("actionExit", "Exit", "Exit Quillmoor Composer", "Alt+F4", "exit");
    row("actionExport_to_Wav", "Export to Wav", "Export all (non-muted) tracks to a wave file",
        "Ctrl+Shift+W", "sound");
    row("actionImport_MIDI", "Import MIDI", "Import MIDI file into the editor", "Ctrl+Shift+M",
        "midiimport");
    row("actionPlay", "Play", "Preview current tracks.", "F5", "play");
    row("actionStop", "Stop", "Stop preview.", "F8", "stop");
    row("actionAbout_Quillmoor_Composer", "About Quillmoor Composer...", "", "", "about");
    row("actionNew_Track", "New Track", "Create a new track", "Ctrl+N", "newtrack");
    row("actionClear_Tracks", "Remove All Tracks", "Remove all tracks", "Shift+Del", "removetrack");
    row("actionPreferences", "Preferences...", "Show preferences", "", "preferences");
    row("actionApplyInstrument", "Apply Instrument",
        "Apply this instrument to selected tracks or all if none are selected.", "",
        "applyinstrument");
    row("actionMerge_Selected", "Merge Selected", "Merges the selected tracks together", "Ctrl+J",
        "merge");
    row("actionRemove_Selected", "Remove Selected", "Remove the selected tracks", "Del",
        "removeone");
    row("actionImport_from_Clipboard", "Import from Clipboard",
        "Import an ABC track from the clipboard", "Ctrl+V", "clipboard");
    row("actionLyrehall_Forum_Section", "Lyrehall Forum Section", "", "", "forum");
    row("actionLyrehall_Bug_Tracker", "Lyrehall Bug Tracker", "", "", "bug");
    row("actionSelect_All", "Select All", "", "Ctrl+A", "");
    row("actionDeselect_All", "Deselect All", "", "Ctrl+Shift+A", "");
    row("actionInvert_Selection", "Invert Selection", "", "Ctrl+I", "");
    row("actionDuplicate_Selected", "Duplicate Selected", "Duplicate the selected tracks", "Ctrl+D",
        "duplicatetrack");
    row("actionCheck_for_updates", "Check for updates...",
        "Check online for updates for Quillmoor Composer", "", "");
    row("actionSave_Selected", "Save Selected", "Save the selected tracks to disk", "Ctrl+S",
        "save");
    row("actionSave_All", "Save All", "Save all tracks to disk", "Ctrl+Shift+S", "saveall");
    row("actionMute_Selected", "(Un)mute Selected", "(Un)mute the selected tracks", "Ctrl+M",
        "mute");
    row("actionDonate", "Donate", "", "", "donate");
}

void tst_MainWindow::actionsHaveTextTipShortcutAndIcon()
{
    QFETCH(QString, icon);
    const QAction *const tested = m_stage->action(QTest::currentDataTag());
    QTEST(tested->text(), "label");
    QTEST(tested->statusTip(), "tip");
    QTEST(tested->shortcut().toString(), "shortcut");
    QCOMPARE(tested->icon().isNull(), icon.isEmpty());
    const QIcon expected(text(":/icons/%1.png").arg(icon));
    QCOMPARE(tested->icon().pixmap(16).toImage(), expected.pixmap(16).toImage());
}

void tst_MainWindow::menusAreInOrder_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("entries");
    QTest::newRow("menuFile") << text("&File")
                              << text("Open,Save Selected,Save All,|,Import,Export,|,Exit");
    QTest::newRow("menuImport") << text("Import") << text("Import MIDI,Import from Clipboard");
    QTest::newRow("menuExport") << text("Export") << text("Export to Wav");
    QTest::newRow("menuTrack") << text("&Track")
                               << text("New Track,|,Merge Selected,Duplicate Selected,Remove "
                                       "Selected,(Un)mute Selected,|,Select All,Deselect "
                                       "All,Invert Selection,|,Remove All Tracks");
    QTest::newRow("menuTools") << text("T&ools") << text("Preferences...");
    QTest::newRow("menuHelp") << text("&Help")
                              << text("Lyrehall Forum Section,Lyrehall Bug Tracker,Donate,|,Check "
                                      "for updates...,|,About Quillmoor Composer...");
    QTest::newRow("menuBar") << QString() << text("&File,&Track,T&ools,&Help");
}

void tst_MainWindow::menusAreInOrder()
{
    const auto *const menu = find<QWidget>(QTest::currentDataTag());
    QTEST(menu->property("title").toString(), "title");
    QTEST(described(menu->actions()), "entries");
}

void tst_MainWindow::toolBarsAreInOrder_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("entries");
    QTest::newRow("tbTracks") << text("Track Toolbar")
                              << text("Open,Import MIDI,Save Selected,Save All,|,New Track,Remove "
                                      "Selected,|,Merge Selected,Duplicate Selected,(Un)mute "
                                      "Selected,|,Remove All Tracks");
    QTest::newRow("tbPlayback") << text("Playback Controls") << text("Play,Stop");
    QTest::newRow("tbInstrument") << text("Instrument Toolbar") << text(",Apply Instrument");
}

void tst_MainWindow::toolBarsAreInOrder()
{
    auto *const bar = find<QToolBar>(QTest::currentDataTag());
    QTEST(bar->windowTitle(), "title");
    QTEST(described(bar->actions()), "entries");
    QCOMPARE(bar->iconSize(), QSize(16, 16));
    QCOMPARE(bar->toolButtonStyle(), Qt::ToolButtonFollowStyle);
    QCOMPARE(m_stage->window().toolBarArea(bar), Qt::TopToolBarArea);
}

void tst_MainWindow::shortcutsAreUnique()
{
    QStringList shortcuts;
    for (const QAction *const action : m_stage->window().findChildren<QAction *>()) {
        const QString shortcut = action->shortcut().toString();
        QVERIFY2(shortcut.isEmpty() || !shortcuts.contains(shortcut), qPrintable(shortcut));
        shortcuts.append(shortcut);
    }
}

void tst_MainWindow::theDefaultInstrumentIsInItsToolBar()
{
    const auto *const list = find<QComboBox>("instrumentList");
    const auto *const bar = find<QToolBar>("tbInstrument");
    QCOMPARE(bar->widgetForAction(bar->actions().at(0)), static_cast<const QWidget *>(list));
    QVERIFY(list->isVisible());
    QCOMPARE(list->toolTip(),
             text("This is the default instrument that will be assigned to new tracks"));
    QCOMPARE(list->statusTip(), text("Default instrument for new tracks"));
    QCOMPARE(list->count(), 3);
    QCOMPARE(list->itemText(1), text("Flute"));
}

void tst_MainWindow::anEmptyWindowSaysHowToBegin()
{
    const auto *const hint = find<QLabel>("lblHint");
    QVERIFY(hint->isVisible());
    QCOMPARE(hint->text(),
             text("Drop ABC or MIDI files here to begin,\nor choose them from the File menu."));
    QCOMPARE(hint->textFormat(), Qt::PlainText);
    m_stage->window().openFiles({m_stage->tune("Something")});
    QVERIFY(!hint->isVisible());
    m_stage->trigger("actionClear_Tracks");
    QVERIFY(hint->isVisible());
}

void tst_MainWindow::theHintCoversTheList()
{
    const auto *const hint = find<QLabel>("lblHint");
    const auto *const area = find<QScrollArea>("scrTrackArea");
    QCOMPARE(hint->size(), area->viewport()->size());
    m_stage->window().resize(900, 600);
    QTRY_COMPARE(hint->size(), area->viewport()->size());
    QCOMPARE(area->viewport()->childAt(30, 30), area->widget());
}

void tst_MainWindow::theStoredInstrumentIsTheDefault_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("chosen");
    QTest::newRow("the last") << text("Lute") << text("Lute");
    QTest::newRow("other case") << text("lute") << text("Drum");
    QTest::newRow("unknown") << text("Harp") << text("Drum");
    QTest::newRow("none") << QString() << text("Drum");
}

void tst_MainWindow::theStoredInstrumentIsTheDefault()
{
    QFETCH(QString, stored);
    Settings::instance().setValue(Settings::DefaultInstrument, stored);
    m_stage->reopen();
    QTEST(find<QComboBox>("instrumentList")->currentText(), "chosen");
}

void tst_MainWindow::startingStoresNothing()
{
    Settings::instance().setValue(Settings::DefaultInstrument, text("Lute"));
    const QSignalSpy changes(&Settings::instance(), &Settings::settingChanged);
    m_stage->reopen();
    QCOMPARE(changes.size(), 0);
}

void tst_MainWindow::aChosenInstrumentIsStored()
{
    auto *const list = find<QComboBox>("instrumentList");
    QTest::keyClick(list, Qt::Key_Down);
    QCOMPARE(list->currentText(), text("Flute"));
    QCOMPARE(Settings::instance().value(Settings::DefaultInstrument).toString(), text("Flute"));
}

void tst_MainWindow::modsAreLoadedWhenWanted()
{
    QVERIFY(QDir(m_stage->dir()).mkpath(text("mods")));
    QVERIFY(QFile::rename(m_stage->path("user"), m_stage->path("mods/more")));
    m_stage->reopen();
    QCOMPARE(find<QComboBox>("instrumentList")->currentText(), text("None"));
    Settings::instance().setValue(Settings::LoadMods, true);
    m_stage->reopen();
    Settings::instance().setValue(Settings::LoadMods, false);
    QCOMPARE(find<QComboBox>("instrumentList")->count(), 3);
}

void tst_MainWindow::instrumentsThatCannotBeReadAreThrown()
{
    m_stage->made("user/sfx/instruments/lute/tuning.config", "[]");
    QVERIFY_EXCEPTION_THROWN(MainWindow{QDir(m_stage->dir())}, QString);
}

MAIN_WINDOW_TEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
