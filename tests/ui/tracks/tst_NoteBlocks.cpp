#include "ui/tracks/NoteBlocks.h"

#include <QtTest>

#include <limits>

namespace {

constexpr quint64 Longest = std::numeric_limits<quint64>::max();

QVector<TrackEvent> scale(int notes)
{
    QVector<TrackEvent> events;
    for (int i = 0; i < notes; ++i)
        events.append(TrackEvent::makeNote(60, quint64(i) * 10, 10));
    return events;
}

QVector<quint64> timesVisited(const QVector<TrackEvent> &events, double from, double to)
{
    QVector<quint64> times;
    NoteBlocks(events).visit(events, from, to,
                             [&](const TrackEvent &note) { times.append(note.time()); });
    return times;
}

} // namespace

class TestNoteBlocks : public QObject {
    Q_OBJECT

private slots:
    void noEventsAreNoNotes()
    {
        QCOMPARE(timesVisited({}, 0, 1e30), QVector<quint64>());
        NoteBlocks().visit({}, 0, 1e30, [](const TrackEvent &) { QFAIL("a note"); });
    }

    void allNotesOfTheStretchAreVisitedInOrder()
    {
        const QVector<quint64> times = timesVisited(scale(100000), 500000, 500100);
        for (quint64 time = 500000; time <= 500100; time += 10)
            QVERIFY(times.contains(time));
        QVERIFY(std::is_sorted(times.begin(), times.end()));
    }

    void fewOthersAreVisited()
    {
        QVERIFY(timesVisited(scale(100000), 500000, 500100).size() <= 192);
        QCOMPARE(timesVisited(scale(100000), 1000001, 1e30), QVector<quint64>());
    }

    void aLongNoteIsVisitedFarBehindItsStart()
    {
        QVector<TrackEvent> events = scale(10000);
        events[3].setDuration(90000);
        QVERIFY(timesVisited(events, 80000, 80001).contains(30));
        QVERIFY(!timesVisited(events, 90031, 90032).contains(30));
    }

    void aNoteThatEndsBeyondAllTimeIsVisited()
    {
        const QVector<TrackEvent> events = {TrackEvent::makeNote(60, 5, Longest)};
        QCOMPARE(timesVisited(events, 1e19, 2e19), QVector<quint64>() << 5);
    }

    void eventsNeedNotBeInOrder()
    {
        QVector<TrackEvent> events = scale(1000);
        std::reverse(events.begin(), events.end());
        events.append(TrackEvent::makeNote(60, 5, 1));
        QVERIFY(timesVisited(events, 5, 6).contains(5));
        QVERIFY(timesVisited(events, 9990, 9991).contains(9990));
    }

    void onlyNotesAreVisited()
    {
        const QVector<TrackEvent> events = {TrackEvent::makeTempo(1, 1, 4, 100), TrackEvent(),
                                            TrackEvent::makeNote(60, 2, 1),
                                            TrackEvent::makeKey(3, 7, 0)};
        QCOMPARE(timesVisited(events, 0, 10), QVector<quint64>() << 2);
    }
};

QTEST_APPLESS_MAIN(TestNoteBlocks)
#include "tst_NoteBlocks.moc"
