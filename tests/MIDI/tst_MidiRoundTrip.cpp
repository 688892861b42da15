#include "ABC/ABCParser.h"
#include "MIDI/MidiFile.h"

#include "MidiCorpus.h"
#include "MidiTestSupport.h"

#include "support/MidiBuilder.h"

#include <QtTest>

// An imported track is written as ABC text, which is read again.

using namespace MidiTest;

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
        // Of channel 16, what sounds at the end is kept, whatever its pitch.
        const QByteArray events = MidiBuilder::noteOn(0, 15, 10) + MidiBuilder::noteOn(96, 15, 60)
            + MidiBuilder::noteOff(96, 15, 60) + MidiBuilder::noteOn(0, 15, 127)
            + MidiBuilder::noteOn(0, 15, 64) + MidiBuilder::endOfTrack(96);
        const QList<Track> tracks =
            parse(MidiBuilder::header(1, 1, 96) + MidiBuilder::chunk(events));
        QCOMPARE(tracks.size(), 1);
        QCOMPARE(notes(tracks.first()),
                 "10@0+90720 60@30240+30240 64@60480+30240 127@60480+30240"_s);
        QCOMPARE(notes(reread(tracks.first())), "60@30240+30240 64@60480+30240"_s);
    }
};

QTEST_APPLESS_MAIN(TestMidiRoundTrip)
#include "tst_MidiRoundTrip.moc"
