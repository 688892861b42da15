#include "model/TrackMerge.h"
#include "support/Thrown.h"

#include <QtTest>

namespace {

using E = TrackEvent;

const QString Refusal = QStringLiteral("Cannot merge tracks with different tempos");

Track track(const QVector<TrackEvent> &events)
{
    Track track;
    for (const TrackEvent &event : events)
        track.addEvent(event);
    track.sortEvents();
    return track;
}

} // namespace

class tst_TrackMerge : public QObject {
    Q_OBJECT

private slots:
    void allEventsLieInTheOrderOfTime()
    {
        const Track merged =
            mergeTracks({track({E::makeNote(60, 0, 30240), E::makeNote(60, 60480, 1)}),
                         track({E::makeNote(72, 30240, 30240)})});
        QCOMPARE(merged.events(),
                 QVector<E>({E::makeNote(60, 0, 30240), E::makeNote(72, 30240, 30240),
                             E::makeNote(60, 60480, 1)}));
        QCOMPARE(merged.noteCount(), 3);
        QCOMPARE(merged.length(), quint64{60481});
    }
    void atOneTimeTheFirstTrackComesFirst()
    {
        const Track merged = mergeTracks({track({E::makeNote(72, 0, 1), E::makeMeter(0, 3, 4)}),
                                          track({E::makeNote(60, 0, 1), E::makeKey(0, 5, 0)}),
                                          track({E::makeNote(66, 0, 1)})});
        QCOMPARE(merged.events(),
                 QVector<E>({E::makeMeter(0, 3, 4), E::makeKey(0, 5, 0), E::makeNote(72, 0, 1),
                             E::makeNote(60, 0, 1), E::makeNote(66, 0, 1)}));
    }
    void oneTrackIsMergedWithItself()
    {
        const E note = E::makeNote(60, 0, 30240);
        QCOMPARE(mergeTracks({track({note})}).events(), QVector<E>{note});
    }
    void headersTempoAndMeasureAreTheFirstOnes()
    {
        Track first = track({E::makeNote(60, 0, 1)});
        first.addHeader(QStringLiteral("X"), QStringLiteral("7"));
        first.addHeader(QStringLiteral("T"), QStringLiteral("One"));
        first.addHeader(QStringLiteral("T"), QStringLiteral("Two"));
        first.setTicksPerMinute(1000);
        first.setMeasure(90720, 3);
        Track second = track({});
        second.addHeader(QStringLiteral("Z"), QStringLiteral("Nobody"));
        second.setTicksPerMinute(1000);
        const Track merged = mergeTracks({first, second});
        QCOMPARE(merged.headers(QStringLiteral("T")),
                 QStringList({QStringLiteral("Two"), QStringLiteral("One")}));
        QCOMPARE(merged.headers(QStringLiteral("X")), QStringList{QStringLiteral("1")});
        QVERIFY(!merged.hasHeader(QStringLiteral("Z")));
        QCOMPARE(merged.ticksPerMinute(), quint64{1000});
        QCOMPARE(merged.measureLength(), 90720U);
        QCOMPARE(merged.beatsPerMeasure(), 3U);
    }
    void textAndFileNameAreNotTakenOver()
    {
        Track first = track({E::makeNote(60, 0, 1)});
        first.setFileName(QStringLiteral("/a.abc"));
        first.setAbc(QStringLiteral("X:1\nK:C\nc"));
        Track expected = track({E::makeNote(60, 0, 1)});
        expected.setHeader(QStringLiteral("X"), QStringLiteral("1"));
        QCOMPARE(mergeTracks({first}), expected);
    }

    void otherInitialTemposAreRefused()
    {
        Track slow;
        slow.setTicksPerMinute(3628799);
        QCOMPARE(thrownBy([&] { mergeTracks({Track(), Track(), slow}); }), Refusal);
    }
    void commonTempoChangesAreKeptOnce()
    {
        const Track both = track({E::makeTempo(30240, 1, 4, 90)});
        const Track other = track({E::makeTempo(30240, 1, 8, 180)}); // as many ticks per minute
        QCOMPARE(mergeTracks({both, both, other}).events(),
                 QVector<E>{E::makeTempo(30240, 1, 4, 90)});
    }
    void aTempoChangeOfTheFirstAloneIsKept()
    {
        const Track first = track({E::makeTempo(30240, 1, 4, 90)});
        QCOMPARE(mergeTracks({first, Track()}).events(), first.events());
    }
    void aTempoChangeOfALaterOneAloneIsRefused()
    {
        const Track first = track({E::makeTempo(60480, 1, 4, 90)});
        const Track later = track({E::makeTempo(30240, 1, 4, 90)});
        QCOMPARE(thrownBy([&] { mergeTracks({first, later}); }), Refusal);
    }
    void anotherTempoAtTheSameTimeIsRefused()
    {
        const Track first = track({E::makeTempo(30240, 1, 4, 90)});
        const Track later = track({E::makeTempo(30240, 1, 4, 91)});
        QCOMPARE(thrownBy([&] { mergeTracks({first, later}); }), Refusal);
    }
};

QTEST_APPLESS_MAIN(tst_TrackMerge)
#include "tst_TrackMerge.moc"
