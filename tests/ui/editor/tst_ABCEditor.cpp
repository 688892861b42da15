#include "EditorStage.h"
#include "model/Settings.h"
#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"
#include "support/WidgetDriver.h"
#include "ui/editor/ABCCodeEditor.h"
#include "ui/editor/FindReplaceDialog.h"
#include "ui/pianoroll/PianoRollView.h"

#include <QDockWidget>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QScreen>
#include <QSignalSpy>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

#include <algorithm>

using namespace WidgetDriver;

namespace {

QStringList actionTexts(const QList<QAction *> &actions)
{
    QStringList result;
    for (const QAction *const action : actions)
        result << (action->isSeparator() ? QStringLiteral("|") : shown(action->text()));
    return result;
}

/// The form's, in its order; others have no name, or one that begins with "qt_".
QList<QAction *> formActions(const EditorStage &stage)
{
    QList<QAction *> actions;
    for (QAction *const action :
         stage.editor->findChildren<QAction *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (action->objectName().startsWith(QLatin1String("action")))
            actions << action;
    }
    return actions;
}

QStringList ownMethods(QMetaMethod::MethodType type)
{
    QStringList names;
    const QMetaObject &meta = ABCEditor::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == type)
            names << QString::fromUtf8(meta.method(i).methodSignature());
    }
    return names;
}

} // namespace

class TestABCEditor : public QObject {
    Q_OBJECT

private:
    SettingsSandbox m_sandbox;

private slots:
    void init() { Settings::instance().setValue(Settings::PianoRollVisible, false); }

    void signalsAndSlotsAreInOrder()
    {
        QCOMPARE(ownMethods(QMetaMethod::Signal),
                 texts({"trackPlay()", "trackStop()", "trackChanged()"}));
        QCOMPARE(ownMethods(QMetaMethod::Slot),
                 texts({"onSave()", "onSaveAs()", "onApply()", "onTranspose()", "onChangeKey()",
                        "onChangeUnitLength()", "onRealignNotes()", "onQuickRealign()",
                        "onCursorChanged()", "onContentChanged()", "onPianoRollVisible(bool)",
                        "onPlayPressed()", "onFindReplace()", "onTrackPlaying(bool)",
                        "onTrackPositionChanged(qulonglong)", "onNotePressed(int)",
                        "onNoteReleased(int)"}));
    }

    void actionsHaveTextShortcutAndTips_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shortcut");
        QTest::addColumn<QString>("statusTip");
        int index = 0;
        const auto row = [&index](const char *text, const char *shortcut = "",
                                  const char *tip = "") {
            QTest::newRow(text) << index++ << QString::fromUtf8(text) << QString::fromUtf8(shortcut)
                                << QString::fromUtf8(tip);
        };
        row("Save", "Ctrl+S", "Save the ABC file to disk.");
        row("Undo", "Ctrl+Z");
        row("Redo", "Ctrl+Y");
        row("Cut", "Ctrl+X");
        row("Copy", "Ctrl+C");
        row("Paste", "Ctrl+V");
        row("Select All", "Ctrl+A");
        row("Save As...", "Ctrl+Shift+S", "Save the ABC file under a different name.");
        row("Apply Track Changes", "F6", "Apply changes without saving to disk.");
        row("Transpose");
        row("Change Key");
        row("Change Unit Length");
        row("Realign Notes");
        row("Play", "F5");
        row("Stop", "F8");
        row("Auto-Scroll Piano Roll");
        row("Find / Replace", "Ctrl+F");
        row("Quick Realign");
    }
    void actionsHaveTextShortcutAndTips()
    {
        QFETCH(const int, index);
        const EditorStage stage;
        const QList<QAction *> actions = formActions(stage);
        QCOMPARE(actions.size(), 18);
        QTEST(actions.at(index)->text(), "text");
        QTEST(actions.at(index)->shortcut().toString(), "shortcut");
        QTEST(actions.at(index)->statusTip(), "statusTip");
        QCOMPARE(actions.at(index)->isCheckable(), index == 15);
        QVERIFY(!actions.at(index)->isChecked());
    }

    void playHasItsToolTip()
    {
        QCOMPARE(EditorStage().action("actionPlay")->toolTip(), QStringLiteral("Play"));
    }

    void menusAndToolBarsHoldTheActions()
    {
        const EditorStage stage;
        QCOMPARE(actionTexts(stage.editor->menuBar()->actions()),
                 texts({"File", "Edit", "Transform", "Piano Roll"}));
        const auto entries = [&stage](int menu) {
            return actionTexts(stage.editor->menuBar()->actions().at(menu)->menu()->actions());
        };
        QCOMPARE(entries(0), texts({"Save", "Save As...", "|", "Apply Track Changes"}));
        QCOMPARE(entries(1),
                 texts({"Undo", "Redo", "|", "Cut", "Copy", "Paste", "|", "Select All", "|",
                        "Find / Replace"}));
        QCOMPARE(entries(2),
                 texts({"Transpose", "|", "Realign Notes", "Quick Realign", "|",
                        "Change Unit Length", "Change Key"}));
        QCOMPARE(entries(3), texts({"Piano Roll", "Auto-Scroll Piano Roll"}));
        const auto bars = stage.editor->findChildren<QToolBar *>();
        QCOMPARE(bars.size(), 2);
        QCOMPARE(bars.at(0)->windowTitle(), QStringLiteral("Main Toolbar"));
        QCOMPARE(bars.at(1)->windowTitle(), QStringLiteral("Playback Toolbar"));
        QCOMPARE(actionTexts(bars.at(1)->actions()),
                 texts({"Play", "Stop", "|", "Auto-Scroll Piano Roll"}));
    }

    void noMnemonicIsGivenTwice()
    {
        const EditorStage stage;
        QStringList mnemonics;
        for (const QAction *menu : stage.editor->menuBar()->actions())
            mnemonics << QKeySequence::mnemonic(menu->text()).toString();
        QCOMPARE(mnemonics, texts({"Alt+F", "Alt+E", "Alt+T", "Alt+P"}));
    }

    void buttonsAndTextAreReadOut()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        for (QToolBar *bar : stage.editor->findChildren<QToolBar *>()) {
            for (QAction *action : bar->actions()) {
                if (!action->isSeparator())
                    QVERIFY(!readOut(bar->widgetForAction(action)).isEmpty());
            }
        }
        QCOMPARE(readOut(&stage.text()), QStringLiteral("ABC text"));
    }

    void theWindowIsOneOfItsOwn()
    {
        EditorStage stage;
        QVERIFY(stage.editor->isWindow());
        QVERIFY(stage.show());
        stage.editor->close();
        QTRY_VERIFY(stage.editor.isNull());
    }

    void theWindowFitsOnTheScreen()
    {
        const EditorStage stage;
        const QRect screen = stage.editor->screen()->availableGeometry();
        const QSize frame(0, stage.editor->style()->pixelMetric(QStyle::PM_TitleBarHeight));
        QCOMPARE(stage.editor->size(), QSize(900, 650).boundedTo(screen.size() - frame));
    }

    void theDockIsBelowAndNamed()
    {
        const EditorStage stage;
        QCOMPARE(stage.dock()->windowTitle(), QStringLiteral("Piano Roll"));
        QCOMPARE(stage.editor->dockWidgetArea(stage.dock()), Qt::BottomDockWidgetArea);
        QVERIFY(qobject_cast<PianoRollView *>(stage.dock()->widget()) != nullptr);
        QVERIFY(!stage.dock()->windowIcon().isNull());
    }

    void theTitleNamesTheFile_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("title");
        QTest::newRow("none") << QString()
                              << QStringLiteral("ABC Editor (untitled.abc) - Quillmoor Composer");
        QTest::newRow("a path") << QStringLiteral("/songs/José.abc")
                                << QStringLiteral("ABC Editor (José.abc) - Quillmoor Composer");
        QTest::newRow("a per cent sign")
            << QStringLiteral("100%1.abc")
            << QStringLiteral("ABC Editor (100%1.abc) - Quillmoor Composer");
        QTest::newRow("the mark for changes, which is doubled to be shown")
            << QStringLiteral("a[*].abc")
            << QStringLiteral("ABC Editor (a[*][*].abc) - Quillmoor Composer");
    }
    void theTitleNamesTheFile()
    {
        QFETCH(const QString, fileName);
        const EditorStage stage(EditorStage::shortTune(), fileName);
        QTEST(stage.editor->windowTitle(), "title");
    }

    void theTextIsShownUnmodified()
    {
        EditorStage stage;
        QCOMPARE(stage.shownText(), EditorStage::shortTune());
        QVERIFY(!stage.isModified());
        QVERIFY(!stage.action("actionApply")->isEnabled());
    }

    void everyLineEndOfTheTextMakesALine()
    {
        Track track = EditorStage::trackOf(EditorStage::shortTune());
        track.setAbc(QStringLiteral("X:1\u2028K:C\u2029C\r\nD"));
        const EditorStage stage(track);
        QCOMPARE(stage.shownText(), QStringLiteral("X:1\nK:C\nC\nD"));
        QCOMPARE(stage.text().blockCount(), 4);
    }

    void aTrackWithoutTextGetsOne()
    {
        Track track;
        track.addEvent(TrackEvent::makeNote(60, 0, 30240));
        track.sortEvents();
        EditorStage stage(track);
        QVERIFY(!stage.track.abc().isEmpty());
        QCOMPARE(stage.shownText(), stage.track.abc());
        QVERIFY(!stage.isModified());
    }

    void theTextIsInAFixedFont()
    {
        const EditorStage stage;
        const QFont font = stage.text().font();
        QCOMPARE(font.family(), QStringLiteral("Courier"));
        QCOMPARE(font.styleHint(), QFont::Monospace);
        QCOMPARE(font.styleStrategy(), QFont::PreferBitmap);
        QVERIFY(font.fixedPitch());
        QCOMPARE(font.pointSize(), 10);
    }

    void theStatusBarHasThreeLabelsAndRoom()
    {
        const EditorStage stage;
        QCOMPARE(stage.labels(), texts({"", "Pos: 1:01:00", "Ln: 1 Col: 1", "Len: 40 Lines: 7"}));
    }

    void labelsShareTheStatusBar()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        QMap<int, QString> places;
        for (const QLabel *label : stage.editor->statusBar()->findChildren<QLabel *>())
            places.insert(label->x(), label->text().left(2));
        QCOMPARE(QStringList(places.values()), texts({"", "Po", "Ln", "Le"}));
        QVERIFY(places.lastKey() > stage.editor->width() * 7 / 12);
    }

    void labelsGrowSixToOneToTwoToTwo()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        stage.editor->resize(4000, 650);
        const auto labels = stage.editor->statusBar()->findChildren<QLabel *>();
        const QLabel *const position =
            *std::find_if(labels.begin(), labels.end(), [](QLabel *label) {
                return label->text().startsWith(QLatin1String("Pos"));
            });
        QTRY_VERIFY(position->x() > 2000);
        QStringList shares;
        for (const QLabel *label : labels)
            shares << label->text().left(3)
                    + QString::number(qRound(double(label->width()) / position->width()));
        shares.sort();
        QCOMPARE(shares, texts({"6", "Len2", "Ln:2", "Pos1"}));
    }

    void keysGoToTheTextAtOnce()
    {
        EditorStage stage;
        QVERIFY(WidgetDriver::show(*stage.editor));
        type(QStringLiteral("%"));
        QVERIFY(stage.shownText().startsWith(QLatin1String("%X:1")));
    }

    void labelsFollowTheKeys()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        press(Qt::Key_Down);
        press(Qt::Key_End);
        QCOMPARE(stage.label("Ln"), QStringLiteral("Ln: 2 Col: 6"));
        type(QStringLiteral("ly"));
        QCOMPARE(stage.label("Ln"), QStringLiteral("Ln: 2 Col: 8"));
        QCOMPARE(stage.label("Len"), QStringLiteral("Len: 42 Lines: 7"));
        press(Qt::Key_Return);
        QCOMPARE(stage.label("Ln"), QStringLiteral("Ln: 3 Col: 1"));
        QCOMPARE(stage.label("Len"), QStringLiteral("Len: 43 Lines: 8"));
        press(Qt::Key_A, Qt::ControlModifier);
        press(Qt::Key_Delete);
        QCOMPARE(stage.label("Ln"), QStringLiteral("Ln: 1 Col: 1"));
        QCOMPARE(stage.label("Len"), QStringLiteral("Len: 1 Lines: 1"));
    }

    void aColumnIsCountedFromTheLinesStart()
    {
        EditorStage stage(QStringLiteral("X:1\nK:C\n") + QStringLiteral("C ").repeated(2000));
        QVERIFY(stage.show());
        press(Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(stage.label("Ln"), QStringLiteral("Ln: 3 Col: 4001"));
    }

    void keysUndoAndRedo()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        QVERIFY(!stage.action("actionRedo")->isEnabled());
        press(Qt::Key_End, Qt::ControlModifier);
        type(QStringLiteral("D"));
        press(Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(stage.shownText(), EditorStage::shortTune());
        QVERIFY(!stage.isModified());
        QVERIFY(stage.action("actionRedo")->isEnabled());
        stage.trigger("actionRedo");
        QCOMPARE(stage.shownText(), EditorStage::shortTune() + QLatin1Char('D'));
        QVERIFY(stage.isModified());
        stage.trigger("actionUndo");
        QCOMPARE(stage.shownText(), EditorStage::shortTune());
    }

    void whatIsTypedBehindALineIsNotUndoneWithTheLine()
    {
        EditorStage stage(QStringLiteral("X:1"));
        QVERIFY(stage.show());
        press(Qt::Key_End, Qt::ControlModifier);
        type(QStringLiteral("2"));
        QCOMPARE(stage.shownText(), QStringLiteral("X:12"));
        press(Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(stage.shownText(), QStringLiteral("X:1"));
    }

    void theLoadIsOneStep()
    {
        EditorStage stage;
        QVERIFY(stage.action("actionUndo")->isEnabled());
        stage.trigger("actionUndo");
        QCOMPARE(stage.shownText(), QString());
        QVERIFY(!stage.action("actionUndo")->isEnabled());
        stage.trigger("actionRedo");
        QCOMPARE(stage.shownText(), EditorStage::shortTune());
        QVERIFY(!stage.isModified());
    }

    void cutAndCopyNeedASelection()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        QVERIFY(!stage.action("actionCut")->isEnabled());
        QVERIFY(!stage.action("actionCopy")->isEnabled());
        press(Qt::Key_A, Qt::ControlModifier);
        QVERIFY(stage.action("actionCut")->isEnabled());
        QVERIFY(stage.action("actionCopy")->isEnabled());
        stage.trigger("actionCut");
        QCOMPARE(stage.shownText(), QString());
        QVERIFY(!stage.action("actionCut")->isEnabled());
        stage.trigger("actionPaste");
        QCOMPARE(stage.shownText(), EditorStage::shortTune());
        stage.trigger("actionSelectAll");
        stage.trigger("actionCopy");
        stage.trigger("actionPaste");
        QCOMPARE(stage.shownText(), EditorStage::shortTune());
    }

    void keysPlayAndStop()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        QSignalSpy played(stage.editor, &ABCEditor::trackPlay);
        QSignalSpy stopped(stage.editor, &ABCEditor::trackStop);
        press(Qt::Key_F5);
        QCOMPARE(played.size(), 1);
        press(Qt::Key_F8);
        QCOMPARE(stopped.size(), 1);
        for (QToolBar *bar : stage.editor->findChildren<QToolBar *>())
            bar->hide();
        press(Qt::Key_F5);
        press(Qt::Key_F8);
        QCOMPARE(played.size(), 2);
        QCOMPARE(stopped.size(), 2);
    }

    void buttonsPlayAndStop()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        QSignalSpy played(stage.editor, &ABCEditor::trackPlay);
        QSignalSpy stopped(stage.editor, &ABCEditor::trackStop);
        auto *const bar = stage.editor->findChild<QToolBar *>(QStringLiteral("tbPlayback"));
        click(bar->widgetForAction(stage.action("actionPlay")));
        click(bar->widgetForAction(stage.action("actionStop")));
        QCOMPARE(played.size(), 1);
        QCOMPARE(stopped.size(), 1);
    }

    void findIsOneDialogThatLetsGoOn()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        press(Qt::Key_F, Qt::ControlModifier);
        auto *const dialog = stage.editor->findChild<FindReplaceDialog *>();
        QVERIFY(dialog->isVisible());
        QVERIFY(!dialog->isModal());
        dialog->close();
        stage.editor->onFindReplace();
        QCOMPARE(stage.editor->findChildren<FindReplaceDialog *>(),
                 QList<FindReplaceDialog *>{dialog});
        QVERIFY(dialog->isVisible());
        stage.editor->onFindReplace();
        QCOMPARE(stage.editor->findChildren<FindReplaceDialog *>().size(), 1);
    }

    void theFindDialogComesBackToTheFront()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        stage.editor->onFindReplace();
        auto *const dialog = stage.editor->findChild<FindReplaceDialog *>();
        QTRY_VERIFY(dialog->isActiveWindow());
        stage.editor->activateWindow();
        QTRY_VERIFY(stage.editor->isActiveWindow());
        press(Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(dialog->isActiveWindow());
    }

    void aFindDialogThatIsGoneIsMadeAnew()
    {
        EditorStage stage;
        stage.editor->onFindReplace();
        delete stage.editor->findChild<FindReplaceDialog *>();
        stage.editor->onFindReplace();
        QVERIFY(stage.editor->findChild<FindReplaceDialog *>()->isVisible());
    }

    void theFindDialogGoesWithAnEditorThatIsDeleted()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        stage.editor->onFindReplace();
        const QPointer<QDialog> dialog = stage.editor->findChild<FindReplaceDialog *>();
        QVERIFY(dialog->isVisible());
        stage.replaceText(QStringLiteral("X:1"));
        delete stage.editor;
        QVERIFY(dialog.isNull());
    }

    void theStatusTipIsShownAtTheMenusEntry()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        press(Qt::Key_F, Qt::AltModifier);
        QCOMPARE(stage.editor->statusBar()->currentMessage(),
                 QStringLiteral("Save the ABC file to disk."));
        QApplication::activePopupWidget()->close();
    }
};

QTEST_MAIN(TestABCEditor)
#include "tst_ABCEditor.moc"
