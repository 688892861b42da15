#include "model/Track.h"

#include <QtTest>

namespace {

using E = TrackEvent;

Track sorted(const QVector<TrackEvent> &events)
{
    Track track;
    for (const TrackEvent &event : events)
        track.addEvent(event);
    track.sortEvents();
    return track;
}

} // namespace

class TestTrack : public QObject {
    Q_OBJECT

private slots:
    void isEmptyByDefault()
    {
        const Track track;
        QCOMPARE(track.ticksPerMinute(), quint64{3628800});
        QCOMPARE(track.measureLength(), 120960U);
        QCOMPARE(track.beatsPerMeasure(), 4U);
        QCOMPARE(track.length(), quint64{0});
        QCOMPARE(track.noteCount(), 0);
        QCOMPARE(track.eventCount(), 0);
        QCOMPARE(track.duration(), 0.0);
        QCOMPARE(track.fileName(), QString());
        QVERIFY(track.allHeaders().isEmpty());
    }
    void computesItsDurationInSeconds()
    {
        QCOMPARE(sorted({E::makeNote(60, 0, 7257600)}).duration(), 120.0);
    }
    void lastsNothingWithoutATempo()
    {
        Track track = sorted({E::makeNote(60, 0, 7257600)});
        track.setTicksPerMinute(0);
        QCOMPARE(track.duration(), 0.0);
    }
    void setsLengthAndBeatsOfTheMeasureTogether()
    {
        Track track;
        track.setMeasure(90720, 3);
        QCOMPARE(track.measureLength(), 90720U);
        QCOMPARE(track.beatsPerMeasure(), 3U);
    }

    void sortsByTimeThenDuration()
    {
        const E longNote = E::makeNote(60, 0, 30240);
        const E tempo = E::makeTempo(0, 1, 4, 90);
        const E shortNote = E::makeNote(62, 0, 15120);
        const E earlier = E::makeNote(64, 30240, 1);
        const E later = E::makeMeter(60480, 3, 4);
        QCOMPARE(sorted({later, longNote, earlier, tempo, shortNote}).events(),
                 QVector<E>({tempo, shortNote, longNote, earlier, later}));
    }
    void keepsTheOrderOfEqualEvents()
    {
        const QVector<E> events{E::makeTempo(0, 1, 4, 90), E::makeMeter(0, 3, 4),
                                E::makeNote(64, 0, 5), E::makeNote(60, 0, 5),
                                E::makeNote(62, 0, 5)};
        QCOMPARE(sorted(events).events(), events);
    }
    void keepsTheOrderOfManyEqualEvents()
    {
        QVector<E> events;
        for (quint32 i = 0; i < 200; ++i)
            events << E::makeNote(21 + i * 37 % 88, 10, 5);
        const E first = E::makeNote(60, 0, 5);
        QCOMPARE(sorted(events + QVector<E>{first}).events(), QVector<E>{first} + events);
    }
    void sortsWhatStartsTogetherAmongNotesInOrderOfTime()
    {
        const E first = E::makeNote(60, 0, 900);
        const E brief = E::makeNote(61, 945, 5);
        const E longA = E::makeNote(62, 945, 7);
        const E longB = E::makeNote(63, 945, 7);
        const E tempo = E::makeTempo(945, 1, 4, 90);
        const E last = E::makeNote(64, 1890, 1);
        const E lastLong = E::makeNote(65, 1890, 2);
        QCOMPARE(sorted({first, longA, longB, tempo, brief, lastLong, last}).events(),
                 QVector<E>({first, tempo, brief, longA, longB, last, lastLong}));
    }
    void computesItsLengthWhenSorting()
    {
        QCOMPARE(sorted({E::makeNote(60, 90720, 30240)}).length(), quint64{120960});
        QCOMPARE(sorted({E::makeNote(60, 0, 200000), E::makeNote(60, 90720, 30240)}).length(),
                 quint64{200000});
        QCOMPARE(sorted({E::makeNote(60, 0, 5), E::makeMeter(70, 3, 4)}).length(), quint64{70});
        QCOMPARE(sorted({}).length(), quint64{0});
    }
    void countsRemovedEventsIntoItsLength()
    {
        QCOMPARE(sorted({E::makeNote(60, 0, 5), E::makeTempo(70, 1, 4, 120)}).length(),
                 quint64{70});
    }
    void dropsATempoThatIsInForce()
    {
        const E slow = E::makeTempo(30240, 1, 4, 100);
        QCOMPARE(sorted({E::makeTempo(0, 1, 4, 120), E::makeTempo(30240, 1, 4, 90), slow}).events(),
                 QVector<E>({slow}));
        const E other = E::makeTempo(60480, 1, 4, 120);
        QCOMPARE(sorted({slow, E::makeTempo(45360, 1, 8, 200), other}).events(),
                 QVector<E>({slow, other}));
    }
    void dropsATempoInForceEvenBehindAnotherAtOneTime()
    {
        // The first of the two is replaced by the second, which changes nothing.
        QCOMPARE(sorted({E::makeTempo(0, 1, 4, 90), E::makeTempo(0, 1, 4, 120)}).events(),
                 QVector<E>());
    }
    void dropsAControlEventThatTheNextReplaces()
    {
        const E meter = E::makeMeter(5, 3, 4);
        QCOMPARE(sorted({E::makeMeter(5, 6, 8), E::makeMeter(5, 2, 4), meter}).events(),
                 QVector<E>({meter}));
        const E key = E::makeKey(5, 8, 0);
        QCOMPARE(sorted({E::makeKey(5, 7, 0), key}).events(), QVector<E>({key}));
        const E unit = E::makeUnitLength(5, 1, 8);
        QCOMPARE(sorted({E::makeUnitLength(5, 1, 4), unit}).events(), QVector<E>({unit}));
        QCOMPARE(sorted({E(), E()}).events(), QVector<E>({E()}));
    }
    void keepsControlEventsThatAnotherTypeParts()
    {
        const QVector<E> events{E::makeMeter(5, 3, 4), E::makeKey(5, 8, 0), E::makeMeter(5, 2, 4)};
        QCOMPARE(sorted(events).events(), events);
    }
    void keepsEveryNote()
    {
        const QVector<E> events{E::makeNote(60, 0, 5), E::makeNote(60, 0, 5)};
        const Track track = sorted(events);
        QCOMPARE(track.events(), events);
        QCOMPARE(track.noteCount(), 2);
    }

    void countsNotesOnly()
    {
        Track track;
        track.addEvent(E::makeTempo(0, 1, 4, 90));
        QCOMPARE(track.noteCount(), 0);
        track.addEvent(E::makeNote(60, 0, 5));
        QCOMPARE(track.noteCount(), 1);
        QCOMPARE(track.eventCount(), 2);
    }
    void sharesNoChangesWithItsCopies()
    {
        Track track = sorted({E::makeNote(60, 0, 5)});
        Track copy = track;
        QVERIFY(copy == track);
        copy.event(0).setDuration(7);
        copy.addHeader(QStringLiteral("T"), QStringLiteral("x"));
        QCOMPARE(track.event(0).duration(), quint64{5});
        QVERIFY(!track.hasHeader(QStringLiteral("T")));
        QVERIFY(copy != track);
    }

    void keepsSeveralValuesOfAHeader()
    {
        const QString t = QStringLiteral("T");
        Track track;
        QVERIFY(!track.hasHeader(t));
        QCOMPARE(track.header(t), QString());
        QCOMPARE(track.header(t, QStringLiteral("none")), QStringLiteral("none"));
        track.addHeader(t, QStringLiteral("first"));
        track.addHeader(t, QStringLiteral("second"));
        QVERIFY(track.hasHeader(t));
        QCOMPARE(track.header(t), QStringLiteral("second"));
        QCOMPARE(track.header(t, QStringLiteral("none")), QStringLiteral("second"));
        QCOMPARE(track.headers(t),
                 QStringList({QStringLiteral("second"), QStringLiteral("first")}));
        track.setHeader(t, QStringLiteral("x"));
        QCOMPARE(track.headers(t), QStringList({QStringLiteral("x")}));
    }
    void keepsAnEqualValueTwice()
    {
        Track track;
        track.addHeader(QStringLiteral("T"), QStringLiteral("x"));
        track.addHeader(QStringLiteral("T"), QStringLiteral("x"));
        QCOMPARE(track.headers(QStringLiteral("T")).size(), 2);
    }
    void travelsInAVariant()
    {
        QVERIFY(QMetaTypeId2<Track>::Defined);
        const Track track = sorted({E::makeNote(60, 0, 5)});
        QVERIFY(QVariant::fromValue(track).value<Track>() == track);
        QCOMPARE(QByteArray(QMetaType::typeName(qMetaTypeId<Track>())), QByteArray("Track"));
    }
};

QTEST_APPLESS_MAIN(TestTrack)
#include "tst_Track.moc"
