#include "EditorStage.h"
#include "model/Settings.h"
#include "support/SettingsSandbox.h"
#include "support/WidgetDriver.h"
#include "ui/editor/ABCCodeEditor.h"
#include "ui/pianoroll/PianoRollKey.h"
#include "ui/pianoroll/PianoRollKeyboard.h"
#include "ui/pianoroll/PianoRollScene.h"
#include "ui/pianoroll/PianoRollView.h"

#include <QAction>
#include <QDockWidget>
#include <QMenuBar>
#include <QScrollBar>
#include <QToolButton>
#include <QtTest>

using namespace WidgetDriver;

namespace {

const QColor pressedWhite(128, 128, 128);

bool isStoredVisible()
{
    return Settings::instance().value(Settings::PianoRollVisible).toBool();
}

void storeVisible(bool visible)
{
    Settings::instance().setValue(Settings::PianoRollVisible, visible);
}

PianoRollView &view(const EditorStage &stage)
{
    return *stage.editor->findChild<PianoRollView *>();
}

int shownNotes(const EditorStage &stage)
{
    return stage.editor->findChild<PianoRollScene *>()->items().size();
}

QImage grid(const EditorStage &stage)
{
    return view(stage).viewport()->grab().toImage();
}

/// "60 64": the keys that are seen pressed, by their tool tips' pitches.
QStringList pressedKeys(const EditorStage &stage)
{
    QStringList names;
    for (const QGraphicsItem *item : view(stage).keyboard()->scene()->items()) {
        const auto *key = dynamic_cast<const QGraphicsRectItem *>(item);
        if (key != nullptr && key->brush().color() == pressedWhite)
            names << key->toolTip();
    }
    names.sort();
    return names;
}

int eventOf(const Track &track, quint32 pitch)
{
    for (int i = 0; i < track.eventCount(); ++i) {
        if (track.event(i).note() == pitch)
            return i;
    }
    return -1;
}

} // namespace

class TestABCEditorPlaying : public QObject {
    Q_OBJECT

private:
    SettingsSandbox m_sandbox;

private slots:
    void init() { storeVisible(false); }

    void theDockIsAsItWasLeft_data()
    {
        QTest::addColumn<bool>("visible");
        QTest::newRow("shown") << true;
        QTest::newRow("hidden") << false;
    }
    void theDockIsAsItWasLeft()
    {
        QFETCH(const bool, visible);
        storeVisible(visible);
        EditorStage stage;
        QVERIFY(stage.show());
        QCOMPARE(stage.dock()->isVisible(), visible);
        QCOMPARE(stage.dock()->toggleViewAction()->isChecked(), visible);
        QCOMPARE(isStoredVisible(), visible);
        QVERIFY(stage.editor->close());
        QTRY_VERIFY(stage.editor.isNull());
        QCOMPARE(isStoredVisible(), visible);
    }

    void theMenuShowsAndHidesTheDock()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        stage.dock()->toggleViewAction()->trigger();
        QVERIFY(stage.dock()->isVisible());
        QVERIFY(isStoredVisible());
        stage.dock()->toggleViewAction()->trigger();
        QVERIFY(!stage.dock()->isVisible());
        QVERIFY(!isStoredVisible());
    }

    void theDocksOwnButtonHidesIt()
    {
        storeVisible(true);
        EditorStage stage;
        QVERIFY(stage.show());
        click(stage.dock()->findChild<QAbstractButton *>(
            QStringLiteral("qt_dockwidget_closebutton")));
        QVERIFY(!stage.dock()->isVisible());
        QVERIFY(!isStoredVisible());
    }

    void theDockHasRoom()
    {
        storeVisible(true);
        EditorStage stage;
        QVERIFY(stage.show());
        QVERIFY(stage.dock()->height() > 150);
        QVERIFY(stage.text().height() > 150);
    }

    void whatHidesTheWindowDoesNotHideTheDock()
    {
        storeVisible(true);
        EditorStage stage;
        QVERIFY(stage.show());
        stage.editor->hide();
        QVERIFY(isStoredVisible());
        stage.editor->show();
        QVERIFY(stage.dock()->isVisible());
        stage.editor->showMinimized();
        QTest::qWait(0);
        QVERIFY(isStoredVisible());
        delete stage.editor;
        QVERIFY(isStoredVisible());
    }

    void theRollIsLoadedWhenItIsFirstSeen()
    {
        EditorStage stage(EditorStage::longTune(8));
        QVERIFY(stage.show());
        QCOMPARE(shownNotes(stage), 0);
        stage.dock()->show();
        QCOMPARE(shownNotes(stage), 8);
    }

    void theRollFollowsWhatIsApplied()
    {
        storeVisible(true);
        EditorStage stage(EditorStage::longTune(8));
        QVERIFY(stage.show());
        stage.replaceText(EditorStage::longTune(12));
        QCOMPARE(shownNotes(stage), 8);
        QVERIFY(stage.editor->onApply());
        QCOMPARE(shownNotes(stage), 12);
        stage.track = EditorStage::trackOf(EditorStage::longTune(4));
        stage.editor->reloadTrack();
        QCOMPARE(shownNotes(stage), 4);
    }

    void aRollThatWasNotSeenIsLoadedWithTheLastTrack()
    {
        EditorStage stage(EditorStage::longTune(8));
        QVERIFY(stage.show());
        stage.replaceText(EditorStage::longTune(12));
        QVERIFY(stage.editor->onApply());
        QCOMPARE(shownNotes(stage), 0);
        stage.dock()->show();
        QCOMPARE(shownNotes(stage), 12);
    }

    void thePositionIsShown()
    {
        EditorStage stage;
        stage.editor->onTrackPlaying(true);
        stage.editor->onTrackPositionChanged(45360);
        QCOMPARE(stage.label("Pos"), QStringLiteral("Pos: 1:02:50"));
        stage.editor->onTrackPositionChanged(287280);
        QCOMPARE(stage.label("Pos"), QStringLiteral("Pos: 3:02:50"));
        stage.editor->onTrackPlaying(true);
        QCOMPARE(stage.label("Pos"), QStringLiteral("Pos: 3:02:50"));
        stage.editor->onTrackPlaying(false);
        QCOMPARE(stage.label("Pos"), QStringLiteral("Pos: 1:01:00"));
    }

    void absurdPositionsAndMeasuresAreHarmless_data()
    {
        QTest::addColumn<QString>("meter");
        QTest::newRow("no length") << "0/4";
        QTest::newRow("nothing") << "0/0";
        QTest::newRow("a divisor of 0") << "4/0";
        QTest::newRow("beats of less than a tick") << "200000/200000";
    }
    void absurdPositionsAndMeasuresAreHarmless()
    {
        QFETCH(const QString, meter);
        storeVisible(true);
        EditorStage stage(QStringLiteral("X:1\nM:%1\nL:1/4\nK:C\nC").arg(meter));
        QVERIFY(stage.show());
        stage.trigger("actionAutoScroll");
        stage.editor->onTrackPlaying(true);
        for (const quint64 position : {quint64(0), quint64(45360), ~quint64(0)})
            stage.editor->onTrackPositionChanged(position);
        QVERIFY(stage.label("Pos").startsWith(QLatin1String("Pos: ")));
        stage.editor->onTrackPlaying(false);
        QCOMPARE(stage.label("Pos"), QStringLiteral("Pos: 1:01:00"));
    }

    void autoScrollFollowsThePosition_data()
    {
        QTest::addColumn<bool>("follows");
        QTest::newRow("on") << true;
        QTest::newRow("off") << false;
    }
    void autoScrollFollowsThePosition()
    {
        QFETCH(const bool, follows);
        storeVisible(true);
        EditorStage stage(EditorStage::longTune(400));
        QVERIFY(stage.show());
        if (follows)
            stage.trigger("actionAutoScroll");
        const QScrollBar *const bar = view(stage).horizontalScrollBar();
        const int before = bar->value();
        stage.editor->onTrackPlaying(true);
        stage.editor->onTrackPositionChanged(100 * 120960);
        QCOMPARE(bar->value() != before, follows);
    }

    void soundingNotesPressTheirKeys()
    {
        storeVisible(true);
        EditorStage stage(QStringLiteral("X:1\nL:1/4\nK:C\n[CE]"));
        QVERIFY(stage.show());
        stage.editor->onTrackPlaying(true);
        stage.editor->onNotePressed(eventOf(stage.track, 60));
        stage.editor->onNotePressed(eventOf(stage.track, 64));
        QCOMPARE(pressedKeys(stage), texts({"C5", "E5"}));
        stage.editor->onNoteReleased(eventOf(stage.track, 60));
        QCOMPARE(pressedKeys(stage), texts({"E5"}));
        stage.editor->onTrackPlaying(false);
        QCOMPARE(pressedKeys(stage), QStringList());
    }

    void soundingNotesAreHighlightedUntilTheEnd()
    {
        storeVisible(true);
        EditorStage stage;
        QVERIFY(stage.show());
        const QImage before = grid(stage);
        stage.editor->onNotePressed(eventOf(stage.track, 60));
        QVERIFY(grid(stage) != before);
        stage.editor->onNoteReleased(eventOf(stage.track, 60));
        QVERIFY(grid(stage) == before);
        stage.editor->onNotePressed(eventOf(stage.track, 60));
        stage.editor->onTrackPlaying(false);
        QVERIFY(grid(stage) == before);
    }

    void eventsThatAreNotThereAreIgnored_data()
    {
        QTest::addColumn<int>("event");
        QTest::newRow("negative") << -1;
        QTest::newRow("behind the last") << 1000;
        QTest::newRow("the largest") << std::numeric_limits<int>::max();
        QTest::newRow("the smallest") << std::numeric_limits<int>::min();
        QTest::newRow("no note") << 1;
    }
    void eventsThatAreNotThereAreIgnored()
    {
        QFETCH(const int, event);
        storeVisible(true);
        EditorStage stage(QStringLiteral("X:1\nL:1/4\nK:C\nC[M:3/4]D"));
        QVERIFY(stage.show());
        stage.editor->onNotePressed(event);
        QCOMPARE(pressedKeys(stage), QStringList());
        stage.editor->onNoteReleased(event);
    }

    void anAppliedChangeReleasesTheKeys()
    {
        storeVisible(true);
        EditorStage stage;
        QVERIFY(stage.show());
        stage.editor->onNotePressed(eventOf(stage.track, 60));
        QCOMPARE(pressedKeys(stage), texts({"C5"}));
        stage.replaceText(EditorStage::shortTune() + QStringLiteral("D"));
        QVERIFY(stage.editor->onApply());
        QCOMPARE(pressedKeys(stage), QStringList());
    }

    void notesBeforeTheRollIsSeenAreHarmless()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        stage.editor->onTrackPlaying(true);
        stage.editor->onNotePressed(eventOf(stage.track, 60));
        stage.editor->onNoteReleased(eventOf(stage.track, 60));
        stage.editor->onTrackPlaying(false);
        stage.dock()->show();
        QCOMPARE(pressedKeys(stage), QStringList());
    }

    void keysStayPressedWhileTheDockIsHidden()
    {
        storeVisible(true);
        EditorStage stage;
        QVERIFY(stage.show());
        stage.editor->onNotePressed(eventOf(stage.track, 60));
        stage.dock()->hide();
        stage.dock()->show();
        QCOMPARE(pressedKeys(stage), texts({"C5"}));
    }

    void theLineStartsAnewAfterAStop()
    {
        storeVisible(true);
        EditorStage stage;
        QVERIFY(stage.show());
        stage.editor->onTrackPlaying(true);
        const QImage atStart = grid(stage);
        stage.editor->onTrackPositionChanged(60480);
        QVERIFY(grid(stage) != atStart);
        stage.editor->onTrackPlaying(false);
        stage.editor->onTrackPlaying(true);
        QVERIFY(grid(stage) == atStart);
    }

    void aTrackReplacedBeforeAllItsNotesAreShownIsHarmless()
    {
        EditorStage stage(EditorStage::longTune(30000));
        QVERIFY(stage.show());
        stage.dock()->show();
        QCOMPARE(shownNotes(stage), 10001);
        stage.replaceText(EditorStage::shortTune());
        QVERIFY(stage.editor->onApply());
        stage.editor->onNotePressed(29999);
        stage.editor->onNoteReleased(29999);
        QTest::qWait(20); // for slices of the old track, if any came
        QCOMPARE(shownNotes(stage), 1);
    }

    void anEditorMayGoBeforeAllNotesAreShown()
    {
        EditorStage stage(EditorStage::longTune(30000));
        QVERIFY(stage.show());
        stage.dock()->show();
        stage.editor->onTrackPlaying(true);
        stage.editor->onNotePressed(0);
        QCOMPARE(shownNotes(stage), 10001);
        delete stage.editor;
        QTest::qWait(20); // for a slice, if one came
        QVERIFY(stage.editor.isNull());
    }
};

QTEST_MAIN(TestABCEditorPlaying)
#include "tst_ABCEditorPlaying.moc"
