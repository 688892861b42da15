#include "MIDI/MidiFile.h"

#include "MidiCorpus.h"
#include "MidiTestSupport.h"

#include "support/Thrown.h"

#include <QtTest>

#include <algorithm>

using namespace MidiTest;

namespace {

// What cannot be imported, in the order of the names.
const QStringList Failures = {
    "smf_tests/test-2-tracks-type-2.mid: Unsupported MIDI type 2."_s,
    "smf_tests/test-empty-file.mid: Invalid MIDI file."_s,
    "smf_tests/test-illegal-message-all.mid: Unknown MIDI system event 0xf1."_s,
    "smf_tests/test-illegal-message-f8.mid: Unknown MIDI system event 0xf8."_s,
    "smf_tests/test-non-midi-track.mid: Invalid MIDI file."_s,
    "smf_tests/test-not-a-midi-file.mid: Invalid MIDI file."_s,
};

bool isSorted(const Track &track)
{
    return std::is_sorted(
        track.events().begin(), track.events().end(), [](const TrackEvent &a, const TrackEvent &b) {
            return a.time() != b.time() ? a.time() < b.time() : a.duration() < b.duration();
        });
}

/// Channel 16 keeps what it has not ended, of any pitch.
bool hasPlayablePitches(const Track &track)
{
    return std::all_of(track.events().begin(), track.events().end(), [](const TrackEvent &event) {
        return !event.isNote()
            || (event.note() >= Ticks::LowestPitch && event.note() <= Ticks::HighestPitch);
    });
}

} // namespace

class tst_MidiCorpus : public QObject {
    Q_OBJECT

private slots:
    void importsEveryFileOrSaysWhyNot_data()
    {
        QTest::addColumn<bool>("mergeChannels");
        QTest::addColumn<bool>("pitchBend");
        QTest::addColumn<int>("trackCount");
        QTest::addColumn<int>("noteCount");
        QTest::newRow("merged") << true << true << 249 << 72729;
        QTest::newRow("merged, without bends") << true << false << 249 << 72024;
        QTest::newRow("per chunk") << false << true << 266 << 72729;
        QTest::newRow("per chunk, without bends") << false << false << 266 << 72024;
    }
    void importsEveryFileOrSaysWhyNot()
    {
        QFETCH(bool, mergeChannels);
        QFETCH(bool, pitchBend);
        QStringList failures;
        int trackCount = 0;
        int noteCount = 0;
        const QStringList names = MidiCorpus::files();
        QCOMPARE(names.size(), 70);
        for (const QString &name : names) {
            QList<Track> tracks;
            const QString message = thrownBy([&] {
                tracks = loadMidiFile(MidiCorpus::fullPath(name), {mergeChannels, true, pitchBend});
            });
            if (message != "(nothing thrown)"_s)
                failures << name + ": "_s + message;
            for (const Track &track : qAsConst(tracks)) {
                QVERIFY2(track.noteCount() > 0, qPrintable(name));
                QVERIFY2(isSorted(track), qPrintable(name));
                QVERIFY2(hasPlayablePitches(track), qPrintable(name));
                QVERIFY2(track.ticksPerMinute() > 0, qPrintable(name));
                QVERIFY2(track.measureLength() > 0, qPrintable(name));
                ++trackCount;
                noteCount += track.noteCount();
            }
        }
        QCOMPARE(failures, Failures);
        QTEST(trackCount, "trackCount");
        QTEST(noteCount, "noteCount");
    }
};

QTEST_APPLESS_MAIN(tst_MidiCorpus)
#include "tst_MidiCorpus.moc"
