#include "Player/ActiveNote.h"
#include "support/FakeFmod.h"

#include <QtTest>

namespace {

void expectOk(FMOD_RESULT result)
{
    QCOMPARE(result, FMOD_OK);
}

/// A fake system with one playing channel per note.
class Stage {
public:
    Stage()
    {
        expectOk(FMOD::System_Create(&system));
        expectOk(system->createSound("a.wav", FMOD_CREATESAMPLE, nullptr, &sound));
    }
    ~Stage()
    {
        expectOk(sound->release());
        expectOk(system->release());
    }
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;

    /// Starts at 1000, ends at 2000 and fades for 400 frames unless told otherwise.
    ActiveNote note(quint32 eventIndex, quint64 release = 2000, quint64 fade = 400)
    {
        ActiveNote made;
        expectOk(system->playSound(FMOD_CHANNEL_FREE, sound, true, &made.channel));
        made.startDsp = 1000;
        made.releaseDsp = release;
        made.fadeSamples = fade;
        made.fadeEndDsp = release + fade;
        made.volume = 0.5F;
        made.trackId = QStringLiteral("T1");
        made.eventIndex = eventIndex;
        fake.clearCalls();
        return made;
    }

    FakeFmod fake;
    FMOD::System *system = nullptr;
    FMOD::Sound *sound = nullptr;
};

class Listener final : public NoteObserver {
public:
    void notePressed(const QString &trackId, quint32 eventIndex) override
    {
        heard.append(QStringLiteral("+%1:%2").arg(trackId).arg(eventIndex));
    }
    void noteReleased(const QString &trackId, quint32 eventIndex) override
    {
        heard.append(QStringLiteral("-%1:%2").arg(trackId).arg(eventIndex));
    }

    QStringList heard;
};

QStringList heardAt(ActiveNotes &notes, quint64 now)
{
    Listener listener;
    fadeAndStop(notes, now, expectOk, &listener);
    return listener.heard;
}

QStringList list(const char *words)
{
    return QString::fromLatin1(words).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}

} // namespace

class tst_ActiveNote : public QObject {
    Q_OBJECT

private slots:
    void reportsTheStartOnce();
    void reportsTheEndOnce();
    void holdsTheEndBackInThePassOfTheStart();
    void reportsBothInOnePassWhenTheFadeIsOver();
    void fadesAlongAStraightLine_data();
    void fadesAlongAStraightLine();
    void stopsAndForgetsBehindTheFade();
    void stopsBeforeItReportsTheEnd();
    void neverDividesByAFadeOf0();
    void visitsNotesInOrderAndKeepsIt();
    void reportsAnEndBeforeTheStartThatFollows();
    void worksWithoutAnObserver();
    void leavesANoteWithoutAChannelAlone();
    void reportsResultsAndGoesOn();
};

void tst_ActiveNote::reportsTheStartOnce()
{
    Stage stage;
    ActiveNotes notes{stage.note(3)};
    QCOMPARE(heardAt(notes, 999), QStringList());
    QCOMPARE(heardAt(notes, 1000), list("+T1:3"));
    QVERIFY(notes.front().pressed);
    QCOMPARE(heardAt(notes, 1001), QStringList());
    QCOMPARE(stage.fake.calls(), QStringList());
}

void tst_ActiveNote::reportsTheEndOnce()
{
    Stage stage;
    ActiveNotes notes{stage.note(3)};
    QCOMPARE(heardAt(notes, 1999), list("+T1:3"));
    QCOMPARE(heardAt(notes, 2000), list("-T1:3"));
    QVERIFY(notes.front().released);
    QCOMPARE(heardAt(notes, 2001), QStringList());
    QCOMPARE(heardAt(notes, 2401), QStringList());
}

void tst_ActiveNote::holdsTheEndBackInThePassOfTheStart()
{
    Stage stage;
    ActiveNotes notes{stage.note(3)};
    QCOMPARE(heardAt(notes, 2100), list("+T1:3"));
    QVERIFY(!notes.front().released);
    QCOMPARE(heardAt(notes, 2101), list("-T1:3"));
}

void tst_ActiveNote::reportsBothInOnePassWhenTheFadeIsOver()
{
    Stage stage;
    ActiveNotes notes{stage.note(3)};
    QCOMPARE(heardAt(notes, 2401), list("+T1:3|-T1:3"));
    QVERIFY(notes.empty());
}

void tst_ActiveNote::fadesAlongAStraightLine_data()
{
    QTest::addColumn<quint64>("now");
    QTest::addColumn<QString>("volume");

    QTest::newRow("end of the note") << quint64(2000) << QStringLiteral("0.5");
    QTest::newRow("a quarter") << quint64(2100) << QStringLiteral("0.375");
    QTest::newRow("half") << quint64(2200) << QStringLiteral("0.25");
    QTest::newRow("end of the fade") << quint64(2400) << QStringLiteral("0");
}

void tst_ActiveNote::fadesAlongAStraightLine()
{
    QFETCH(quint64, now);
    QFETCH(QString, volume);
    Stage stage;
    ActiveNotes notes{stage.note(0)};
    fadeAndStop(notes, now, expectOk);
    QCOMPARE(stage.fake.calls(),
             QStringList(QStringLiteral("FMOD_Channel_SetVolume(channel1, %1)").arg(volume)));
    QCOMPARE(notes.size(), std::size_t(1));
}

void tst_ActiveNote::stopsAndForgetsBehindTheFade()
{
    Stage stage;
    ActiveNotes notes{stage.note(0)};
    fadeAndStop(notes, 2401, expectOk);
    QCOMPARE(stage.fake.calls(), list("FMOD_Channel_Stop(channel1)"));
    QVERIFY(notes.empty());
}

void tst_ActiveNote::stopsBeforeItReportsTheEnd()
{
    class : public NoteObserver {
    public:
        void notePressed(const QString &, quint32) override { }
        void noteReleased(const QString &, quint32) override { heard = fake->calls(); }

        FakeFmod *fake = nullptr;
        QStringList heard;
    } observer;
    Stage stage;
    observer.fake = &stage.fake;
    ActiveNotes notes{stage.note(0)};
    fadeAndStop(notes, 2401, expectOk, &observer);
    QCOMPARE(observer.heard, list("FMOD_Channel_Stop(channel1)"));
}

void tst_ActiveNote::neverDividesByAFadeOf0()
{
    Stage stage;
    ActiveNotes notes{stage.note(0, 2000, 0)};
    fadeAndStop(notes, 2000, expectOk);
    QCOMPARE(stage.fake.calls(), list("FMOD_Channel_SetVolume(channel1, 0)"));
    QCOMPARE(notes.size(), std::size_t(1));
    stage.fake.clearCalls();
    fadeAndStop(notes, 2001, expectOk);
    QCOMPARE(stage.fake.calls(), list("FMOD_Channel_Stop(channel1)"));
    QVERIFY(notes.empty());
}

void tst_ActiveNote::visitsNotesInOrderAndKeepsIt()
{
    Stage stage;
    ActiveNotes notes{stage.note(0), stage.note(1, 1500), stage.note(2), stage.note(3, 1500)};
    QCOMPARE(heardAt(notes, 1901), list("+T1:0|+T1:1|-T1:1|+T1:2|+T1:3|-T1:3"));
    QCOMPARE(notes.size(), std::size_t(2));
    QCOMPARE(notes.at(0).eventIndex, 0U);
    QCOMPARE(notes.at(1).eventIndex, 2U);
    QCOMPARE(stage.fake.calls(), list("FMOD_Channel_Stop(channel2)|FMOD_Channel_Stop(channel4)"));
}

void tst_ActiveNote::reportsAnEndBeforeTheStartThatFollows()
{
    Stage stage;
    ActiveNotes notes{stage.note(0), stage.note(1, 3000)};
    notes.at(0).pressed = true;
    notes.at(1).startDsp = 2000;
    QCOMPARE(heardAt(notes, 2000), list("-T1:0|+T1:1"));
}

void tst_ActiveNote::worksWithoutAnObserver()
{
    Stage stage;
    ActiveNotes notes{stage.note(0)};
    fadeAndStop(notes, 2100, expectOk);
    QVERIFY(notes.front().pressed);
}

void tst_ActiveNote::leavesANoteWithoutAChannelAlone()
{
    Stage stage;
    ActiveNotes notes{stage.note(7)};
    notes.front().channel = nullptr;
    QCOMPARE(heardAt(notes, 1500), list("+T1:7"));
    QCOMPARE(heardAt(notes, 2100), list("-T1:7"));
    QCOMPARE(heardAt(notes, 2401), QStringList());
    QVERIFY(notes.empty());
    QCOMPARE(stage.fake.calls(), QStringList());
}

void tst_ActiveNote::reportsResultsAndGoesOn()
{
    Stage stage;
    ActiveNotes notes{stage.note(0), stage.note(1)};
    stage.fake.fail(QStringLiteral("FMOD_Channel_SetVolume"), 1, FMOD_ERR_INVALID_HANDLE);
    std::vector<FMOD_RESULT> results;
    fadeAndStop(notes, 2100, [&results](FMOD_RESULT result) { results.push_back(result); });
    QVERIFY((results == std::vector<FMOD_RESULT>{FMOD_ERR_INVALID_HANDLE, FMOD_OK}));
    QCOMPARE(notes.size(), std::size_t(2));
}

QTEST_APPLESS_MAIN(tst_ActiveNote)
#include "tst_ActiveNote.moc"
