#include "EditorStage.h"
#include "support/DialogAnswers.h"
#include "support/OwnAllocator.h"
#include "support/SettingsSandbox.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

/// A note that waits for its tie, for which the parser takes memory.
const QString tiedNotes = QStringLiteral("X:1\nL:1/4\nK:C\nD-D");

} // namespace

/// An editor whose text is read while there is no memory for it.
class TestABCEditorShortage : public QObject {
    Q_OBJECT

private:
    SettingsSandbox m_sandbox;

private slots:
    void aFailureWithoutAMessageIsToldAndKeepsTheTrack()
    {
        EditorStage stage;
        const Track before = stage.track;
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        stage.replaceText(tiedNotes);
        DialogAnswers answers;
        answers.press("OK");
        OwnAllocator::isShort = true;
        QVERIFY(!stage.editor->onApply());
        QVERIFY(!OwnAllocator::isShort);
        QCOMPARE(answers.seen(),
                 QStringList(QStringLiteral(
                     "critical [ABC Editor] An unknown error occured while parsing (OK)")));
        QCOMPARE(stage.track, before);
        QCOMPARE(stage.shownText(), tiedNotes);
        QVERIFY(stage.isModified());
        QCOMPARE(changed.size(), 0);
    }

    void theSameTextIsAppliedOnceThereIsMemory()
    {
        EditorStage stage;
        stage.replaceText(tiedNotes);
        DialogAnswers answers;
        answers.press("OK");
        OwnAllocator::isShort = true;
        QVERIFY(!stage.editor->onApply());
        QVERIFY(stage.editor->onApply());
        QCOMPARE(stage.pitches(), QStringLiteral("62"));
        QCOMPARE(stage.track.length(), quint64(60480));
    }
};

QTEST_MAIN(TestABCEditorShortage)
#include "tst_ABCEditorShortage.moc"
