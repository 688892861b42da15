#include "EditorStage.h"
#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"

#include <QSignalSpy>
#include <QtTest>

#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local bool isMemoryShort = false;

/// A note that waits for its tie, for which the parser takes memory.
const QString tiedNotes = QStringLiteral("X:1\nL:1/4\nK:C\nD-D");

} // namespace

// Every allocation of this program passes here, except where the thread sanitizer has its own
// functions in their place.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define HAS_OWN_ALLOCATOR
#endif
#endif
#ifndef HAS_OWN_ALLOCATOR
void *operator new(std::size_t size)
{
    const bool isRefused = std::exchange(isMemoryShort, false);
    void *const memory = isRefused ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}
#endif

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
        isMemoryShort = true;
        QVERIFY(!stage.editor->onApply());
        QVERIFY(!isMemoryShort);
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
        isMemoryShort = true;
        QVERIFY(!stage.editor->onApply());
        QVERIFY(stage.editor->onApply());
        QCOMPARE(stage.pitches(), QStringLiteral("62"));
        QCOMPARE(stage.track.length(), quint64(60480));
    }
};

QTEST_MAIN(TestABCEditorShortage)
#include "tst_ABCEditorShortage.moc"
