#include "MIDI/Realignment.h"

#include "TrackSupport.h"

#include <QtTest>

#include <algorithm>
#include <limits>

using namespace TrackSupport;
using E = TrackEvent;

namespace {

constexpr quint64 LastTime = std::numeric_limits<quint64>::max();

const QVector<int> QuickDivisions{128, 96, 80, 112, 72};
const QVector<quint32> QuickSteps{945, 1260, 1512, 1080, 1680};

/// Both neighbours of each grid in turn, as one would do it by hand.
quint64 plainSnapTime(quint64 time, const QVector<quint32> &steps)
{
    if (steps.isEmpty())
        return time;
    quint64 best = LastTime;
    quint64 result = time;
    for (const quint32 step : steps) {
        const quint64 count = time / step;
        const quint64 down = count * step;
        const quint64 toDown = time - down;
        const quint64 up = (count + 1) * step;
        const quint64 toUp = up - time;
        if (toDown < best) {
            result = toDown <= toUp ? down : up;
            best = toDown <= toUp ? toDown : toUp;
        } else if (toUp < best) {
            result = up;
            best = toUp;
        }
    }
    return result;
}

Track plainRealign(Track track, const QVector<quint32> &steps)
{
    const quint32 finest = *std::min_element(steps.begin(), steps.end());
    for (int i = 0; i < track.eventCount(); ++i) {
        E &event = track.event(i);
        const quint64 oldStart = event.time();
        const quint64 newStart = plainSnapTime(oldStart, steps);
        event.setTime(newStart);
        if (!event.isNote())
            continue;
        quint64 newEnd = plainSnapTime(oldStart + event.duration(), steps);
        if (newEnd <= newStart)
            newEnd = newStart + finest;
        event.setDuration(newEnd - newStart);
    }
    track.sortEvents();
    return track;
}

QVector<quint32> stepsOf(const QVector<int> &divisions)
{
    QVector<quint32> steps;
    for (const int division : divisions)
        steps << static_cast<quint32>(120960 / division);
    return steps;
}

QVector<int> randomDivisions(Random &random)
{
    QVector<int> divisions;
    for (quint32 count = 1 + random.below(5); count > 0; --count)
        divisions << static_cast<int>(1 + random.below(200));
    return divisions;
}

Track randomTrack(Random &random)
{
    Track track;
    quint64 time = 0;
    for (quint32 i = random.below(80); i > 0; --i) {
        if (random.below(10) == 0)
            track.addEvent(E::makeTempo(time, 1, 4, 10 + i));
        else
            track.addEvent(
                E::makeNote(21 + random.below(88), time, random.below(i % 2 ? 2000 : 60000)));
        if (random.below(3) != 0)
            time += random.below(i % 2 ? 3000 : 40000);
    }
    track.sortEvents();
    return track;
}

bool isOnGrid(quint64 time, const QVector<quint32> &steps)
{
    return std::any_of(steps.begin(), steps.end(),
                       [time](quint32 step) { return time % step == 0; });
}

} // namespace

class TestRealignment : public QObject {
    Q_OBJECT

private slots:
    void snapsToTheNearestPoint_data()
    {
        QTest::addColumn<quint64>("time");
        QTest::addColumn<QVector<quint32>>("steps");
        QTest::addColumn<quint64>("point");
        using Steps = QVector<quint32>;
        const auto row = [](const char *name, quint64 time, const Steps &steps, quint64 point) {
            QTest::newRow(name) << time << steps << point;
        };
        row("nearest of two grids", 1000, {945, 1260}, 945);
        row("half-way goes down", 630, {1260}, 0);
        row("past half-way goes up", 631, {1260}, 1260);
        row("half-way of an odd step, below", 472, {945}, 0);
        row("half-way of an odd step, above", 473, {945}, 945);
        row("on the first grid", 1890, {945, 1260}, 1890);
        row("on the second grid", 2520, {945, 1260}, 2520);
        row("equally close: the first grid", 1386, {1260, 1512}, 1260);
        row("equally close, other order", 1386, {1512, 1260}, 1512);
        row("half-way and another as close", 630, {1260, 1}, 630);
        row("half-way down before another's up", 10, {20, 5, 4}, 10);
        row("up of a later grid is closer", 99, {60, 50}, 100);
        row("down of a later grid is closer", 101, {60, 50}, 100);
        row("no grid", 1234, {}, 1234);
        row("a step of 0", 1234, {0}, 1234);
        row("a step of 0 among others", 1000, {0, 945, 0, 1260}, 945);
        row("a step of 1", 1234, {1}, 1234);
        row("0", 0, QuickSteps, 0);
        row("the largest step", 5000000000, {4294967295}, 4294967295);
        row("around 32 bits", 4294967290, {120960}, 4294926720);
    }
    void snapsToTheNearestPoint()
    {
        QFETCH(quint64, time);
        QFETCH(QVector<quint32>, steps);
        QTEST(snapTime(time, steps), "point");
    }
    void snapsToTheLastPointAtTheEndOfTime()
    {
        const quint64 last = LastTime - 645; // a multiple of 945
        QCOMPARE(last % 945, quint64{0});
        QCOMPARE(snapTime(LastTime, {945}), last);
        QCOMPARE(snapTime(last + 473, {945}), last);
        QCOMPARE(snapTime(last + 472, {945}), last);
        QCOMPARE(snapTime(last - 472, {945}), last);
        QCOMPARE(snapTime(last - 473, {945}), last - 945);
        QCOMPARE(snapTime(LastTime, {945, 1}), LastTime);
        QCOMPARE(snapTime(LastTime, {945, 1260}), LastTime - 15);
        QCOMPARE(snapTime(LastTime - 1, {3}), LastTime);
        QCOMPARE(snapTime(LastTime, {2}), LastTime - 1);
        QCOMPARE(snapTime(LastTime, {4294967295}), LastTime);
    }
    void snapsLikeAPlainSearch()
    {
        Random random(1);
        for (int i = 0; i < 200000; ++i) {
            QVector<quint32> steps;
            for (quint32 count = random.below(6); count > 0; --count)
                steps << 1 + random.below(i % 3 == 0 ? 12 : 120960);
            const quint64 time = random.any() >> (1 + random.below(63));
            QCOMPARE(snapTime(time, steps), plainSnapTime(time, steps));
        }
    }
    void snapsLikeAPlainSearchToTheQuickGrids()
    {
        for (quint64 time = 0; time <= 120960; ++time)
            QCOMPARE(snapTime(time, QuickSteps), plainSnapTime(time, QuickSteps));
    }

    void snapsStartAndEndOfANote()
    {
        const Track track = sortedTrackOf({E::makeNote(60, 30000, 30000)});
        QCOMPARE(notes(realignTrack(track, {4})), "60@30240+30240"_s);
    }
    void snapsTheEndFromTheStartAsItWas()
    {
        // Moved along with their starts, the ends would come to 50360 and 59240.
        const Track earlier = sortedTrackOf({E::makeNote(60, 37000, 20120)});
        QCOMPARE(notes(realignTrack(earlier, {8})), "60@30240+30240"_s);
        const Track later = sortedTrackOf({E::makeNote(60, 23000, 29000)});
        QCOMPARE(notes(realignTrack(later, {8})), "60@30240+15120"_s);
    }
    void keepsNotesThatTouchTogether()
    {
        const Track track =
            sortedTrackOf({E::makeNote(60, 100, 22000), E::makeNote(62, 22100, 22000)});
        QCOMPARE(notes(realignTrack(track, {16})), "60@0+22680 62@22680+22680"_s);
    }
    void givesTheFinestStepToANoteThatWouldVanish()
    {
        const Track track = sortedTrackOf({E::makeNote(60, 100, 200)});
        QCOMPARE(notes(quickRealignTrack(track)), "60@0+945"_s);
        QCOMPARE(notes(realignTrack(track, {1, 4, 3})), "60@0+30240"_s);
        QCOMPARE(notes(realignTrack(sortedTrackOf({E::makeNote(60, 30241, 0)}), {1, 4})),
                 "60@30240+30240"_s);
    }
    void movesOtherEventsInTimeOnly()
    {
        const QVector<E> events{E::makeTempo(1000, 3, 8, 60), E::makeKey(1000, 3, 2),
                                E::makeUnitLength(1000, 1, 16), E::makeMeter(1000, 6, 8)};
        const QVector<E> expected{E::makeTempo(945, 3, 8, 60), E::makeKey(945, 3, 2),
                                  E::makeUnitLength(945, 1, 16), E::makeMeter(945, 6, 8)};
        QCOMPARE(quickRealignTrack(sortedTrackOf(events)).events(), expected);
    }
    void sortsWhatHasCloseUp()
    {
        const E longNote = E::makeNote(60, 30000, 90000);
        const E shortNote = E::makeNote(62, 30100, 30000);
        const E key = E::makeKey(30200, 8, 0);
        const Track track = sortedTrackOf({longNote, shortNote, key});
        const QVector<E> expected{E::makeKey(30240, 8, 0), E::makeNote(62, 30240, 30240),
                                  E::makeNote(60, 30240, 90720)};
        QCOMPARE(realignTrack(track, {4}).events(), expected);
        QCOMPARE(realignTrack(track, {4}).length(), quint64{120960});
    }
    void sortsATrackThatWasNotInOrder()
    {
        const Track track = trackOf({E::makeNote(60, 30000, 30000), E::makeNote(62, 10, 30000)});
        QCOMPARE(notes(realignTrack(track, {4})), "62@0+30240 60@30240+30240"_s);
    }
    void keepsTheLastOfTemposThatMeet()
    {
        const Track track = sortedTrackOf(
            {E::makeTempo(100, 1, 4, 80), E::makeTempo(200, 1, 4, 90), E::makeNote(60, 0, 945)});
        QCOMPARE(quickRealignTrack(track).events(),
                 QVector<E>({E::makeTempo(0, 1, 4, 90), E::makeNote(60, 0, 945)}));
    }

    void copiesEverythingButTheText()
    {
        Track track = sortedTrackOf({E::makeNote(60, 945, 945)});
        track.addHeader("T"_s, "first"_s);
        track.addHeader("T"_s, "second"_s);
        track.setTicksPerMinute(1234);
        track.setMeasure(90720, 3);
        track.setFileName("/tmp/a.abc"_s);
        Track expected = track;
        track.setAbc("as it was written"_s);
        const Track before = track;
        QVERIFY(quickRealignTrack(track) == expected);
        QVERIFY(track == before);
    }
    void doesNotSortATrackWithoutEvents()
    {
        // Its only event had no effect, but counts into its length.
        const Track track = sortedTrackOf({E::makeTempo(1000, 1, 4, 120)});
        QCOMPARE(track.eventCount(), 0);
        QCOMPARE(track.length(), quint64{1000});
        QVERIFY(quickRealignTrack(track) == track);
        QVERIFY(quickRealignTrack(Track()) == Track());
    }

    void takesDivisions_data()
    {
        QTest::addColumn<QVector<int>>("divisions");
        QTest::addColumn<QString>("expected");
        // The note lasts from 70000 to 75000.
        QTest::newRow("none: whole notes") << QVector<int>{} << "60@120960+120960"_s;
        QTest::newRow("1") << QVector<int>{1} << "60@120960+120960"_s;
        QTest::newRow("a step that is rounded down") << QVector<int>{11} << "60@65976+10996"_s;
        QTest::newRow("120960: every tick") << QVector<int>{120960} << "60@70000+5000"_s;
        QTest::newRow("0") << QVector<int>{0} << "60@120960+120960"_s;
        QTest::newRow("negative") << QVector<int>{-1, -16, -2147483647 - 1} << "60@120960+120960"_s;
        QTest::newRow("too fine") << QVector<int>{120961, 2147483647} << "60@120960+120960"_s;
        QTest::newRow("useless among others")
            << QVector<int>{0, -1, 16, 120961} << "60@68040+7560"_s;
        QTest::newRow("twice the same") << QVector<int>{16, 16} << "60@68040+7560"_s;
    }
    void takesDivisions()
    {
        QFETCH(QVector<int>, divisions);
        const Track track = sortedTrackOf({E::makeNote(60, 70000, 5000)});
        QTEST(notes(realignTrack(track, divisions)), "expected");
    }
    void endsNotesWithTheEndOfTime()
    {
        const quint64 last = LastTime - 25215; // a multiple of 120960
        const Track track = realignTrack(sortedTrackOf({E::makeNote(60, 70000, LastTime)}), {1});
        QCOMPARE(track.event(0).time(), quint64{120960});
        QCOMPARE(track.event(0).duration(), last - 120960);
        const Track late = realignTrack(sortedTrackOf({E::makeNote(60, LastTime, 5)}), {1, 2});
        QCOMPARE(late.event(0).duration(), quint64{60480});
    }
    void quicklyTakesTheFinestGrids()
    {
        Random random(2);
        for (int i = 0; i < 50; ++i) {
            const Track track = randomTrack(random);
            QVERIFY(quickRealignTrack(track) == realignTrack(track, QuickDivisions));
            QVERIFY(quickRealignTrack(track) == plainRealign(track, QuickSteps));
        }
    }

    void realignsLikeAPlainOne()
    {
        Random random(3);
        for (int i = 0; i < 1000; ++i) {
            const Track track = randomTrack(random);
            const QVector<int> divisions = randomDivisions(random);
            QVERIFY(realignTrack(track, divisions) == plainRealign(track, stepsOf(divisions)));
        }
    }
    void putsEveryTimeOnAGrid()
    {
        Random random(4);
        for (int i = 0; i < 1000; ++i) {
            const QVector<int> divisions = randomDivisions(random);
            const QVector<quint32> steps = stepsOf(divisions);
            const quint64 finest = *std::min_element(steps.begin(), steps.end());
            const Track track = realignTrack(randomTrack(random), divisions);
            for (const E &event : track.events()) {
                QVERIFY(isOnGrid(event.time(), steps));
                QVERIFY(!event.isNote() || event.duration() > 0);
                QVERIFY(!event.isNote() || event.duration() == finest
                        || isOnGrid(event.time() + event.duration(), steps));
            }
        }
    }
    void changesNothingTheSecondTimeWithOneGrid()
    {
        Random random(5);
        for (int i = 0; i < 500; ++i) {
            const QVector<int> divisions{static_cast<int>(1 + random.below(200))};
            const Track once = realignTrack(randomTrack(random), divisions);
            QVERIFY(realignTrack(once, divisions) == once);
        }
    }
    void changesNothingTheThirdTimeWithSeveralGrids()
    {
        // A note that got the finest step may end between the grids until the second time.
        Random random(6);
        bool hasChanged = false;
        for (int i = 0; i < 500; ++i) {
            const Track once = quickRealignTrack(randomTrack(random));
            const Track twice = quickRealignTrack(once);
            hasChanged = hasChanged || once != twice;
            QVERIFY(quickRealignTrack(twice) == twice);
        }
        QVERIFY(hasChanged);
        const Track between = quickRealignTrack(sortedTrackOf({E::makeNote(60, 1512, 0)}));
        QCOMPARE(notes(between), "60@1512+945"_s);
        QCOMPARE(notes(quickRealignTrack(between)), "60@1512+1008"_s);
    }
};

QTEST_APPLESS_MAIN(TestRealignment)
#include "tst_Realignment.moc"
