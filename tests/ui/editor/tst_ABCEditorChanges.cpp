#include "EditorStage.h"
#include "model/Settings.h"
#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"
#include "support/WidgetDriver.h"
#include "ui/editor/ABCCodeEditor.h"

#include <QAction>
#include <QComboBox>
#include <QSignalSpy>
#include <QtTest>

using namespace WidgetDriver;

namespace {

const QString unappliedQuestion =
    QStringLiteral("question [ABC Editor] There are unapplied changes. Would you like to apply "
                   "these first? (Cancel,Yes,No)");
const QString closeQuestion =
    QStringLiteral("question [ABC Editor] Would you like to apply your changes? (Cancel,Yes,No)");
const QString badText = QStringLiteral("X:1\nK:C\nC*");
const QString badTextBox =
    QStringLiteral("critical [ABC Editor] Could not parse ABC: Unknown token found in ABC body at "
                   "line 3, column 2. (OK)");

/// A body of two notes, so that a change can be seen.
QString tune(const QString &body)
{
    return QStringLiteral("X:1\nT:One\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\n") + body;
}

void acceptDialog(QWidget &)
{
    press(Qt::Key_Return);
}

void rejectDialog(QWidget &)
{
    press(Qt::Key_Escape);
}

} // namespace

class TestABCEditorChanges : public QObject {
    Q_OBJECT

private:
    SettingsSandbox m_sandbox;

private slots:
    void applyOfUnchangedTextDoesNothingAndSucceeds()
    {
        EditorStage stage;
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        const Track before = stage.track;
        QVERIFY(stage.editor->onApply());
        QCOMPARE(stage.track, before);
        QCOMPARE(changed.size(), 0);
    }

    void applyMakesTheTextTheTrack()
    {
        EditorStage stage(EditorStage::shortTune(), QStringLiteral("/songs/one.abc"));
        QVERIFY(stage.show());
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        press(Qt::Key_End, Qt::ControlModifier);
        type(QStringLiteral("DE"));
        QVERIFY(stage.action("actionApply")->isEnabled());
        QCOMPARE(stage.pitches(), QStringLiteral("60"));
        press(Qt::Key_F6);
        QCOMPARE(stage.pitches(), QStringLiteral("60 62 64"));
        QCOMPARE(stage.track.abc(), EditorStage::shortTune() + QStringLiteral("DE"));
        QCOMPARE(stage.track.fileName(), QStringLiteral("/songs/one.abc"));
        QCOMPARE(changed.size(), 1);
        QVERIFY(!stage.isModified());
        QVERIFY(!stage.action("actionApply")->isEnabled());
    }

    void applyLeavesTheUndoSteps()
    {
        EditorStage stage;
        stage.replaceText(tune(QStringLiteral("D")));
        QVERIFY(stage.editor->onApply());
        stage.trigger("actionUndo");
        QCOMPARE(stage.shownText(), EditorStage::shortTune());
        QVERIFY(stage.isModified());
        QVERIFY(stage.editor->onApply());
        QCOMPARE(stage.pitches(), QStringLiteral("60"));
    }

    void textThatCannotBeReadKeepsTheTrack()
    {
        EditorStage stage;
        const Track before = stage.track;
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        stage.replaceText(badText);
        DialogAnswers answers;
        answers.press("OK");
        QVERIFY(!stage.editor->onApply());
        QCOMPARE(answers.seen(), QStringList(badTextBox));
        QCOMPARE(stage.track, before);
        QCOMPARE(stage.shownText(), badText);
        QVERIFY(stage.isModified());
        QCOMPARE(changed.size(), 0);
    }

    void theTrackIsReadyWhenItsChangeIsTold()
    {
        EditorStage stage;
        QString pitches;
        bool isModified = true;
        connect(stage.editor, &ABCEditor::trackChanged, this, [&] {
            pitches = stage.pitches();
            isModified = stage.isModified();
        });
        stage.replaceText(tune(QStringLiteral("E")));
        QVERIFY(stage.editor->onApply());
        QCOMPARE(pitches, QStringLiteral("64"));
        QVERIFY(!isModified);
    }

    void transposeMovesTheNotesInOneStep()
    {
        EditorStage stage(tune(QStringLiteral("C2 % a comment\nD2|")),
                          QStringLiteral("/songs/one.abc"));
        const QString before = stage.shownText();
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        DialogAnswers answers;
        answers.visit([](QWidget &dialog) {
            QCOMPARE(dialog.windowTitle(), QStringLiteral("Transpose"));
            type(QStringLiteral("2"));
            press(Qt::Key_Return);
        });
        stage.trigger("actionTranspose");
        QVERIFY(answers.isDone());
        QCOMPARE(stage.pitches(), QStringLiteral("62 64"));
        QCOMPARE(stage.track.fileName(), QStringLiteral("/songs/one.abc"));
        QCOMPARE(stage.track.abc(), stage.shownText());
        QVERIFY(!stage.shownText().contains(QLatin1String("comment")));
        QVERIFY(!stage.isModified());
        QCOMPARE(changed.size(), 1);
        stage.trigger("actionUndo");
        QCOMPARE(stage.shownText(), before);
        QVERIFY(stage.isModified());
    }

    void changeKeyStartsWithTheTracksKey()
    {
        EditorStage stage(QStringLiteral("X:1\nL:1/4\nK:F#m\nF2|"));
        const QString pitches = stage.pitches();
        QString first;
        DialogAnswers answers;
        answers.visit([&first](QWidget &dialog) {
            QCOMPARE(dialog.windowTitle(), QStringLiteral("Change Key"));
            auto *const row = dialog.findChild<QComboBox *>(QStringLiteral("cboSharpsFlats"));
            first = dialog.findChild<QComboBox *>(QStringLiteral("cboMode"))->currentText()
                + QStringLiteral(", ") + row->currentText();
            row->setCurrentIndex(7);
            press(Qt::Key_Return);
        });
        stage.trigger("actionChangeKey");
        QCOMPARE(first, QStringLiteral("Minor / Aeolian, 3 sharps"));
        QCOMPARE(stage.track.header(QStringLiteral("K")), QStringLiteral("Am"));
        QCOMPARE(stage.pitches(), pitches);
    }

    void changeUnitLengthStartsWithTheTracksLength()
    {
        EditorStage stage(QStringLiteral("X:1\nL:1/32\nK:C\nC8|"));
        QString first;
        DialogAnswers answers;
        answers.visit([&first](QWidget &dialog) {
            QCOMPARE(dialog.windowTitle(), QStringLiteral("Change Unit Length"));
            first = dialog.findChild<QComboBox *>()->currentText();
            dialog.findChild<QComboBox *>()->setCurrentIndex(0);
            press(Qt::Key_Return);
        });
        stage.trigger("actionChangeUnitLength");
        QCOMPARE(first, QStringLiteral("1/32"));
        QCOMPARE(stage.track.header(QStringLiteral("L")), QStringLiteral("1/16"));
        QCOMPARE(stage.pitches(), QStringLiteral("60"));
        QCOMPARE(stage.track.event(stage.track.eventCount() - 1).duration(), quint64(30240));
    }

    void quickRealignNeedsNoDialog()
    {
        EditorStage stage(QStringLiteral("X:1\nL:1/1000\nK:C\nC250|"));
        stage.trigger("actionQuickRealign");
        QCOMPARE(stage.track.length(), quint64(30240));
    }

    void realignTakesTheChosenGrids()
    {
        EditorStage stage(tune(QStringLiteral("C/4 D/4")));
        DialogAnswers answers;
        answers.visit([](QWidget &dialog) {
            QCOMPARE(dialog.windowTitle(), QStringLiteral("Realign Notes"));
            for (int i = 0; i < 5; ++i) {
                press(Qt::Key_Home);
                press(Qt::Key_Tab);
            }
            press(Qt::Key_Return);
        });
        stage.trigger("actionRealignNotes");
        QVERIFY(answers.isDone());
        QCOMPARE(stage.track.length(), quint64(120960));
    }

    void aCancelledDialogChangesNothing_data()
    {
        QTest::addColumn<QString>("action");
        for (const char *name :
             {"actionTranspose", "actionChangeKey", "actionChangeUnitLength", "actionRealignNotes"})
            QTest::newRow(name) << QString::fromUtf8(name);
    }
    void aCancelledDialogChangesNothing()
    {
        QFETCH(const QString, action);
        EditorStage stage;
        const Track before = stage.track;
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        DialogAnswers answers;
        answers.visit(rejectDialog);
        stage.trigger(action.toUtf8().constData());
        QVERIFY(answers.isDone());
        QCOMPARE(stage.track, before);
        QCOMPARE(stage.shownText(), EditorStage::shortTune());
        QCOMPARE(changed.size(), 0);
    }

    void unappliedChangesAreAskedAboutBeforeEachTransform_data()
    {
        QTest::addColumn<QString>("action");
        for (const char *name : {"actionTranspose", "actionChangeKey", "actionChangeUnitLength",
                                 "actionRealignNotes", "actionQuickRealign"})
            QTest::newRow(name) << QString::fromUtf8(name);
    }
    void unappliedChangesAreAskedAboutBeforeEachTransform()
    {
        QFETCH(const QString, action);
        EditorStage stage;
        const Track before = stage.track;
        stage.replaceText(tune(QStringLiteral("G")));
        DialogAnswers answers;
        answers.press("Cancel");
        stage.trigger(action.toUtf8().constData());
        QCOMPARE(answers.seen(), QStringList(unappliedQuestion));
        QCOMPARE(stage.track, before);
        QCOMPARE(stage.shownText(), tune(QStringLiteral("G")));
        QVERIFY(stage.isModified());
    }

    void yesAppliesTheChangesFirst()
    {
        EditorStage stage;
        stage.replaceText(tune(QStringLiteral("G4")));
        DialogAnswers answers;
        answers.press("Yes").visit(acceptDialog);
        stage.trigger("actionTranspose");
        QVERIFY(answers.isDone());
        QCOMPARE(stage.pitches(), QStringLiteral("67"));
    }

    void yesStopsWhenTheTextCannotBeRead()
    {
        EditorStage stage;
        const Track before = stage.track;
        stage.replaceText(badText);
        DialogAnswers answers;
        answers.press("Yes").press("OK");
        stage.trigger("actionTranspose");
        QCOMPARE(answers.seen(), QStringList({unappliedQuestion, badTextBox}));
        QCOMPARE(stage.track, before);
        QCOMPARE(stage.shownText(), badText);
        QVERIFY(stage.isModified());
    }

    void noDropsTheChanges()
    {
        EditorStage stage;
        stage.replaceText(tune(QStringLiteral("G4")));
        DialogAnswers answers;
        answers.press("No");
        stage.trigger("actionQuickRealign");
        QCOMPARE(stage.pitches(), QStringLiteral("60"));
        QVERIFY(!stage.isModified());
        stage.trigger("actionUndo");
        QCOMPARE(stage.shownText(), tune(QStringLiteral("G4")));
    }

    void noWithACancelledDialogKeepsTheText()
    {
        EditorStage stage;
        stage.replaceText(tune(QStringLiteral("G4")));
        DialogAnswers answers;
        answers.press("No").visit(rejectDialog);
        stage.trigger("actionTranspose");
        QCOMPARE(stage.shownText(), tune(QStringLiteral("G4")));
        QVERIFY(stage.isModified());
        QCOMPARE(stage.pitches(), QStringLiteral("60"));
    }

    void theCursorStaysOnItsLine()
    {
        EditorStage stage(EditorStage::longTune(400));
        QVERIFY(stage.show());
        for (int i = 0; i < 50; ++i)
            press(Qt::Key_Down);
        const QString before = stage.label("Ln");
        QVERIFY(before.startsWith(QLatin1String("Ln: 51 ")));
        stage.trigger("actionQuickRealign");
        QCOMPARE(stage.label("Ln"), QStringLiteral("Ln: 51 Col: 1"));
    }

    void aTrackChangedElsewhereIsShownInOneStep()
    {
        EditorStage stage(EditorStage::shortTune(), QStringLiteral("/songs/one.abc"));
        stage.replaceText(tune(QStringLiteral("not applied")));
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        Track other;
        other.addEvent(TrackEvent::makeNote(72, 0, 30240));
        other.sortEvents();
        stage.track = other;
        stage.editor->reloadTrack();
        QCOMPARE(stage.shownText(), stage.track.abc());
        QVERIFY(!stage.isModified());
        QCOMPARE(changed.size(), 0);
        QCOMPARE(stage.editor->windowTitle(),
                 QStringLiteral("ABC Editor (untitled.abc) - Quillmoor Composer"));
        stage.trigger("actionUndo");
        QCOMPARE(stage.shownText(), tune(QStringLiteral("not applied")));
        QVERIFY(stage.isModified());
    }

    void closingUnmodifiedAsksNothing()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        QVERIFY(stage.editor->close());
        QTRY_VERIFY(stage.editor.isNull());
    }

    void closingAsks_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<QString>("pitches");
        QTest::newRow("Yes") << "Yes" << true << "67";
        QTest::newRow("No") << "No" << true << "60";
        QTest::newRow("Cancel") << "Cancel" << false << "60";
    }
    void closingAsks()
    {
        QFETCH(const QString, answer);
        QFETCH(const bool, closes);
        EditorStage stage;
        QVERIFY(stage.show());
        stage.replaceText(tune(QStringLiteral("G4")));
        DialogAnswers answers;
        answers.press(answer.toUtf8().constData());
        QCOMPARE(stage.editor->close(), closes);
        QCOMPARE(answers.seen(), QStringList(closeQuestion));
        QTEST(stage.pitches(), "pitches");
        if (closes)
            QTRY_VERIFY(stage.editor.isNull());
        else
            QVERIFY(stage.editor->isVisible() && stage.isModified());
    }

    void aTextThatCannotBeReadKeepsTheWindowOpen()
    {
        EditorStage stage;
        QVERIFY(stage.show());
        stage.replaceText(badText);
        DialogAnswers answers;
        answers.press("Yes").press("OK");
        QVERIFY(!stage.editor->close());
        QCOMPARE(answers.seen(), QStringList({closeQuestion, badTextBox}));
        QVERIFY(stage.editor->isVisible());
        QCOMPARE(stage.shownText(), badText);
    }

    void fiveMegabytesAreEdited()
    {
        constexpr int lines = 80000;
        const QString text = QStringLiteral("X:1\nK:C\n")
            + QStringLiteral(
                  "C3/2 D/2 E2 F4 | C3/2 D/2 E2 F4 | C3/2 D/2 E2 F4 | C3/2 D/2 E2 F4 |\n")
                  .repeated(lines);
        QVERIFY(text.size() > 5000000);
        EditorStage stage(text);
        QVERIFY(stage.show());
        QCOMPARE(stage.track.noteCount(), lines * 16);
        press(Qt::Key_End, Qt::ControlModifier);
        type(QStringLiteral("G"));
        QCOMPARE(stage.label("Len"),
                 QStringLiteral("Len: %1 Lines: %2").arg(text.size() + 2).arg(lines + 3));
        press(Qt::Key_F6);
        QCOMPARE(stage.track.noteCount(), lines * 16 + 1);
    }
};

QTEST_MAIN(TestABCEditorChanges)
#include "tst_ABCEditorChanges.moc"
