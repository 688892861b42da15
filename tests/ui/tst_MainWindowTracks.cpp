#include "MainWindowStage.h"

#include "model/Settings.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QEventLoop>
#include <QTimer>

/// The rows of the main window: ids, instruments, merging, removing, moving, selecting, muting.
class tst_MainWindowTracks : public QObject {
    Q_OBJECT

private slots:
    void init() { m_stage = std::make_unique<MainWindowStage>(); }
    void cleanup();

    void rowsAreNumbered();
    void removedIdsComeBackAfterAClearOnly();
    void newRowsAreAtTheBottom();
    void aNewTrackIsEmpty();
    void rowsMadeOfOthersScrollIntoView();

    void theInstrumentIsChosen_data();
    void theInstrumentIsChosen();
    void theInstrumentIsAppliedToSelectedRows();
    void theInstrumentIsAppliedToAllRowsWhenNoneIsSelected();

    void actionsFollowTheSelection();
    void allAreSelectedOrNone();
    void theSelectionIsInverted();

    void mergedTracksAreANewRow();
    void mergingVisitsRowsInTheOrderOfTheirIds();
    void mergingChoosesAnInstrument();
    void differentTemposAreNotMerged();
    void otherTempoChangesAreNotMerged();
    void mergingNothingDoesNothing();

    void duplicatesAreNewRows();
    void duplicatesHaveTheirOwnSettings();

    void selectedRowsAreRemoved();
    void aRowIsRemovedByItsButton();
    void aRowRemovedByItsButtonIsSelectedNoMore();
    void allRowsAreRemovedWithoutAQuestion();

    void rowsMoveUpAndDown();
    void theEndsDoNotMove();
    void moveButtonsFollow();
    void movingKeepsTheOrderOfIds();

    void selectedRowsAreMutedAndUnmuted();
    void soloLeavesOneAudible();
    void soloOnAMutedRow();
    void soloOnASingleRow();

    void allRowsShareOneTimeAxis();
    void openedRowsShareTheTimeAxis_data();
    void openedRowsShareTheTimeAxis();
    void rowsMadeOfOthersShareTheTimeAxis_data();
    void rowsMadeOfOthersShareTheTimeAxis();
    void removingSelectedRowsKeepsTheTimeAxis();
    void aCancelledOpeningKeepsTheTimeAxis();

    void slotsForRowsIgnoreOthers();

    void savingGoesInTheOrderOfIds();

private:
    QString ids() const { return m_stage->ids().join(QLatin1Char(' ')); }
    QString titles() const { return m_stage->titles().join(QLatin1Char(' ')); }
    /// As the user does: in a running event loop, which comes to what is posted in another order
    /// than a loop that is started later.
    void triggerFromLoop(const char *action) const;
    /// Where a note of a quarter at the start ends in the strip, in parts of its width.
    quint64 timeAxis(const char *id) const;

    std::unique_ptr<MainWindowStage> m_stage;
};

namespace {

QString asked(const char *id)
{
    return text("chooser [Save track '%1' as..] ABC Files (*.abc); in ").arg(text(id));
}

} // namespace

void tst_MainWindowTracks::cleanup()
{
    QVERIFY(m_stage->answers().isDone());
    m_stage.reset();
}

/// A click at the strip's very end seeks to the end of its time axis, or just before.
quint64 tst_MainWindowTracks::timeAxis(const char *id) const
{
    auto *const strip = m_stage->control<QWidget>(id, "wVis");
    const int width = 100;
    strip->resize(width, strip->height());
    quint64 ticks = 0;
    const auto connection = connect(m_stage->row(id), &TrackWidget::trackSeek, this,
                                    [&](quint64 position) { ticks = position; });
    QTest::mouseClick(strip, Qt::LeftButton, Qt::NoModifier, QPoint(width / 2, 5));
    disconnect(connection);
    return ticks * 2;
}

void tst_MainWindowTracks::triggerFromLoop(const char *action) const
{
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&] {
        m_stage->trigger(action);
        QTimer::singleShot(20, &loop, &QEventLoop::quit);
    });
    loop.exec();
}

void tst_MainWindowTracks::rowsAreNumbered()
{
    m_stage->pasteTunes(10);
    QCOMPARE(ids(), text("T1 T2 T3 T4 T5 T6 T7 T8 T9 T10"));
}

void tst_MainWindowTracks::removedIdsComeBackAfterAClearOnly()
{
    m_stage->pasteTunes(2);
    m_stage->click("T2", "btnDelete");
    m_stage->pasteTunes(1);
    QCOMPARE(ids(), text("T1 T3"));
    m_stage->trigger("actionClear_Tracks");
    m_stage->trigger("actionNew_Track");
    QCOMPARE(ids(), text("T1"));
}

void tst_MainWindowTracks::newRowsAreAtTheBottom()
{
    m_stage->pasteTunes(2);
    m_stage->click("T1", "btnDown");
    m_stage->pasteTunes(1);
    QCOMPARE(ids(), text("T2 T1 T3"));
    QTRY_VERIFY(m_stage->row("T3")->y() > m_stage->row("T1")->y());
    QVERIFY(m_stage->row("T3")->isVisible());
}

void tst_MainWindowTracks::aNewTrackIsEmpty()
{
    m_stage->trigger("actionNew_Track");
    QCOMPARE(m_stage->row("T1")->track(), Track());
    QCOMPARE(titles(), text("Untitled"));
}

void tst_MainWindowTracks::rowsMadeOfOthersScrollIntoView()
{
    const auto isSeen = [this](const char *id) {
        const TrackWidget *const row = m_stage->row(id);
        return row->visibleRegion().boundingRect() == row->rect();
    };
    m_stage->pasteTunes(12);
    QTRY_VERIFY(isSeen("T1") && !isSeen("T12"));
    triggerFromLoop("actionNew_Track");
    QTRY_VERIFY(isSeen("T13"));
    m_stage->select({text("T1"), text("T2")});
    triggerFromLoop("actionMerge_Selected");
    QTRY_VERIFY(isSeen("T14"));
    triggerFromLoop("actionDuplicate_Selected");
    QTRY_VERIFY(isSeen("T16"));
}

void tst_MainWindowTracks::theInstrumentIsChosen_data()
{
    QTest::addColumn<QByteArray>("fields");
    QTest::addColumn<QString>("instrument");
    QTest::newRow("none") << QByteArray() << text("Lute");
    QTest::newRow("named") << QByteArray("I:instrument Flute\n") << text("Flute");
    QTest::newRow("any case") << QByteArray("I:INSTRUMENT fLUTE\n") << text("Flute");
    QTest::newRow("unknown") << QByteArray("I:instrument Harp\n") << text("Lute");
    QTest::newRow("more than one")
        << QByteArray("I:instrument Flute\nI:instrument Drum\n") << text("Flute");
    QTest::newRow("other field") << QByteArray("I:instruments Flute\n") << text("Lute");
}

void tst_MainWindowTracks::theInstrumentIsChosen()
{
    QFETCH(QByteArray, fields);
    m_stage->window().findChild<QComboBox *>(text("instrumentList"))->setCurrentIndex(2);
    m_stage->paste(abc("Tune", (fields + "K:C\nC").constData()));
    QTEST(m_stage->instrument("T1"), "instrument");
}

void tst_MainWindowTracks::theInstrumentIsAppliedToSelectedRows()
{
    m_stage->pasteTunes(3);
    m_stage->select({text("T2")});
    m_stage->window().findChild<QComboBox *>(text("instrumentList"))->setCurrentIndex(1);
    m_stage->trigger("actionApplyInstrument");
    QCOMPARE(m_stage->instrument("T1"), text("Drum"));
    QCOMPARE(m_stage->instrument("T2"), text("Flute"));
    QCOMPARE(m_stage->instrument("T3"), text("Drum"));
}

void tst_MainWindowTracks::theInstrumentIsAppliedToAllRowsWhenNoneIsSelected()
{
    m_stage->pasteTunes(2);
    m_stage->window().findChild<QComboBox *>(text("instrumentList"))->setCurrentIndex(2);
    m_stage->trigger("actionApplyInstrument");
    QCOMPARE(m_stage->instrument("T1"), text("Lute"));
    QCOMPARE(m_stage->instrument("T2"), text("Lute"));
}

void tst_MainWindowTracks::actionsFollowTheSelection()
{
    const auto enabled = [this] {
        QString list;
        for (const char *const name :
             {"actionMerge_Selected", "actionDuplicate_Selected", "actionRemove_Selected",
              "actionSave_Selected", "actionMute_Selected"})
            list += QString::number(int(m_stage->isEnabled(name)));
        return list;
    };
    QCOMPARE(enabled(), text("00000"));
    m_stage->pasteTunes(2);
    QCOMPARE(enabled(), text("00000"));
    m_stage->click("T1", "chkSelect");
    QCOMPARE(enabled(), text("01111"));
    m_stage->click("T2", "chkSelect");
    QCOMPARE(enabled(), text("11111"));
    m_stage->click("T1", "chkSelect");
    QCOMPARE(enabled(), text("01111"));
    m_stage->trigger("actionRemove_Selected");
    QCOMPARE(enabled(), text("00000"));
    m_stage->trigger("actionSelect_All");
    QCOMPARE(enabled(), text("01111"));
    m_stage->trigger("actionDeselect_All");
    QCOMPARE(enabled(), text("00000"));
    m_stage->trigger("actionInvert_Selection");
    QCOMPARE(enabled(), text("01111"));
    m_stage->trigger("actionClear_Tracks");
    QCOMPARE(enabled(), text("00000"));
}

void tst_MainWindowTracks::allAreSelectedOrNone()
{
    m_stage->pasteTunes(3);
    m_stage->select({text("T2")});
    m_stage->trigger("actionSelect_All");
    QCOMPARE(m_stage->selected(), text("T1 T2 T3"));
    m_stage->trigger("actionDeselect_All");
    QCOMPARE(m_stage->selected(), QString());
}

void tst_MainWindowTracks::theSelectionIsInverted()
{
    m_stage->pasteTunes(3);
    m_stage->select({text("T2")});
    m_stage->trigger("actionInvert_Selection");
    QCOMPARE(m_stage->selected(), text("T1 T3"));
}

void tst_MainWindowTracks::mergedTracksAreANewRow()
{
    m_stage->paste("X:5\nT:One\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nCD\n");
    m_stage->paste(abc("Two", "K:C\nzzEF"));
    m_stage->trigger("actionSelect_All");
    m_stage->trigger("actionMerge_Selected");
    QCOMPARE(ids(), text("T1 T2 T3"));
    QCOMPARE(titles(), text("One Two One"));
    Track &merged = m_stage->row("T3")->track();
    QCOMPARE(merged.noteCount(), 4);
    QCOMPARE(merged.length(), quint64{120960});
    QCOMPARE(merged.headers(text("X")), QStringList{text("1")});
    QVERIFY2(merged.abc().contains(text("T: One")), qPrintable(merged.abc()));
    QCOMPARE(m_stage->selected(), text("T1 T2"));
}

void tst_MainWindowTracks::mergingVisitsRowsInTheOrderOfTheirIds()
{
    m_stage->pasteTunes(10);
    m_stage->select({text("T2"), text("T10")});
    m_stage->trigger("actionMerge_Selected");
    QCOMPARE(m_stage->titles().last(), text("10"));
    m_stage->trigger("actionSelect_All");
    m_stage->trigger("actionMerge_Selected");
    QCOMPARE(m_stage->titles().last(), text("1"));
}

void tst_MainWindowTracks::mergingChoosesAnInstrument()
{
    m_stage->paste(abc("One", "K:C\nC"));
    m_stage->paste(abc("Two", "I:instrument Lute\nK:C\nC"));
    m_stage->paste(abc("Three", "I:instrument Flute\nK:C\nC"));
    m_stage->select({text("T2"), text("T3")});
    m_stage->trigger("actionMerge_Selected");
    QCOMPARE(m_stage->instrument("T4"), text("Lute"));
}

void tst_MainWindowTracks::differentTemposAreNotMerged()
{
    m_stage->paste("X:1\nQ:1/4=120\nK:C\nC\n");
    m_stage->paste("X:1\nQ:1/4=121\nK:C\nC\n");
    m_stage->trigger("actionSelect_All");
    m_stage->answers().press("OK");
    m_stage->trigger("actionMerge_Selected");
    QCOMPARE(m_stage->answers().seen(),
             QStringList{text("critical [Merge Tracks] Could not merge tracks: Cannot merge tracks "
                              "with different tempos (OK)")});
    QCOMPARE(ids(), text("T1 T2"));
}

void tst_MainWindowTracks::otherTempoChangesAreNotMerged()
{
    m_stage->paste(abc("One", "K:C\nCD"));
    m_stage->paste(abc("Two", "K:C\nC[Q:1/4=90]D"));
    m_stage->trigger("actionSelect_All");
    m_stage->answers().press("OK");
    m_stage->trigger("actionMerge_Selected");
    QCOMPARE(m_stage->answers().seen().size(), 1);
    QCOMPARE(ids(), text("T1 T2"));
}

void tst_MainWindowTracks::mergingNothingDoesNothing()
{
    m_stage->pasteTunes(2);
    m_stage->window().onMergeTracks();
    QCOMPARE(ids(), text("T1 T2"));
}

void tst_MainWindowTracks::duplicatesAreNewRows()
{
    m_stage->pasteTunes(10);
    m_stage->select({text("T2"), text("T10")});
    m_stage->trigger("actionDuplicate_Selected");
    QCOMPARE(m_stage->ids().mid(10).join(QLatin1Char(' ')), text("T11 T12"));
    QCOMPARE(m_stage->titles().mid(10).join(QLatin1Char(' ')), text("10 2"));
    QCOMPARE(m_stage->row("T12")->track(), m_stage->row("T2")->track());
    QCOMPARE(m_stage->selected(), text("T2 T10"));
    QVERIFY(m_stage->window().updatesEnabled());
}

void tst_MainWindowTracks::duplicatesHaveTheirOwnSettings()
{
    m_stage->pasteTunes(1);
    TrackWidget *const source = m_stage->row("T1");
    source->setInstrumentIndex(2);
    source->setVolume(0.5F);
    source->setPan(-0.5F);
    source->setMuted(true, false);
    m_stage->trigger("actionSelect_All");
    m_stage->trigger("actionDuplicate_Selected");
    const TrackWidget *const copy = m_stage->row("T2");
    QCOMPARE(m_stage->instrument("T2"), text("Drum"));
    QCOMPARE(copy->volume(), 1.0F);
    QCOMPARE(copy->pan(), 0.0F);
    QVERIFY(!copy->isMuted());
}

void tst_MainWindowTracks::selectedRowsAreRemoved()
{
    m_stage->pasteTunes(4);
    m_stage->select({text("T1"), text("T3")});
    m_stage->trigger("actionRemove_Selected");
    QCOMPARE(ids(), text("T2 T4"));
    QVERIFY(!m_stage->control<QAbstractButton>("T2", "btnUp")->isEnabled());
    m_stage->trigger("actionSelect_All");
    QCOMPARE(m_stage->selected(), text("T2 T4"));
    m_stage->trigger("actionRemove_Selected");
    QVERIFY(m_stage->window().findChild<QWidget *>(text("lblHint"))->isVisible());
}

void tst_MainWindowTracks::aRowIsRemovedByItsButton()
{
    m_stage->pasteTunes(3);
    const QPointer<TrackWidget> row = m_stage->row("T3");
    m_stage->click("T3", "btnDelete");
    QCOMPARE(ids(), text("T1 T2"));
    QVERIFY(!m_stage->control<QAbstractButton>("T2", "btnDown")->isEnabled());
    QTRY_VERIFY(row.isNull());
}

void tst_MainWindowTracks::aRowRemovedByItsButtonIsSelectedNoMore()
{
    m_stage->pasteTunes(2);
    m_stage->trigger("actionSelect_All");
    m_stage->click("T2", "btnDelete");
    QVERIFY(!m_stage->isEnabled("actionMerge_Selected"));
    QVERIFY(m_stage->isEnabled("actionRemove_Selected"));
    m_stage->click("T1", "btnDelete");
    QVERIFY(!m_stage->isEnabled("actionRemove_Selected"));
}

void tst_MainWindowTracks::allRowsAreRemovedWithoutAQuestion()
{
    m_stage->pasteTunes(3);
    m_stage->trigger("actionClear_Tracks");
    QCOMPARE(ids(), QString());
    QVERIFY(m_stage->window().findChildren<TrackWidget *>().isEmpty());
}

void tst_MainWindowTracks::rowsMoveUpAndDown()
{
    m_stage->pasteTunes(4);
    m_stage->click("T3", "btnUp");
    QCOMPARE(ids(), text("T1 T3 T2 T4"));
    m_stage->click("T1", "btnDown");
    QCOMPARE(ids(), text("T3 T1 T2 T4"));
    QTRY_VERIFY(m_stage->row("T3")->isVisible());
    QTRY_VERIFY(m_stage->row("T3")->y() < m_stage->row("T1")->y());
}

void tst_MainWindowTracks::theEndsDoNotMove()
{
    m_stage->pasteTunes(2);
    emit m_stage->row("T1")->trackMoveUp();
    emit m_stage->row("T2")->trackMoveDown();
    QCOMPARE(ids(), text("T1 T2"));
}

void tst_MainWindowTracks::moveButtonsFollow()
{
    const auto buttons = [this] {
        QStringList list;
        for (const TrackWidget *const row : m_stage->rows())
            list.append(
                QString::number(int(row->findChild<QWidget *>(text("btnUp"))->isEnabled()))
                + QString::number(int(row->findChild<QWidget *>(text("btnDown"))->isEnabled())));
        return list.join(QLatin1Char(' '));
    };
    m_stage->pasteTunes(1);
    QCOMPARE(buttons(), text("00"));
    m_stage->pasteTunes(2);
    QCOMPARE(buttons(), text("01 11 10"));
    m_stage->click("T1", "btnDown");
    QCOMPARE(ids(), text("T2 T1 T3"));
    QCOMPARE(buttons(), text("01 11 10"));
    m_stage->click("T2", "btnDelete");
    QCOMPARE(buttons(), text("01 10"));
    m_stage->select({text("T3")});
    m_stage->trigger("actionRemove_Selected");
    QCOMPARE(buttons(), text("00"));
}

void tst_MainWindowTracks::movingKeepsTheOrderOfIds()
{
    m_stage->pasteTunes(2);
    m_stage->click("T2", "btnUp");
    m_stage->trigger("actionSelect_All");
    m_stage->trigger("actionMerge_Selected");
    QCOMPARE(m_stage->titles().last(), text("1"));
}

void tst_MainWindowTracks::selectedRowsAreMutedAndUnmuted()
{
    m_stage->pasteTunes(3);
    m_stage->click("T1", "btnMute");
    m_stage->select({text("T1"), text("T2")});
    m_stage->trigger("actionMute_Selected");
    QCOMPARE(m_stage->muted(), text("T1 T2"));
    m_stage->trigger("actionMute_Selected");
    QCOMPARE(m_stage->muted(), QString());
}

void tst_MainWindowTracks::soloLeavesOneAudible()
{
    m_stage->pasteTunes(3);
    m_stage->choose("T2", "btnMute", "Solo");
    QCOMPARE(m_stage->muted(), text("T1 T3"));
    m_stage->choose("T2", "btnMute", "Solo");
    QCOMPARE(m_stage->muted(), QString());
}

void tst_MainWindowTracks::soloOnAMutedRow()
{
    m_stage->pasteTunes(3);
    for (const char *const id : {"T1", "T2", "T3"})
        m_stage->click(id, "btnMute");
    m_stage->choose("T2", "btnMute", "Solo");
    QCOMPARE(m_stage->muted(), text("T1 T3"));
    m_stage->choose("T3", "btnMute", "Solo");
    QCOMPARE(m_stage->muted(), text("T1 T2"));
}

void tst_MainWindowTracks::soloOnASingleRow()
{
    m_stage->pasteTunes(1);
    m_stage->choose("T1", "btnMute", "Solo");
    QCOMPARE(m_stage->muted(), QString());
    m_stage->click("T1", "btnMute");
    m_stage->choose("T1", "btnMute", "Solo");
    QCOMPARE(m_stage->muted(), QString());
}

void tst_MainWindowTracks::allRowsShareOneTimeAxis()
{
    m_stage->paste(abc("Short", "K:C\nC"));
    QCOMPARE(timeAxis("T1"), quint64{30240});
    m_stage->window().openFiles({m_stage->tune("Long")}); // four quarters
    QCOMPARE(timeAxis("T1"), quint64{120960});
    QCOMPARE(timeAxis("T2"), quint64{120960});
    m_stage->trigger("actionNew_Track");
    QCOMPARE(timeAxis("T3"), quint64{120960});
    m_stage->click("T2", "btnDelete");
    QCOMPARE(timeAxis("T1"), quint64{30240});
    m_stage->row("T1")->track() = m_stage->row("T3")->track();
    m_stage->row("T1")->onTrackChanged();
    m_stage->answers().press("No");
    m_stage->drop({m_stage->tune("Longest")});
    QCOMPARE(timeAxis("T1"), quint64{120960});
}

void tst_MainWindowTracks::openedRowsShareTheTimeAxis_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("isMidi");
    QTest::newRow("ABC") << text("actionOpen") << false;
    QTest::newRow("MIDI") << text("actionImport_MIDI") << true;
}

void tst_MainWindowTracks::openedRowsShareTheTimeAxis()
{
    QFETCH(QString, action);
    QFETCH(bool, isMidi);
    m_stage->paste(abc("Short", "K:C\nC/2"));
    m_stage->answers().choose(isMidi ? m_stage->midi("a.mid") : m_stage->tune("Long"));
    if (isMidi)
        m_stage->answers().press("No");
    m_stage->trigger(qPrintable(action));
    const quint64 longest = m_stage->row("T2")->track().length();
    QVERIFY(longest > 15120);
    QCOMPARE(timeAxis("T1"), longest);
    QCOMPARE(timeAxis("T2"), longest);
}

void tst_MainWindowTracks::rowsMadeOfOthersShareTheTimeAxis_data()
{
    QTest::addColumn<QString>("action");
    QTest::newRow("merged") << text("actionMerge_Selected");
    QTest::newRow("duplicated") << text("actionDuplicate_Selected");
}

void tst_MainWindowTracks::rowsMadeOfOthersShareTheTimeAxis()
{
    QFETCH(QString, action);
    m_stage->paste(abc("Short", "K:C\nC"));
    m_stage->paste(abc("Long", "K:C\nCC"));
    m_stage->trigger("actionSelect_All");
    m_stage->trigger(qPrintable(action));
    QCOMPARE(timeAxis("T3"), quint64{60480});
}

void tst_MainWindowTracks::removingSelectedRowsKeepsTheTimeAxis()
{
    m_stage->paste(abc("Short", "K:C\nC"));
    m_stage->paste(abc("Long", "K:C\nCC"));
    m_stage->select({text("T2")});
    m_stage->trigger("actionRemove_Selected");
    QCOMPARE(timeAxis("T1"), quint64{60480});
}

void tst_MainWindowTracks::aCancelledOpeningKeepsTheTimeAxis()
{
    m_stage->paste(abc("Short", "K:C\nC"));
    m_stage->paste(abc("Long", "K:C\nCC"));
    m_stage->select({text("T2")});
    m_stage->trigger("actionRemove_Selected");
    m_stage->answers().cancel();
    m_stage->trigger("actionOpen");
    QCOMPARE(timeAxis("T1"), quint64{60480});
}

/// Anybody may call a slot; it asks who did.
void tst_MainWindowTracks::slotsForRowsIgnoreOthers()
{
    m_stage->pasteTunes(2);
    MainWindow &window = m_stage->window();
    window.onTrackMuteChanged();
    window.onTrackSolo();
    window.onTrackInstrumentChanged();
    window.onTrackVolumeChanged();
    window.onTrackPanChanged();
    window.onTrackRemoved();
    window.onTrackChanged();
    window.onTrackSeek(5);
    window.onMoveTrackUp();
    window.onMoveTrackDown();
    QCOMPARE(ids(), text("T1 T2"));
    QCOMPARE(m_stage->muted(), QString());
}

void tst_MainWindowTracks::savingGoesInTheOrderOfIds()
{
    Settings::instance().setValue(Settings::DirAbcSave, m_stage->dir());
    m_stage->pasteTunes(10);
    m_stage->select({text("T2"), text("T10")});
    m_stage->answers().choose(m_stage->path("ten.abc")).choose(m_stage->path("two.abc"));
    m_stage->trigger("actionSave_Selected");
    QCOMPARE(m_stage->answers().seen(),
             QStringList({asked("10") + m_stage->dir(), asked("2") + m_stage->dir()}));
    QVERIFY(QFile::exists(m_stage->path("ten.abc")));
    for (int i = 0; i < 8; ++i)
        m_stage->answers().cancel();
    m_stage->trigger("actionSave_All");
    QCOMPARE(m_stage->answers().seen().value(2), asked("1") + m_stage->dir());
    QCOMPARE(m_stage->answers().seen().value(3), asked("3") + m_stage->dir());
}

MAIN_WINDOW_TEST_MAIN(tst_MainWindowTracks)
#include "tst_MainWindowTracks.moc"
