#include "Render/UnmappedNotes.h"

#include <QtTest>

namespace {

/// Maps the pitches 60 and 62.
Instrument drum()
{
    return Instrument::fromBytes(QStringLiteral("drum"),
                                 "{\"mapping\": {\"60\": {\"file\": \"/a.wav\", \"f\": 100},"
                                 " \"62\": {\"file\": \"/b.wav\", \"f\": 100}}}");
}

TrackEvent quarter(quint32 pitch, quint64 time)
{
    return TrackEvent::makeNote(pitch, time, 30240);
}

Track trackOf(const QVector<TrackEvent> &events, quint32 measureLength = 120960)
{
    Track track;
    track.setMeasure(measureLength, 4);
    for (const TrackEvent &event : events)
        track.addEvent(event);
    track.sortEvents();
    return track;
}

/// "bar:pitch" of every unmapped note.
QString found(const Track &track)
{
    QStringList words;
    for (const UnmappedNotes::Note &note : UnmappedNotes::findUnmapped(track, drum()))
        words.append(QStringLiteral("%1:%2").arg(note.bar).arg(note.pitch));
    return words.join(QLatin1Char(' '));
}

} // namespace

class tst_UnmappedNotes : public QObject {
    Q_OBJECT

private slots:
    void findsNothingWhereAllIsMapped();
    void namesEventPitchTimeAndBar();
    void countsBars_data();
    void countsBars();
    void leavesUnmappedNotesOut();
    void returnsTheSameTrackWhereAllIsMapped();
    void namesPitches_data();
    void namesPitches();
};

void tst_UnmappedNotes::findsNothingWhereAllIsMapped()
{
    QVERIFY(
        UnmappedNotes::findUnmapped(trackOf({quarter(60, 0), quarter(62, 1)}), drum()).isEmpty());
    QVERIFY(UnmappedNotes::findUnmapped(Track(), Instrument()).isEmpty());
}

void tst_UnmappedNotes::namesEventPitchTimeAndBar()
{
    const Track track =
        trackOf({TrackEvent::makeKey(0, 7, 0), quarter(60, 0), quarter(61, 151200)});
    const UnmappedNotes::Note expected{2, 61, 151200, 2};
    QVERIFY(UnmappedNotes::findUnmapped(track, drum()) == QVector<UnmappedNotes::Note>{expected});
}

void tst_UnmappedNotes::countsBars_data()
{
    QTest::addColumn<Track>("track");
    QTest::addColumn<QString>("expected");

    QTest::newRow("by the measure length")
        << trackOf({quarter(1, 0), quarter(2, 120959), quarter(3, 120960), quarter(4, 483840)})
        << QStringLiteral("1:1 1:2 2:3 5:4");
    QTest::newRow("no measure") << trackOf({quarter(1, 0), quarter(2, 9999999)}, 0)
                                << QStringLiteral("1:1 1:2");
    QTest::newRow("a meter at the beginning")
        << trackOf({TrackEvent::makeMeter(0, 3, 4), quarter(1, 0), quarter(2, 90720)})
        << QStringLiteral("1:1 2:2");
    QTest::newRow("a meter at a bar line")
        << trackOf({quarter(1, 0), TrackEvent::makeMeter(120960, 3, 4), quarter(2, 120960),
                    quarter(3, 211680)})
        << QStringLiteral("1:1 2:2 3:3");
    QTest::newRow("a meter inside a bar begins a bar")
        << trackOf({TrackEvent::makeMeter(130000, 2, 4), quarter(2, 130000), quarter(3, 190480)})
        << QStringLiteral("3:2 4:3");
    QTest::newRow("a stretch without a meter is one bar")
        << trackOf({TrackEvent::makeMeter(120960, 0, 0), quarter(1, 120960), quarter(2, 999999),
                    TrackEvent::makeMeter(1000000, 4, 4), quarter(3, 1000000)})
        << QStringLiteral("2:1 2:2 3:3");
    QTest::newRow("two meters at one time")
        << trackOf({TrackEvent::makeMeter(0, 0, 4), TrackEvent::makeKey(0, 7, 0),
                    TrackEvent::makeMeter(0, 1, 4), quarter(1, 30240)})
        << QStringLiteral("2:1");
}

void tst_UnmappedNotes::countsBars()
{
    QFETCH(Track, track);
    QTEST(found(track), "expected");
}

void tst_UnmappedNotes::leavesUnmappedNotesOut()
{
    Track track = trackOf({quarter(60, 0), TrackEvent::makeTempo(10, 1, 4, 90), quarter(61, 30240),
                           quarter(62, 30240), quarter(99, 60480)},
                          90720);
    track.setTicksPerMinute(1000);
    track.addHeader(QStringLiteral("T"), QStringLiteral("older"));
    track.addHeader(QStringLiteral("T"), QStringLiteral("newest"));
    track.addHeader(QStringLiteral("K"), QStringLiteral("C"));
    track.setFileName(QStringLiteral("/tune.abc"));

    const Track kept = UnmappedNotes::withoutUnmapped(track, drum());
    QVERIFY((kept.events()
             == QVector<TrackEvent>{quarter(60, 0), TrackEvent::makeTempo(10, 1, 4, 90),
                                    quarter(62, 30240)}));
    QCOMPARE(kept.noteCount(), 2);
    QCOMPARE(kept.length(), quint64(60480));
    QCOMPARE(kept.ticksPerMinute(), quint64(1000));
    QCOMPARE(kept.measureLength(), 90720U);
    QCOMPARE(kept.beatsPerMeasure(), 4U);
    QCOMPARE(kept.fileName(), QStringLiteral("/tune.abc"));
    QCOMPARE(kept.allHeaders(), track.allHeaders());
    QCOMPARE(kept.headers(QStringLiteral("T")),
             QStringList() << QStringLiteral("newest") << QStringLiteral("older"));
}

void tst_UnmappedNotes::returnsTheSameTrackWhereAllIsMapped()
{
    Track track = trackOf({quarter(60, 0)});
    track.setAbc(QStringLiteral("X:1"));
    QVERIFY(UnmappedNotes::withoutUnmapped(track, drum()) == track);
}

void tst_UnmappedNotes::namesPitches_data()
{
    QTest::addColumn<quint32>("pitch");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("abc");

    QTest::newRow("middle C") << 60U << QStringLiteral("C4") << QStringLiteral("C");
    QTest::newRow("C sharp") << 61U << QStringLiteral("C#4") << QStringLiteral("^C");
    QTest::newRow("B below") << 59U << QStringLiteral("B3") << QStringLiteral("B,");
    QTest::newRow("two octaves below") << 36U << QStringLiteral("C2") << QStringLiteral("C,,");
    QTest::newRow("octave above") << 73U << QStringLiteral("C#5") << QStringLiteral("^c");
    QTest::newRow("two octaves above") << 84U << QStringLiteral("C6") << QStringLiteral("c'");
    QTest::newRow("three octaves above") << 106U << QStringLiteral("A#7") << QStringLiteral("^a''");
    QTest::newRow("highest key") << 108U << QStringLiteral("C8") << QStringLiteral("c'''");
    QTest::newRow("lowest key") << 21U << QStringLiteral("A0") << QStringLiteral("A,,,,");
    QTest::newRow("lowest pitch") << 0U << QStringLiteral("C-1") << QStringLiteral("C,,,,,");
    QTest::newRow("highest MIDI pitch") << 127U << QStringLiteral("G9") << QStringLiteral("g''''");
    QTest::newRow("beyond") << 128U << QStringLiteral("128") << QStringLiteral("128");
    QTest::newRow("far beyond") << 4294967295U << QStringLiteral("4294967295")
                                << QStringLiteral("4294967295");
}

void tst_UnmappedNotes::namesPitches()
{
    QFETCH(quint32, pitch);
    QTEST(UnmappedNotes::pitchName(pitch), "name");
    QTEST(UnmappedNotes::abcName(pitch), "abc");
}

QTEST_APPLESS_MAIN(tst_UnmappedNotes)
#include "tst_UnmappedNotes.moc"
