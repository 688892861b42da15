#include "model/TrackEvent.h"

#include "model/Ticks.h"

#include <QtTest>

class TestTrackEvent : public QObject {
    Q_OBJECT

private slots:
    void isEmptyByDefault()
    {
        const TrackEvent event;
        QCOMPARE(event.type(), TrackEvent::None);
        QCOMPARE(event.time(), quint64{0});
        QVERIFY(!event.isNote());
        verifyFields(event, 0, 0, 0, 0, 0, 0, 0, 0);
    }
    void holdsTheTypesInOrder()
    {
        QCOMPARE(quint32{TrackEvent::None}, 0U);
        QCOMPARE(quint32{TrackEvent::Note}, 1U);
        QCOMPARE(quint32{TrackEvent::Tempo}, 2U);
        QCOMPARE(quint32{TrackEvent::Key}, 3U);
        QCOMPARE(quint32{TrackEvent::UnitLength}, 4U);
        QCOMPARE(quint32{TrackEvent::Meter}, 5U);
    }
    void answersNothingThatItsTypeDoesNotCarry()
    {
        verifyFields(TrackEvent::makeNote(60, 5, 30240), 60, 30240, 0, 0, 0, 0, 0, 0);
        verifyFields(TrackEvent::makeTempo(5, 1, 4, 120), 0, 0, 1, 4, 120, 3628800, 0, 0);
        verifyFields(TrackEvent::makeKey(5, 8, 1), 0, 0, 0, 0, 0, 0, 8, 1);
        verifyFields(TrackEvent::makeUnitLength(5, 1, 8), 0, 0, 1, 8, 0, 0, 0, 0);
        verifyFields(TrackEvent::makeMeter(5, 6, 8), 0, 0, 6, 8, 0, 0, 0, 0);
    }
    void keepsItsTime()
    {
        TrackEvent event = TrackEvent::makeMeter(5, 6, 8);
        QCOMPARE(event.time(), quint64{5});
        event.setTime(~quint64{0});
        QCOMPARE(event.time(), ~quint64{0});
    }
    void changesTheDurationOfNotesOnly()
    {
        TrackEvent note = TrackEvent::makeNote(60, 0, 10);
        note.addDuration(5);
        QCOMPARE(note.duration(), quint64{15});
        note.setDuration(quint64{1} << 40);
        QCOMPARE(note.duration(), quint64{1} << 40);
        const TrackEvent tempo = TrackEvent::makeTempo(0, 1, 4, 120);
        TrackEvent changed = tempo;
        changed.setDuration(7);
        changed.addDuration(7);
        QCOMPARE(changed, tempo);
    }

    void computesTempo_data()
    {
        QTest::addColumn<quint32>("num");
        QTest::addColumn<quint32>("den");
        QTest::addColumn<quint32>("bpm");
        QTest::addColumn<quint64>("ticksPerMinute");
        QTest::newRow("1/4=120") << 1U << 4U << 120U << quint64{3628800};
        QTest::newRow("3/8=60") << 3U << 8U << 60U << quint64{2721600};
        QTest::newRow("divides before it multiplies") << 1U << 7U << 7U << quint64{120960};
        QTest::newRow("a beat below a tick") << 1U << 120961U << 60U << quint64{0};
        QTest::newRow("a denominator of 0") << 1U << 0U << 120U << quint64{0};
        QTest::newRow("wraps in 32 bits") << 40000U << 1U << 2U << quint64{1086865408};
        QTest::newRow("wraps twice") << 1U << 1U << 4294967295U << quint64{4294846336};
    }
    void computesTempo()
    {
        QFETCH(quint32, num);
        QFETCH(quint32, den);
        QFETCH(quint32, bpm);
        QTEST(TrackEvent::makeTempo(0, num, den, bpm).ticksPerMinute(), "ticksPerMinute");
    }
    void computesTicks()
    {
        QCOMPARE(Ticks::ofFraction(4, 4), quint64{120960});
        QCOMPARE(Ticks::ofFraction(3, 4), quint64{90720});
        QCOMPARE(Ticks::ofFraction(6, 8), quint64{90720});
        QCOMPARE(Ticks::ofFraction(4, 0), quint64{0});
        QCOMPARE(Ticks::ofFraction(4294967295U, 1), quint64{519519244003200});
    }
    void comparesAllFields()
    {
        const TrackEvent note = TrackEvent::makeNote(60, 5, 30240);
        QVERIFY(note == TrackEvent::makeNote(60, 5, 30240));
        QVERIFY(note != TrackEvent::makeNote(61, 5, 30240));
        QVERIFY(note != TrackEvent::makeNote(60, 6, 30240));
        QVERIFY(note != TrackEvent::makeNote(60, 5, 30241));
        QVERIFY(TrackEvent::makeMeter(0, 1, 4) != TrackEvent::makeUnitLength(0, 1, 4));
        QVERIFY(TrackEvent::makeKey(0, 7, 0) != TrackEvent::makeKey(0, 7, 1));
        QVERIFY(TrackEvent::makeTempo(0, 1, 4, 90) != TrackEvent::makeTempo(0, 1, 4, 91));
    }

private:
    static void verifyFields(const TrackEvent &event, quint32 note, quint64 duration, quint32 num,
                             quint32 den, quint32 bpm, quint64 ticksPerMinute, quint32 key,
                             quint32 mode)
    {
        QCOMPARE(event.note(), note);
        QCOMPARE(event.duration(), duration);
        QCOMPARE(event.num(), num);
        QCOMPARE(event.den(), den);
        QCOMPARE(event.bpm(), bpm);
        QCOMPARE(event.ticksPerMinute(), ticksPerMinute);
        QCOMPARE(event.keyIndex(), key);
        QCOMPARE(event.mode(), mode);
    }
};

QTEST_APPLESS_MAIN(TestTrackEvent)
#include "tst_TrackEvent.moc"
