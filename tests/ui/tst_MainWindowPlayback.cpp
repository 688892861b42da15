#include "MainWindowStage.h"

#include "support/FakeFmod.h"

#include <QComboBox>
#include <QDial>
#include <QLabel>
#include <QRegularExpression>

/// What the main window tells the player, seen in what that asks of the sound library, whose clock
/// the test moves; and what the rows show of it.
class tst_MainWindowPlayback : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void playStartsAllRowsInTheOrderOfIds();
    void playStartsAnew();
    void stopStopsAll();
    void rowsAndTheirEditorsPlayAndStop();
    void rowsShowThatTheyPlay();
    void rowsShowThePosition();
    void aStartShowsTheBeginning();
    void unknownIdsAreIgnored();

    void mutedRowsPlayMuted();
    void muteIsForwarded();
    void soloIsForwarded();
    void volumeAndPanArePassed();
    void volumeAndPanAreForwarded();
    void theInstrumentIsForwarded();
    void seekingGoesToAll();
    void aRowThatHasEndedSeeksTheOthers();
    void aChangedTrackStartsAnew();
    void aChangedTrackThatDoesNotPlayStaysSilent();

    void aRemovedRowIsStopped();
    void selectedRowsAreStopped();
    void clearingStopsAll();

    void aSoundProblemIsShown();
    void theWindowClosesWhileItPlays();

private:
    /// Plays all rows and waits until the last of them does.
    void play();
    /// Moves the clock on, in steps that let every note be scheduled.
    void advance(int milliseconds);
    QStringList calls(const char *function) const { return m_fake->calls(text(function)); }
    /// The ids of the groups made, in order: one for each track that was started.
    QString started() const;
    /// The sample files opened so far.
    QString opened() const;
    bool isShownPlaying(const char *id) const;
    int markerPlace(const char *id) const;

    std::unique_ptr<FakeFmod> m_fake;
    std::unique_ptr<MainWindowStage> m_stage;
    quint64 m_clock = 0;
};

void tst_MainWindowPlayback::init()
{
    m_fake = std::make_unique<FakeFmod>();
    m_stage = std::make_unique<MainWindowStage>();
    m_stage->window().findChild<QComboBox *>(text("instrumentList"))->setCurrentIndex(1);
    m_clock = 0;
}

void tst_MainWindowPlayback::cleanup()
{
    m_stage.reset();
    m_fake.reset();
}

void tst_MainWindowPlayback::play()
{
    m_stage->trigger("actionPlay");
    for (const QString &id : m_stage->ids())
        QTRY_VERIFY(isShownPlaying(id.toUtf8().constData()));
}

/// The worker makes a pass each millisecond; two updates after the clock was set, one is over.
void tst_MainWindowPlayback::advance(int milliseconds)
{
    for (int i = 0; i < milliseconds; i += 50) {
        m_clock += 2400;
        m_fake->setClock(m_clock);
        const int before = m_fake->callCount(text("FMOD_System_Update"));
        QTRY_VERIFY(m_fake->callCount(text("FMOD_System_Update")) > before + 1);
    }
}

QString tst_MainWindowPlayback::started() const
{
    QStringList ids;
    for (const QString &call : calls("FMOD_System_CreateChannelGroup"))
        ids.append(call.section(QLatin1Char('"'), 1, 1));
    return ids.join(QLatin1Char(' '));
}

QString tst_MainWindowPlayback::opened() const
{
    QStringList names;
    for (const QString &call : calls("FMOD_System_CreateSound"))
        names.append(call.section(QLatin1Char('"'), 1, 1).section(QLatin1Char('/'), -1));
    return names.join(QLatin1Char(' '));
}

/// The strip's marker is there while it plays.
bool tst_MainWindowPlayback::isShownPlaying(const char *id) const
{
    const auto markers = m_stage->control<QWidget>(id, "wVis")
                             ->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    return !markers.isEmpty() && !markers.first()->isHidden();
}

int tst_MainWindowPlayback::markerPlace(const char *id) const
{
    return m_stage->control<QWidget>(id, "wVis")->findChild<QWidget *>()->x();
}

void tst_MainWindowPlayback::playStartsAllRowsInTheOrderOfIds()
{
    m_stage->pasteTunes(10);
    play();
    QCOMPARE(started(), text("T1 T10 T2 T3 T4 T5 T6 T7 T8 T9"));
}

void tst_MainWindowPlayback::playStartsAnew()
{
    m_stage->pasteTunes(1);
    play();
    advance(500);
    m_fake->clearCalls();
    m_stage->trigger("actionPlay");
    QTRY_COMPARE(started(), text("T1"));
    QVERIFY(!calls("FMOD_Channel_Stop").isEmpty());
}

void tst_MainWindowPlayback::stopStopsAll()
{
    m_stage->pasteTunes(2);
    play();
    advance(200);
    m_stage->trigger("actionStop");
    QTRY_VERIFY(!isShownPlaying("T1"));
    QVERIFY(!isShownPlaying("T2"));
    QVERIFY(!calls("FMOD_Channel_Stop").isEmpty());
}

void tst_MainWindowPlayback::rowsAndTheirEditorsPlayAndStop()
{
    m_stage->pasteTunes(2);
    emit m_stage->row("T2")->trackPlay();
    QTRY_VERIFY(isShownPlaying("T2"));
    QCOMPARE(started(), text("T1 T2"));
    emit m_stage->row("T1")->trackStop();
    QTRY_VERIFY(!isShownPlaying("T1"));
    QTRY_VERIFY(!isShownPlaying("T2"));
}

void tst_MainWindowPlayback::rowsShowThatTheyPlay()
{
    m_stage->paste(abc("Short", "K:C\nC"));
    m_stage->paste(abc("Long", "K:C\nCDEFGABc"));
    QVERIFY(!isShownPlaying("T1"));
    play();
    advance(1000);
    QTRY_VERIFY(!isShownPlaying("T1"));
    QVERIFY(isShownPlaying("T2"));
    advance(4000);
    QTRY_VERIFY(!isShownPlaying("T2"));
}

/// Ten quarters at 120 to the minute last five seconds.
void tst_MainWindowPlayback::rowsShowThePosition()
{
    m_stage->paste(abc("Long", "K:C\nC10"));
    auto *const strip = m_stage->control<QWidget>("T1", "wVis");
    strip->setFixedWidth(200);
    play();
    advance(2600); // it starts 100 ms late
    QTRY_COMPARE(markerPlace("T1"), 100);
    m_stage->trigger("actionStop");
    QTRY_COMPARE(markerPlace("T1"), 0);
}

void tst_MainWindowPlayback::aStartShowsTheBeginning()
{
    m_stage->pasteTunes(1);
    m_stage->window().onTrackPositionChanged(text("T1"), 60480);
    QVERIFY(markerPlace("T1") > 0);
    m_stage->window().onTrackStarted(text("T1"));
    QCOMPARE(markerPlace("T1"), 0);
    QVERIFY(isShownPlaying("T1"));
}

void tst_MainWindowPlayback::unknownIdsAreIgnored()
{
    m_stage->pasteTunes(1);
    MainWindow &window = m_stage->window();
    window.onTrackStarted(text("T7"));
    window.onTrackPositionChanged(text("T7"), 100);
    window.onNotePressed(text("T7"), 0);
    window.onNoteReleased(text("T7"), 0);
    window.onTrackStopped(text("T7"));
    window.onNotePressed(text("T1"), 4000000000U);
    window.onNoteReleased(text("T1"), 4000000000U);
    QVERIFY(!isShownPlaying("T1"));
}

void tst_MainWindowPlayback::mutedRowsPlayMuted()
{
    m_stage->pasteTunes(1);
    m_stage->click("T1", "btnMute");
    play();
    advance(500);
    QVERIFY(calls("FMOD_System_PlaySound").isEmpty());
    m_stage->click("T1", "btnMute");
    advance(1000);
    QVERIFY(!calls("FMOD_System_PlaySound").isEmpty());
}

void tst_MainWindowPlayback::muteIsForwarded()
{
    m_stage->pasteTunes(1);
    play();
    QTRY_COMPARE(calls("FMOD_System_PlaySound").size(), 1);
    m_stage->select({text("T1")});
    m_stage->trigger("actionMute_Selected");
    advance(1000);
    QCOMPARE(calls("FMOD_System_PlaySound").size(), 1);
}

void tst_MainWindowPlayback::soloIsForwarded()
{
    m_stage->pasteTunes(2);
    play();
    QTRY_COMPARE(calls("FMOD_System_PlaySound").size(), 2);
    m_stage->choose("T1", "btnMute", "Solo");
    advance(500);
    QCOMPARE(calls("FMOD_System_PlaySound").size(), 3);
    m_stage->choose("T2", "btnMute", "Solo");
    advance(500);
    QCOMPARE(calls("FMOD_System_PlaySound").size(), 4);
}

void tst_MainWindowPlayback::volumeAndPanArePassed()
{
    m_stage->pasteTunes(1);
    m_stage->control<QDial>("T1", "dlVolume")->setValue(50);
    m_stage->control<QDial>("T1", "dlPan")->setValue(-10);
    play();
    QTRY_VERIFY(!calls("FMOD_Channel_SetPan").isEmpty());
    QVERIFY(calls("FMOD_Channel_SetVolume").first().endsWith(text(", 0.5)")));
    QVERIFY(calls("FMOD_Channel_SetPan").first().endsWith(text(", -1)")));
}

void tst_MainWindowPlayback::volumeAndPanAreForwarded()
{
    m_stage->pasteTunes(1);
    play();
    QTRY_VERIFY(!calls("FMOD_Channel_SetPan").isEmpty());
    m_stage->control<QDial>("T1", "dlVolume")->setValue(25);
    m_stage->control<QDial>("T1", "dlPan")->setValue(10);
    advance(600);
    QCOMPARE(calls("FMOD_Channel_SetPan").size(), 2);
    QVERIFY(
        calls("FMOD_Channel_SetVolume").contains(text("FMOD_Channel_SetVolume(channel2, 0.25)")));
    QVERIFY(calls("FMOD_Channel_SetPan").last().endsWith(text(", 1)")));
}

void tst_MainWindowPlayback::theInstrumentIsForwarded()
{
    m_stage->pasteTunes(1);
    play();
    QTRY_COMPARE(opened(), text("flute.wav"));
    m_stage->control<QComboBox>("T1", "cboInstrument")->setCurrentIndex(2);
    advance(600);
    QCOMPARE(opened(), text("flute.wav lute.wav"));
}

void tst_MainWindowPlayback::seekingGoesToAll()
{
    m_stage->paste(abc("One", "K:C\nC4C4C4C4"));
    m_stage->paste(abc("Two", "K:C\nC4C4C4C4"));
    play();
    QTRY_COMPARE(calls("FMOD_System_PlaySound").size(), 2);
    emit m_stage->row("T1")->trackSeek(3 * 120960);
    QTRY_COMPARE(calls("FMOD_System_PlaySound").size(), 4);
}

void tst_MainWindowPlayback::aRowThatHasEndedSeeksTheOthers()
{
    m_stage->paste(abc("Short", "K:C\nC"));
    m_stage->paste(abc("Long", "K:C\nC8 D8"));
    play();
    advance(1000);
    QTRY_VERIFY(!isShownPlaying("T1"));
    QCOMPARE(calls("FMOD_System_PlaySound").size(), 2);
    emit m_stage->row("T1")->trackSeek(241920);
    QTRY_COMPARE(calls("FMOD_System_PlaySound").size(), 3);
}

void tst_MainWindowPlayback::aChangedTrackStartsAnew()
{
    m_stage->pasteTunes(2);
    play();
    advance(200);
    m_fake->clearCalls();
    m_stage->row("T2")->onTransposeUp();
    QTRY_COMPARE(started(), text("T2"));
}

void tst_MainWindowPlayback::aChangedTrackThatDoesNotPlayStaysSilent()
{
    m_stage->pasteTunes(1);
    m_stage->row("T1")->onTransposeUp();
    advance(200);
    QCOMPARE(started(), QString());
}

void tst_MainWindowPlayback::aRemovedRowIsStopped()
{
    m_stage->pasteTunes(2);
    play();
    QTRY_COMPARE(calls("FMOD_System_PlaySound").size(), 2);
    m_stage->click("T2", "btnDelete");
    advance(500);
    QCOMPARE(calls("FMOD_System_PlaySound").size(), 3);
    QVERIFY(isShownPlaying("T1"));
}

void tst_MainWindowPlayback::selectedRowsAreStopped()
{
    m_stage->pasteTunes(2);
    play();
    QTRY_COMPARE(calls("FMOD_System_PlaySound").size(), 2);
    m_stage->select({text("T1")});
    m_stage->trigger("actionRemove_Selected");
    advance(500);
    QCOMPARE(calls("FMOD_System_PlaySound").size(), 3);
}

void tst_MainWindowPlayback::clearingStopsAll()
{
    m_stage->pasteTunes(1);
    play();
    QTRY_COMPARE(calls("FMOD_System_PlaySound").size(), 1);
    m_stage->trigger("actionClear_Tracks");
    QTRY_VERIFY(!calls("FMOD_Channel_Stop").isEmpty());
    advance(500);
    QCOMPARE(calls("FMOD_System_PlaySound").size(), 1);
}

/// The fake's output cannot be started, and neither can, without a device, the one in its place.
void tst_MainWindowPlayback::aSoundProblemIsShown()
{
    const auto *label = m_stage->window().findChild<QLabel *>(text("lblSoundProblem"));
    QVERIFY(!label->isVisible());
    m_stage->close();
    m_fake->fail(text("FMOD_System_Init"), 1, 51);
    m_stage->reopen();
    label = m_stage->window().findChild<QLabel *>(text("lblSoundProblem"));
    QTRY_VERIFY(label->isVisible());
    QVERIFY(!label->text().isEmpty());
    QCOMPARE(label->textFormat(), Qt::PlainText);
}

void tst_MainWindowPlayback::theWindowClosesWhileItPlays()
{
    m_stage->pasteTunes(3);
    play();
    advance(200);
    m_stage->close();
    QVERIFY(!calls("FMOD_System_Release").isEmpty());
}

MAIN_WINDOW_TEST_MAIN(tst_MainWindowPlayback)
#include "tst_MainWindowPlayback.moc"
