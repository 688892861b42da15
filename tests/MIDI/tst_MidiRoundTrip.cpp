#include "ABC/ABCParser.h"
#include "MIDI/MidiFile.h"
#include "MIDI/MidiParser.h"

#include "MidiCorpus.h"

#include <QDataStream>
#include <QtTest>

// An imported track is written as ABC text, which is read again.

namespace {

Track reread(Track track)
{
    return ABCParser().parse(track.abc());
}

/// The events but for notes that no instrument has, which the text leaves out.
QVector<TrackEvent> playableEvents(const Track &track)
{
    QVector<TrackEvent> events;
    for (const TrackEvent &event : track.events()) {
        if (!event.isNote()
            || (event.note() >= Ticks::LowestPitch && event.note() <= Ticks::HighestPitch))
            events << event;
    }
    return events;
}

QString text(const TrackEvent &event)
{
    return QStringLiteral("type %1 at %2, %3+%4")
        .arg(event.type())
        .arg(event.time())
        .arg(event.note())
        .arg(event.duration());
}

/// The first events that differ, or nothing.
QString firstDifference(const QVector<TrackEvent> &actual, const QVector<TrackEvent> &expected)
{
    const auto differing =
        std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
    const QString none = QStringLiteral("nothing");
    if (differing.first == actual.end() && differing.second == expected.end())
        return QString();
    return QStringLiteral("%1 instead of %2")
        .arg(differing.first == actual.end() ? none : text(*differing.first),
             differing.second == expected.end() ? none : text(*differing.second));
}

QList<Track> tracksOf(const QByteArray &bytes, const MidiOptions &options)
{
    QDataStream stream(bytes);
    return MidiParser(options).parse(stream);
}

} // namespace

class TestMidiRoundTrip : public QObject {
    Q_OBJECT

private slots:
    void keepsTheEventsOfEveryTrack_data()
    {
        QTest::addColumn<bool>("isMerged");
        QTest::addColumn<bool>("isRealigned");
        QTest::newRow("a track per channel") << true << true;
        QTest::newRow("a track per channel and chunk") << false << true;
        QTest::newRow("a track per channel, as it was played") << true << false;
        QTest::newRow("a track per channel and chunk, as it was played") << false << false;
    }
    void keepsTheEventsOfEveryTrack()
    {
        QFETCH(bool, isMerged);
        QFETCH(bool, isRealigned);
        int trackCount = 0;
        int notes = 0;
        const QStringList files = MidiCorpus::files();
        for (const QString &file : files) {
            const auto tracks = MidiCorpus::import(file, {isMerged, isRealigned, true});
            for (const Track &track : tracks.value_or(QList<Track>())) {
                const Track again = reread(track);
                const QString difference = firstDifference(again.events(), playableEvents(track));
                QVERIFY2(difference.isEmpty(),
                         qPrintable(QStringLiteral("%1, %2: %3")
                                        .arg(file, track.header(QStringLiteral("T")), difference)));
                QCOMPARE(again.ticksPerMinute(), track.ticksPerMinute());
                QCOMPARE(again.measureLength(), track.measureLength());
                QCOMPARE(again.beatsPerMeasure(), track.beatsPerMeasure());
                ++trackCount;
                notes += again.noteCount();
            }
        }
        qInfo("%d notes in %d tracks of %d files", notes, trackCount, files.size());
        QVERIFY(notes > 0);
    }

    void leavesOutOnlyWhatNoInstrumentPlays()
    {
        // Channel 16: key 10 sounds until the track's end, key 60 for a quarter note from the
        // second on, and key 127 likewise until the end.
        const QByteArray bytes = QByteArrayLiteral("MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0\x1b")
            + QByteArray::fromHex("009f0a40 609f3c40 608f3c40 009f7f40 009f4040 60ff2f00");
        const QList<Track> tracks = tracksOf(bytes, MidiOptions::defaults());
        QCOMPARE(tracks.size(), 1);
        QCOMPARE(tracks.first().noteCount(), 4);
        const Track again = reread(tracks.first());
        QCOMPARE(again.events(),
                 (QVector<TrackEvent>{TrackEvent::makeNote(60, 30240, 30240),
                                      TrackEvent::makeNote(64, 60480, 30240)}));
    }
};

QTEST_APPLESS_MAIN(TestMidiRoundTrip)
#include "tst_MidiRoundTrip.moc"
